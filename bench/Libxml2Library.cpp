#include "Libxml2Library.h"

#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "xml/LibraryFormat.h"

#include <luk/illustration/SequencerTag.h>

#include <libxml/parser.h>
#include <libxml/xmlwriter.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unordered_map>
#include <unordered_set>

namespace bench
{

namespace
{

namespace format = lusymbols::format;
using luk::illustration::SequencerTag;
using lusymbols::PartslibraryCategoryItem;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;

const char* Chars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

const xmlChar* XmlChars(std::string_view literal) { return reinterpret_cast<const xmlChar*>(literal.data()); }

std::string_view Name(const xmlNode* node) { return Chars(node->name); }

std::string Text(xmlNode* node)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> text(xmlNodeGetContent(node), xmlFree);
    return text ? Chars(text.get()) : "";
}

std::string Attribute(xmlNode* node, std::string_view name)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> text(xmlGetProp(node, XmlChars(name)), xmlFree);
    return text ? Chars(text.get()) : "";
}

template <class Visit>
void ForEachChild(xmlNode* parent, const Visit& visit)
{
    for (xmlNode* child = parent->children; child; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            visit(child, Name(child));
        }
    }
}

void ReadTags(xmlNode* tags, PartslibraryItem& item)
{
    ForEachChild(tags, [&](xmlNode* element, std::string_view) {
        const auto tag = du::MakeCounted<SequencerTag>();
        tag->SetName(item.GetName());
        tag->SetType(SequencerTag::GetTypeForSymbol(du::Symbol(Attribute(element, format::kType))));
        ForEachChild(element, [&](xmlNode* child, std::string_view name) {
            if (name == format::kDescription) {
                tag->SetDescription(Text(child));
            } else if (name == format::kQuantity) {
                tag->SetUnits(Attribute(child, format::kUnit));
                tag->SetQuantityString(Text(child));
            }
        });
        item.AddSequencerTag(tag);
    });
}

bool ReadCommon(xmlNode* element, std::string_view name, PartslibraryItem& item)
{
    if (name == format::kName) {
        item.SetName(Text(element));
    } else if (name == format::kTitle) {
        item.SetTitle(Text(element));
    } else if (name == format::kDescription) {
        item.SetDescription(Text(element));
    } else if (name == format::kShowTooltipTitle) {
        item.SetShowTooltipTitle(Text(element) == "true");
    } else if (name == format::kShowTooltipDescription) {
        item.SetShowTooltipDescription(Text(element) == "true");
    } else if (name == format::kTags) {
        ReadTags(element, item);
    } else {
        return false;
    }
    return true;
}

std::string Url(xmlNode* element, const PartslibraryItem& item)
{
    std::string url = Attribute(element, format::kUrl);
    item.CheckRelativeUrlAndConcatIfNeeded(url);
    return url;
}

dg::Location Csys(xmlNode* element)
{
    dg::FMat33 matrix;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            matrix.Set(row, column, std::strtof(Attribute(element, format::kCsysMatrix[row][column]).c_str(), nullptr));
        }
    }
    const auto coordinate = [element](int axis) {
        return std::strtod(Attribute(element, format::kCsysPosition[axis]).c_str(), nullptr);
    };
    return {matrix, {coordinate(0), coordinate(1), coordinate(2)}};
}

