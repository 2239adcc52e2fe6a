#include "xml/EntryReader.h"

#include "catalog/LibraryRoots.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "xml/LibraryFormat.h"

#include <dg/ParseNumber.h>
#include <dg/XmlElem.h>
#include <du/Localizer.h>
#include <luk/illustration/SequencerTag.h>

#include <algorithm>
#include <bitset>
#include <iterator>
#include <span>
#include <utility>

namespace lusymbols
{

namespace
{

using luk::illustration::SequencerTag;
using Origin = EntryReader::Origin;
using LocalizedText = EntryScratch::LocalizedText;

const du::Localizer& Messages()
{
    static const du::Localizer localizer(format::kMessageTable);
    return localizer;
}

/// Reads the text of an element, or looks it up where the element has a key.
void Read(const dg::XmlElem& element, LocalizedText& out)
{
    out.text.clear();
    out.key.clear();
    if (element.HasAttribute(format::kLocId)) {
        out.key = element.GetAttribute(format::kLocId);
        out.text = Messages().LocalizeMessage(out.key);
    } else {
        element.AppendText(out.text);
    }
}

LocalizedText ReadLocalizedText(const dg::XmlElem& element)
{
    LocalizedText result;
    Read(element, result);
    return result;
}

/// What the child elements of one entry are read into.
template <class Item>
struct EntryContext {
    Item& item;
    const LibraryRoots& roots;
    /// Its title is the entry's as read so far: it is set once all children are known, since it may fall back to the name.
    EntryScratch& scratch;

    std::string_view TextView(const dg::XmlElem& element) { return element.GetTextView(scratch.plain); }

    std::string& Text(const dg::XmlElem& element)
    {
        scratch.plain.clear();
        element.AppendText(scratch.plain);
        return scratch.plain;
    }

    std::string& Copy(std::string_view text) { return scratch.plain.assign(text); }

