#pragma once

#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "support/SessionTest.h"
#include "xml/SymbolTemplateLoader.h"
#include "xml/SymbolTemplateWriter.h"

#include <luk/illustration/SymbolCollectionInformation.h>

#include <string>
#include <utility>
#include <vector>

namespace test
{

using Origin = lusymbols::PartslibraryItem::Origin;
using Templates = std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>>;
using Categories = std::vector<du::SmartPtr<luk::illustration::CategoryInfo>>;

/// Documents in and out.
class LibraryTest : public SessionTest
{
protected:
    /// A document with these three sections in their places.
    static std::string Document(const std::string& categories, const std::string& shapes, const std::string& symbols)
    {
        return "<?xml version=\"1.0\" "
               "encoding=\"utf-8\"?>\n<drellin-library><units>mm</units><information>i</information>"
               "<categories>" +
               categories + "</categories><shapes>" + shapes + "</shapes><symbols>" + symbols +
               "</symbols></drellin-library>";
    }

    /// The entries of a document read with an origin.
    static Templates Load(const std::string& source, Origin origin = Origin::ORIGIN_USER)
    {
        lusymbols::SymbolTemplateLoader loader;
        return Load(loader, source, origin);
    }

    static Templates Load(lusymbols::SymbolTemplateLoader& loader, const std::string& source,
                          Origin origin = Origin::ORIGIN_USER)
    {
        loader.ParseFromFile(source, origin);
        Templates templates;
        // An empty file name reads nothing and merges what was parsed.
        EXPECT_TRUE(loader.GetTemplateList(du::Symbol(), templates));
        return templates;
    }

    /// The only symbol of a document that holds these child elements.
    static du::SmartPtr<lusymbols::PartslibraryImageItem> LoadSymbol(const std::string& children,
                                                                     const std::string& attributes = "id=\"s\"")
    {
        const Templates templates = Load(Document("", "", "<symbol " + attributes + ">" + children + "</symbol>"));
        return templates.empty() ? nullptr : du::DynamicCast<lusymbols::PartslibraryImageItem>(templates[0]);
    }

    static du::SmartPtr<lusymbols::PartslibraryOlItem> LoadShape(const std::string& children)
    {
        const Templates templates = Load(Document("", "<shape id=\"s\">" + children + "</shape>", ""));
        return templates.empty() ? nullptr : du::DynamicCast<lusymbols::PartslibraryOlItem>(templates[0]);
    }

    /// What the writer makes of a catalog.
    std::string Write(const Templates& templates, const Categories& categories, bool asStandard = false,
                      const du::SmartPtr<luk::illustration::CollectionInformation>& information = nullptr) const
    {
        lusymbols::SymbolTemplateWriter writer(asStandard);
        writer.SetCollectionInformation(information);
        Templates moved = templates;
        writer.ToXml(du::Symbol(m_folder.Path("written.xml")), std::move(moved), categories);
        return m_folder.Read("written.xml");
    }

    /// What comes back when a document is read and written.
    std::string Rewrite(const std::string& source, Origin origin, bool asStandard = false) const
    {
        lusymbols::SymbolTemplateLoader loader;
        const Templates templates = Load(loader, source, origin);
        Categories categories;
        loader.GetCategoryList(categories);
        return Write(templates, categories, asStandard, loader.GetCollectionInformation());
    }
};

} // namespace test