void ReadOlField(xmlNode* child, std::string_view name, PartslibraryOlItem& item)
{
    if (ReadCommon(child, name, item)) {
        return;
    }
    if (name == format::kTooltip) {
        item.SetOlTooltip(Text(child));
    } else if (name == format::kGalleryThumbnail) {
        item.SetOlGalleryThumbnailUrl(Url(child, item));
    } else if (name == format::kGraphic) {
        item.SetOlUrl(Url(child, item));
    } else if (name == format::kScale) {
        item.SetOlScale(std::atof(Text(child).c_str()));
    } else if (name == format::kOrientation) {
        item.SetOlOrientation(std::atoi(Text(child).c_str()));
    } else if (name == format::kShapeCsys) {
        item.SetOlCsys(Csys(child));
    } else if (name == format::kAxisName) {
        item.SetAxisName(Text(child));
    } else if (name == format::kDistanceFromCsys) {
        item.SetDistanceFromCsys(std::atof(Text(child).c_str()));
    } else if (name == format::kAxisId) {
        item.SetAxisId(std::atoi(Text(child).c_str()));
    } else if (name == format::kOrientationName) {
        item.SetOrientationName(Text(child));
    } else if (name == format::kAnnotationToSymbol) {
        item.SetAnnotationSymbol(Text(child) == "true");
    } else if (name == format::kUseCurrentOrientation) {
        item.SetUseCurrentOrientation(Text(child) == "true");
    } else if (name == format::kEditCsysMethod) {
        item.SetEditCsysMethod(std::atoi(Text(child).c_str()));
    }
}

void ReadImageField(xmlNode* child, std::string_view name, PartslibraryImageItem& item)
{
    if (ReadCommon(child, name, item)) {
        return;
    }
    if (name == format::kTooltip) {
        item.SetImageTooltip(Text(child));
    } else if (name == format::kGalleryThumbnail) {
        item.SetImageGalleryThumbnailUrl(Url(child, item));
    } else if (name == format::kImage) {
        item.SetImageUrl(Url(child, item));
    } else if (name == format::kScale) {
        item.SetImageScale(std::atoi(Text(child).c_str()));
    } else if (name == format::kFlip) {
        item.SetFlipHorizontal(Attribute(child, format::kHorizontal) == "true");
        item.SetFlipVertical(Attribute(child, format::kVertical) == "true");
    } else if (name == format::kRotate) {
        item.SetRotateRight(std::atoi(Attribute(child, format::kRight).c_str()));
        item.SetRotateLeft(std::atoi(Attribute(child, format::kLeft).c_str()));
    }
}

class Merger
{
public:
    explicit Merger(Catalog& catalog) : m_catalog(catalog) {}

    void Add(xmlNode* element, const du::SmartPtr<PartslibraryItem>& item)
    {
        item->SetId(Attribute(element, format::kId));
        item->SetCategoryId(Attribute(element, format::kCategoryId));
        if (m_names.insert(item->GetName()).second && m_itemsById.emplace(item->GetId(), item).second) {
            m_catalog.templates.push_back(item);
        }
    }

private:
    Catalog& m_catalog;
    std::unordered_set<std::string> m_names;
    std::unordered_map<std::string, du::SmartPtr<PartslibraryItem>> m_itemsById;
};

void ReadSection(xmlNode* section, std::string_view name, Catalog& catalog, Merger& merger)
{
    ForEachChild(section, [&](xmlNode* element, std::string_view) {
        if (name == format::kCategories) {
            const auto category = du::MakeCounted<PartslibraryCategoryItem>();
            category->SetId(Attribute(element, format::kId));
            ForEachChild(element, [&](xmlNode* child, std::string_view childName) {
                if (childName == format::kName) {
                    category->SetCatName(Text(child));
                } else if (childName == format::kTooltip) {
                    category->SetCatTooltip(Text(child));
                } else if (childName == format::kDescription) {
                    category->SetCatDescription(Text(child));
                }
            });
            catalog.categories.push_back(category);
        } else if (name == format::kShapes) {
            const auto ol = du::MakeCounted<PartslibraryOlItem>();
            ForEachChild(element,
                         [&](xmlNode* child, std::string_view childName) { ReadOlField(child, childName, *ol); });
            std::string thumbnail = ol->GetOlGalleryThumbnailUrl();
            PartslibraryOlItem::ComputeThumbnailUrl(thumbnail, "64x64", "192x192");
            ol->SetOlDlgThumbnailUrl(thumbnail);
            merger.Add(element, ol);
        } else if (name == format::kSymbols) {
            const auto image = du::MakeCounted<PartslibraryImageItem>();
            image->SetIsBillboardImage(Attribute(element, format::kBillboard) == "true");
            ForEachChild(element,
                         [&](xmlNode* child, std::string_view childName) { ReadImageField(child, childName, *image); });
            std::string thumbnail = image->GetImageGalleryThumbnailUrl();
            image->ComputeDialogThumbnailUrl(thumbnail);
            image->SetImageDlgThumbnailUrl(thumbnail);
            merger.Add(element, image);
        }
    });
}