    LocalizedText& Localized(const dg::XmlElem& element)
    {
        Read(element, scratch.localized);
        return scratch.localized;
    }
};

/// How one child element of an entry is read.
template <class Item>
struct ChildReader {
    std::string_view name;
    void (*read)(const dg::XmlElem& element, EntryContext<Item>& entry);
};

/// Reads the children of one element by name. They mostly come in the writer's order, which is that of the table, so the
/// search for each goes on behind the one before it.
template <class Item>
void ReadChildren(const dg::XmlElem& parent, std::span<const ChildReader<Item>> readers, EntryContext<Item>& entry)
{
    std::size_t next = 0;
    for (dg::XmlElem child = parent.FirstChild(); child; child = child.NextSibling()) {
        const std::string_view name = child.GetName();
        for (std::size_t tried = 0; tried < readers.size(); ++tried) {
            const ChildReader<Item>& reader = readers[next];
            next = next + 1 == readers.size() ? 0 : next + 1;
            if (reader.name == name) {
                reader.read(child, entry);
                break;
            }
        }
    }
}

void ReadTag(const dg::XmlElem& element, PartslibraryItem& item)
{
    const auto tag = du::MakeCounted<SequencerTag>();
    tag->SetName(item.GetName());
    if (element.HasAttribute(format::kType)) {
        tag->SetType(SequencerTag::GetTypeForSymbol(du::Symbol(element.GetAttribute(format::kType))));
    }
    for (dg::XmlElem child = element.FirstChild(); child; child = child.NextSibling()) {
        if (child.GetName() == format::kDescription) {
            const LocalizedText description = ReadLocalizedText(child);
            tag->SetDescription(description.text);
            tag->SetLocIdDesc(description.key);
        } else if (child.GetName() == format::kQuantity) {
            if (child.HasAttribute(format::kLocId)) {
                const LocalizedText units = ReadLocalizedText(child);
                tag->SetUnits(units.text);
                tag->SetLocIdUnits(units.key);
            } else if (child.HasAttribute(format::kUnit)) {
                tag->SetUnits(std::string(child.GetAttribute(format::kUnit)));
                tag->SetLocIdUnits(std::string());
            }
            tag->SetQuantityString(child.GetText());
        }
    }
    item.AddSequencerTag(tag);
}

template <class Item>
void ReadName(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    LocalizedText& name = entry.Localized(element);
    entry.item.SetName(name.text);
    entry.item.SetLocIdName(name.key);
}

template <class Item>
void ReadTitle(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    LocalizedText& title = entry.Localized(element);
    entry.scratch.title = title.text;
    entry.item.SetLocIdTitle(title.key);
}

template <class Item>
void ReadDescription(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    LocalizedText& description = entry.Localized(element);
    entry.item.SetDescription(description.text);
    entry.item.SetLocIdDesc(description.key);
}

template <class Item>
void ReadShowTooltipTitle(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    entry.item.SetShowTooltipTitle(dg::ParseBool(entry.TextView(element), entry.item.ShowTooltipTitle()));
}

template <class Item>
void ReadShowTooltipDescription(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    entry.item.SetShowTooltipDescription(dg::ParseBool(entry.TextView(element), entry.item.ShowTooltipDescription()));
}

template <class Item>
void ReadTags(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    for (dg::XmlElem child = element.FirstChild(); child; child = child.NextSibling()) {
        if (child.GetName() == format::kTag) {
            ReadTag(child, entry.item);
        }
    }
}

/// Reads a URL of the entry, resolved, into one of its fields; an element without one is ignored.
template <class Item, void (Item::*Set)(const std::string&)>
void ReadUrl(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    if (element.HasAttribute(format::kUrl)) {
        entry.roots.Resolve(entry.item, element.GetAttribute(format::kUrl), entry.scratch.plain);
        (entry.item.*Set)(entry.scratch.plain);
    }
}

template <class Item, void (Item::*Set)(const std::string&)>
void ReadText(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    (entry.item.*Set)(entry.Text(element));
}

template <class Item, void (Item::*Set)(std::int32_t)>
void ReadInt(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    (entry.item.*Set)(dg::ParseInt(entry.TextView(element)));
}

template <class Item, void (Item::*Set)(double)>
void ReadDouble(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    (entry.item.*Set)(dg::ParseDouble(entry.TextView(element)));
}

template <class Item, void (Item::*Set)(bool), bool (Item::*Get)() const>
void ReadBool(const dg::XmlElem& element, EntryContext<Item>& entry)
{
    (entry.item.*Set)(dg::ParseBool(entry.TextView(element), (entry.item.*Get)()));
}

/// The place of an attribute among the twelve of a coordinate system: the matrix row by row, then the position; or more.
std::size_t CsysIndex(std::string_view name)
{
    std::size_t index = 0;
    for (const auto& row : format::kCsysMatrix) {
        for (const std::string_view entry : row) {
            if (name == entry) {
                return index;
            }
            ++index;
        }
    }
    const auto* const position = std::find(std::begin(format::kCsysPosition), std::end(format::kCsysPosition), name);
    return index + static_cast<std::size_t>(position - std::begin(format::kCsysPosition));
}

void ReadCsys(const dg::XmlElem& element, EntryContext<PartslibraryOlItem>& entry)
{
    dg::FMat33 matrix = dg::FMat33::IDENTITY;
    double position[3] = {0.0, 0.0, 0.0};
    std::bitset<12> seen;
    for (dg::XmlAttribute attribute = element.FirstAttribute(); attribute; attribute = attribute.Next()) {
        const std::size_t index = CsysIndex(attribute.GetName());
        // Of attributes with one name the first counts.
        if (index >= seen.size() || seen.test(index)) {
            continue;
        }
        seen.set(index);
        if (index < 9) {
            matrix.Set(static_cast<int>(index / 3), static_cast<int>(index % 3), dg::ParseFloat(attribute.GetValue()));
        } else {
            position[index - 9] = dg::ParseDouble(attribute.GetValue());
        }
    }
    entry.item.SetOlCsys(dg::Location(matrix, {position[0], position[1], position[2]}));
}

void ReadCamera(const dg::XmlElem& element, EntryContext<PartslibraryOlItem>& entry)
{
    entry.item.SetCameraData(element.GetAttributeAsBool(format::kOrtho), element.GetAttributeAsDouble(format::kValue),
                             element.GetAttributeAsLocation(format::kLocation));
}

void ReadFlip(const dg::XmlElem& element, EntryContext<PartslibraryImageItem>& entry)
{
    PartslibraryImageItem& item = entry.item;
    item.SetFlipHorizontal(element.GetAttributeAsBool(format::kHorizontal, item.GetFlipHorizontal()));
    item.SetFlipVertical(element.GetAttributeAsBool(format::kVertical, item.GetFlipVertical()));
}

void ReadRotate(const dg::XmlElem& element, EntryContext<PartslibraryImageItem>& entry)
{
    PartslibraryImageItem& item = entry.item;
    item.SetRotateRight(element.GetAttributeAsInt(format::kRight, item.GetRotateRight()));
    item.SetRotateLeft(element.GetAttributeAsInt(format::kLeft, item.GetRotateLeft()));
}

using Ol = PartslibraryOlItem;
constexpr ChildReader<Ol> kShapeReaders[] = {
    {format::kName, ReadName<Ol>},
    {format::kTitle, ReadTitle<Ol>},
    {format::kShowTooltipTitle, ReadShowTooltipTitle<Ol>},
    {format::kDescription, ReadDescription<Ol>},
    {format::kShowTooltipDescription, ReadShowTooltipDescription<Ol>},
    {format::kTooltip, ReadText<Ol, &Ol::SetOlTooltip>},
    {format::kGalleryThumbnail, ReadUrl<Ol, &Ol::SetOlGalleryThumbnailUrl>},
    {format::kGraphic, ReadUrl<Ol, &Ol::SetOlUrl>},
    {format::kScale, ReadDouble<Ol, &Ol::SetOlScale>},
    {format::kOrientation, ReadInt<Ol, &Ol::SetOlOrientation>},
    {format::kShapeCsys, ReadCsys},
    {format::kAxisName, ReadText<Ol, &Ol::SetAxisName>},
    {format::kDistanceFromCsys, ReadDouble<Ol, &Ol::SetDistanceFromCsys>},
    {format::kAxisId, ReadInt<Ol, &Ol::SetAxisId>},
    {format::kOrientationName, ReadText<Ol, &Ol::SetOrientationName>},
    {format::kAnnotationToSymbol, ReadBool<Ol, &Ol::SetAnnotationSymbol, &Ol::IsAnnotationSymbol>},
    {format::kUseCurrentOrientation, ReadBool<Ol, &Ol::SetUseCurrentOrientation, &Ol::IsUseCurrentOrientation>},
    {format::kEditCsysMethod, ReadInt<Ol, &Ol::SetEditCsysMethod>},
    {format::kTags, ReadTags<Ol>},
    {format::kCamera, ReadCamera},
};

using Image = PartslibraryImageItem;
constexpr ChildReader<Image> kSymbolReaders[] = {
    {format::kName, ReadName<Image>},
    {format::kTitle, ReadTitle<Image>},
    {format::kShowTooltipTitle, ReadShowTooltipTitle<Image>},
    {format::kDescription, ReadDescription<Image>},
    {format::kShowTooltipDescription, ReadShowTooltipDescription<Image>},
    {format::kTooltip, ReadText<Image, &Image::SetImageTooltip>},
    {format::kGalleryThumbnail, ReadUrl<Image, &Image::SetImageGalleryThumbnailUrl>},
    {format::kImage, ReadUrl<Image, &Image::SetImageUrl>},
    {format::kScale, ReadInt<Image, &Image::SetImageScale>},
    {format::kFlip, ReadFlip},
    {format::kRotate, ReadRotate},
    {format::kTags, ReadTags<Image>},
};

/// Reads id, category and children of one entry, with the defaults of the document.
template <class Item>
void ReadCommon(const dg::XmlElem& element, std::span<const ChildReader<Item>> readers, EntryContext<Item>& entry)
{
    Item& item = entry.item;
    item.SetId(entry.Copy(element.GetAttribute(format::kId)));
    item.SetCategoryId(entry.Copy(element.GetAttribute(format::kCategoryId)));
    item.SetShowTooltipTitle(true);
    item.SetShowTooltipDescription(false);
    entry.scratch.title.clear();
    ReadChildren(element, readers, entry);
    item.SetTitle(entry.scratch.title.empty() ? item.GetName() : entry.scratch.title);
}

void ReadEntry(const dg::XmlElem& element, EntryContext<PartslibraryOlItem> entry)
{
    ReadCommon<Ol>(element, kShapeReaders, entry);
    std::string& url = entry.Copy(entry.item.GetOlGalleryThumbnailUrl());
    PartslibraryOlItem::ComputeThumbnailUrl(url, std::string(format::kGalleryThumbnailSize),
                                            std::string(format::kDialogThumbnailSize));
    entry.item.SetOlDlgThumbnailUrl(url);
}

void ReadEntry(const dg::XmlElem& element, EntryContext<PartslibraryImageItem> entry)
{
    PartslibraryImageItem& image = entry.item;
    image.SetIsBillboardImage(element.GetAttributeAsBool(format::kBillboard, image.GetIsBillboardImage()));
    ReadCommon<Image>(element, kSymbolReaders, entry);
    std::string& url = entry.Copy(image.GetImageGalleryThumbnailUrl());
    image.ComputeDialogThumbnailUrl(url);
    image.SetImageDlgThumbnailUrl(url);
}

/// Makes an entry of an element if it has the name that entries have.
template <class Item>
du::SmartPtr<PartslibraryItem> MakeEntry(const dg::XmlElem& element, std::string_view name, Origin origin,
                                         const LibraryRoots& roots, EntryScratch& scratch)
{
    if (element.GetName() != name) {
        return nullptr;
    }
    const auto item = du::MakeCounted<Item>(origin);
    ReadEntry(element, EntryContext<Item>{*item, roots, scratch});
    return item;
}

} // namespace

EntryReader::EntryReader(Origin origin, const LibraryRoots& roots) : m_origin(origin), m_roots(roots) {}

du::SmartPtr<PartslibraryItem> EntryReader::ReadShape(const dg::XmlElem& element)
{
    return MakeEntry<PartslibraryOlItem>(element, format::kShape, m_origin, m_roots, m_scratch);
}

du::SmartPtr<PartslibraryItem> EntryReader::ReadSymbol(const dg::XmlElem& element)
{
    return MakeEntry<PartslibraryImageItem>(element, format::kSymbol, m_origin, m_roots, m_scratch);
}

void ReadCategory(const dg::XmlElem& element, PartslibraryCategoryItem& category)
{
    category.SetId(std::string(element.GetAttribute(format::kId)));
    for (dg::XmlElem child = element.FirstChild(); child; child = child.NextSibling()) {
        const std::string_view name = child.GetName();
        if (name == format::kName) {
            LocalizedText text = ReadLocalizedText(child);
            category.SetCatName(std::move(text.text));
            category.SetLocIdName(text.key);
        } else if (name == format::kTooltip) {
            category.SetCatTooltip(child.GetText());
        } else if (name == format::kDescription) {
            category.SetCatDescription(child.GetText());
        }
    }
}

} // namespace lusymbols
