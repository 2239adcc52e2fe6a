#pragma once

#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "support/SessionTest.h"
#include "xml/SymbolTemplateLoader.h"
#include "xml/SymbolTemplateWriter.h"

#include <du/FileSpec.h>
#include <luk/illustration/SymbolCollectionInformation.h>

#include <string>
#include <utility>
#include <vector>

namespace test
{

using Origin = lusymbols::PartslibraryItem::Origin;
using Templates = std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>>;
using Categories = std::vector<du::SmartPtr<luk::illustration::CategoryInfo>>;

/// Hardly a field of it has the value that it would have by itself.
inline const char kDocument[] = R"(<?xml version="1.0" encoding="utf-8"?>
<drellin-library>
  <units>mm</units>
  <information>A &amp; B</information>
  <categories>
    <category id="cat-arrows">
      <name locid="K"/> 
      <tooltip>Direction arrows</tooltip>
      <description>Bent or not</description>
    </category>
  </categories>
  <shapes>
    <shape id="shp-1" categoryId="cat-arrows">
      <name locid="K"/> 
      <title>Arrow &amp; &quot;bow&quot;</title>
      <showTooltipTitle>true</showTooltipTitle>
      <description>Bent &lt;arrow&gt;</description>
      <showTooltipDescription>false</showTooltipDescription>
      <tooltip>Tip</tooltip>
      <gallery_thumbnail url="SymbolsLibrary/Shape/arrow_64x64.png"/> 
      <graphic url="SymbolsLibrary/Shape/arrow.obj"/> 
      <scale>1234.5</scale>
      <orientation>3</orientation>
      <shape_csys a="1" b="2" c="3" d="4" e="5" f="6" g="7" h="8" i="9" pos_x="1.23457e+06" pos_y="-0.5" pos_z="0.333333"/> 
      <axis_name>X</axis_name>
      <distance_from_csys>-0.25</distance_from_csys>
      <axis_id>2</axis_id>
      <orientation_name>O</orientation_name>
      <annotation_to_symbol>true</annotation_to_symbol>
      <use_current_orientation>true</use_current_orientation>
      <edit_csys_method>7</edit_csys_method>
      <tags>
        <tag type="TORQUE">
          <description>Torque</description>
          <quantity locid="K">25</quantity>
        </tag>
      </tags>
      <camera ortho="false" value="45.5" location="1 0 0 0 1 0 0 0 1 0.1 0 -2"/> 
    </shape>
  </shapes>
  <symbols>
    <symbol id="img-1" categoryId="" billboard="true">
      <name>Stop</name>
      <title>Stop</title>
      <showTooltipTitle>false</showTooltipTitle>
      <description>D</description>
      <showTooltipDescription>true</showTooltipDescription>
      <tooltip>&apos;tip&apos;</tooltip>
      <gallery_thumbnail url="SymbolsLibrary/2D/stop.png"/> 
      <image url="SymbolsLibrary/2D/stop.png"/> 
      <scale>1000</scale>
      <flip horizontal="true" vertical="false"/> 
      <rotate right="270" left="-90"/> 
    </symbol>
  </symbols>
</drellin-library>
)";

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
        return WithLineFeedsAlone(m_folder.Read("written.xml"));
    }

    /// A written library; in the file the lines end as those of texts do on the platform, each of them.
    static std::string WithLineFeedsAlone(const std::string& written)
    {
        if (du::FileSpec::DIR_SEP_CHAR == '/') {
            return written;
        }
        std::string text;
        for (std::size_t i = 0; i < written.size(); ++i) {
            if (written[i] == '\n') {
                EXPECT_TRUE(i > 0 && written[i - 1] == '\r') << "at " << i;
                text.pop_back();
            }
            text += written[i];
        }
        return text;
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