/// Elements through libxml2's text writer, in the layout of the library document.
class Writer
{
public:
    explicit Writer(const std::string& path) : m_writer(xmlNewTextWriterFilename(path.c_str(), 0), xmlFreeTextWriter)
    {
        xmlTextWriterSetIndent(m_writer.get(), 1);
        xmlTextWriterSetIndentString(m_writer.get(), XmlChars("  "));
        xmlTextWriterStartDocument(m_writer.get(), nullptr, "utf-8", nullptr);
    }
    ~Writer() { xmlTextWriterEndDocument(m_writer.get()); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void Start(std::string_view name) { xmlTextWriterStartElement(m_writer.get(), XmlChars(name)); }
    void End() { xmlTextWriterEndElement(m_writer.get()); }
    void Attribute(std::string_view name, const std::string& value)
    {
        xmlTextWriterWriteAttribute(m_writer.get(), XmlChars(name), XmlChars(value));
    }
    void Text(std::string_view name, const std::string& value)
    {
        xmlTextWriterWriteElement(m_writer.get(), XmlChars(name), XmlChars(value));
    }
    void Bool(std::string_view name, bool value) { Text(name, value ? "true" : "false"); }
    void Number(std::string_view name, double value) { Text(name, NumberText(value)); }

    static std::string NumberText(double value)
    {
        char text[32];
        std::snprintf(text, sizeof text, "%g", value);
        return text;
    }

private:
    std::unique_ptr<xmlTextWriter, decltype(&xmlFreeTextWriter)> m_writer;
};

void WriteUrl(Writer& writer, std::string_view element, const std::string& url)
{
    writer.Start(element);
    writer.Attribute(format::kUrl, url);
    writer.End();
}

void WriteCommon(Writer& writer, const PartslibraryItem& item, const std::string& thumbnail)
{
    writer.Text(format::kName, item.GetName());
    writer.Text(format::kTitle, item.GetTitle());
    writer.Bool(format::kShowTooltipTitle, item.ShowTooltipTitle());
    writer.Text(format::kDescription, item.GetDescription());
    writer.Bool(format::kShowTooltipDescription, item.ShowTooltipDescription());
    writer.Text(format::kTooltip, "Arrow");
    WriteUrl(writer, format::kGalleryThumbnail, thumbnail);
}

void WriteTags(Writer& writer, const PartslibraryItem& item)
{
    if (item.GetSequencerTags().empty()) {
        return;
    }
    writer.Start(format::kTags);
    for (const auto& tag : item.GetSequencerTags()) {
        writer.Start(format::kTag);
        writer.Attribute(format::kType, SequencerTag::GetSymbolForType(tag->GetType()).GetText());
        writer.Text(format::kDescription, tag->GetDescription());
        writer.Start(format::kQuantity);
        writer.Attribute(format::kUnit, tag->GetUnits());
        writer.End();
        writer.End();
    }
    writer.End();
}

void WriteShape(Writer& writer, const PartslibraryOlItem& item)
{
    writer.Start(format::kShape);
    writer.Attribute(format::kId, item.GetId());
    writer.Attribute(format::kCategoryId, item.GetCategoryId());
    WriteCommon(writer, item, item.GetOlGalleryThumbnailUrl());
    WriteUrl(writer, format::kGraphic, item.GetOlUrl());
    writer.Number(format::kScale, item.GetOlScale());
    writer.Number(format::kOrientation, item.GetOlOrientation());
    writer.Start(format::kShapeCsys);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const double entry = static_cast<double>(item.GetOlCsys().GetMat().Get(row, column));
            writer.Attribute(format::kCsysMatrix[row][column], Writer::NumberText(entry));
        }
    }
    for (int axis = 0; axis < 3; ++axis) {
        writer.Attribute(format::kCsysPosition[axis], Writer::NumberText(item.GetOlCsys().GetPosition().Get(axis)));
    }
    writer.End();
    writer.Text(format::kAxisName, item.GetAxisName());
    writer.Number(format::kDistanceFromCsys, item.GetDistanceFromCsys());
    writer.Number(format::kAxisId, item.GetAxisId());
    writer.Text(format::kOrientationName, item.GetOrientationName());
    writer.Bool(format::kAnnotationToSymbol, item.IsAnnotationSymbol());
    writer.Bool(format::kUseCurrentOrientation, item.IsUseCurrentOrientation());
    writer.Number(format::kEditCsysMethod, item.GetEditCsysMethod());
    WriteTags(writer, item);
    writer.End();
}

void WriteSymbol(Writer& writer, const PartslibraryImageItem& item)
{
    writer.Start(format::kSymbol);
    writer.Attribute(format::kId, item.GetId());
    writer.Attribute(format::kCategoryId, item.GetCategoryId());
    writer.Attribute(format::kBillboard, item.GetIsBillboardImage() ? "true" : "false");
    WriteCommon(writer, item, item.GetImageGalleryThumbnailUrl());
    WriteUrl(writer, format::kImage, item.GetImageUrl());
    writer.Number(format::kScale, item.GetImageScale());
    writer.Start(format::kFlip);
    writer.Attribute(format::kHorizontal, item.GetFlipHorizontal() ? "true" : "false");
    writer.Attribute(format::kVertical, item.GetFlipVertical() ? "true" : "false");
    writer.End();
    writer.Start(format::kRotate);
    writer.Attribute(format::kRight, Writer::NumberText(item.GetRotateRight()));
    writer.Attribute(format::kLeft, Writer::NumberText(item.GetRotateLeft()));
    writer.End();
    WriteTags(writer, item);
    writer.End();
}

void WriteCategories(Writer& writer, const Catalog& catalog)
{
    writer.Start(format::kCategories);
    for (const auto& category : catalog.categories) {
        writer.Start(format::kCategory);
        writer.Attribute(format::kId, category->GetId());
        writer.Text(format::kName, category->GetName());
        writer.Text(format::kTooltip, "");
        writer.Text(format::kDescription, "");
        writer.End();
    }
    writer.End();
}

} // namespace

Catalog LoadWithLibxml2(const std::string& path)
{
    Catalog catalog;
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_HUGE), xmlFreeDoc);
    if (document) {
        Merger merger(catalog);
        ForEachChild(xmlDocGetRootElement(document.get()),
                     [&](xmlNode* section, std::string_view name) { ReadSection(section, name, catalog, merger); });
    }
    return catalog;
}

void WriteWithLibxml2(const std::string& path, const Catalog& catalog)
{
    Writer writer(path);
    writer.Start(format::kRoot);
    writer.Text(format::kUnits, "");
    writer.Text(format::kInformation, "");
    WriteCategories(writer, catalog);
    writer.Start(format::kShapes);
    for (const auto& item : catalog.templates) {
        if (const auto* ol = dynamic_cast<const PartslibraryOlItem*>(item.get())) {
            WriteShape(writer, *ol);
        }
    }
    writer.End();
    writer.Start(format::kSymbols);
    for (const auto& item : catalog.templates) {
        if (const auto* image = dynamic_cast<const PartslibraryImageItem*>(item.get())) {
            WriteSymbol(writer, *image);
        }
    }
    writer.End();
    writer.End();
}

} // namespace bench
