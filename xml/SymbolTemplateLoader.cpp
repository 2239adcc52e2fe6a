#include "xml/SymbolTemplateLoader.h"

#include "catalog/LibraryRoots.h"
#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "xml/LibraryFormat.h"
#include "xml/LibraryPath.h"
#include "xml/RunInRanges.h"

#include <dg/ParseNumber.h>
#include <dg/XmlElem.h>
#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <du/Localizer.h>
#include <luk/illustration/SequencerTag.h>
#include <luk/illustration/SymbolCollectionInformation.h>
#include <luk/Preferences.h>
#include <luk/World.h>

#include <algorithm>
#include <bitset>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <utility>

namespace lusymbols
{

namespace
{

using luk::illustration::CategoryInfo;
using luk::illustration::CollectionInformation;
using luk::illustration::SequencerTag;
using luk::illustration::SymbolCollectionInformation;
using luk::illustration::SymbolTemplate;
using Origin = SymbolTemplateLoader::Origin;

const du::Localizer& Messages()
{
    static const du::Localizer localizer(format::kMessageTable);
    return localizer;
}

/// A text of the document, and the key by which it was looked up where the element had one.
struct LocalizedText {
    std::string text;
    std::string key;

    void Read(const dg::XmlElem& element)
    {
        text.clear();
        key.clear();
        if (element.HasAttribute(format::kLocId)) {
            key = element.GetAttribute(format::kLocId);
            text = Messages().LocalizeMessage(key);
        } else {
            element.AppendText(text);
        }
    }
};

LocalizedText ReadLocalizedText(const dg::XmlElem& element)
{
    LocalizedText result;
    result.Read(element);
    return result;
}

/// Strings that serve one entry after the other, so that reading a text costs no allocation but that of its field.
struct Scratch {
    std::string plain;
    LocalizedText localized;
    std::string title;
};

/// What the child elements of one entry are read into.
template <class Item>
struct EntryContext {
    Item& item;
    const LibraryRoots& roots;
    /// Its title is the entry's as read so far: it is set once all children are known, since it may fall back to the name.
    Scratch& scratch;

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
        scratch.localized.Read(element);
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

std::vector<dg::XmlElem> ChildrenNamed(const dg::XmlElem& parent, std::string_view name)
{
    std::vector<dg::XmlElem> elements;
    for (dg::XmlElem child = parent.FirstChild(); child; child = child.NextSibling()) {
        if (child.GetName() == name) {
            elements.push_back(child);
        }
    }
    return elements;
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

/// Cuts the carriage return off the end of each line, and ends the last line with a line feed like all others.
class LineCollector
{
public:
    explicit LineCollector(std::size_t expectedSize) { m_lines.reserve(expectedSize + 1); }

    void Append(std::string_view chunk)
    {
        if (m_hasPendingReturn && !chunk.empty()) {
            m_lines.append(chunk.front() == '\n' ? "" : "\r");
            m_hasPendingReturn = false;
        }
        if (!chunk.empty() && chunk.back() == '\r') {
            chunk.remove_suffix(1);
            m_hasPendingReturn = true;
        }
        for (std::size_t found = 0; (found = chunk.find('\r', found)) != std::string_view::npos;) {
            if (chunk.substr(found + 1).starts_with('\n')) {
                m_lines.append(chunk.substr(0, found));
                chunk.remove_prefix(found + 1);
                found = 0;
            } else {
                ++found;
            }
        }
        m_lines.append(chunk);
    }

    std::string Finish()
    {
        if (m_hasPendingReturn || (!m_lines.empty() && m_lines.back() != '\n')) {
            m_lines += '\n';
        }
        return std::move(m_lines);
    }

private:
    std::string m_lines;
    bool m_hasPendingReturn = false;
};

/// The lines of a regular file; empty for anything else, since a pipe or a device might never end, and for a file with a
/// NUL byte, which is no document and, where it is a hole in the file, might go on for terabytes.
std::string ReadLines(const std::string& path)
{
    if (!du::FileSystem::FileReadable(path)) {
        return std::string();
    }
    std::ifstream file(MakeLibraryPath(path), std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    file.seekg(0);
    // The size is what the file claims; its bytes have to come before more than this is set aside for them.
    constexpr std::streamoff kMaxFirstReserve = std::streamoff{256} * 1024 * 1024;
    LineCollector lines(static_cast<std::size_t>(std::clamp(size, std::streamoff{0}, kMaxFirstReserve)));
    // Small enough to stay in the cache between reading, looking for carriage returns and copying.
    constexpr std::size_t kChunkSize = std::size_t{128} * 1024;
    const auto buffer = std::make_unique_for_overwrite<char[]>(kChunkSize);
    while (file) {
        file.read(buffer.get(), kChunkSize);
        const std::string_view chunk(buffer.get(), static_cast<std::size_t>(file.gcount()));
        if (chunk.find('\0') != std::string_view::npos) {
            return std::string();
        }
        lines.Append(chunk);
    }
    return lines.Finish();
}

/// Whether two normalised paths name the same file, as far as their texts can tell.
bool IsSamePath(std::string_view a, std::string_view b)
{
#ifdef _WIN32
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
#else
    return a == b;
#endif
}

du::FileSpec MakeLibraryFile(const std::string& folder)
{
    du::FileSpec file;
    file.SetLocation(folder);
    file.SetFileBaseName(format::kLibraryFileBaseName);
    file.SetFileExtension(format::kLibraryFileExtension);
    return file;
}

bool IsSharedLibrary(const std::string& libraryFile)
{
    const du::SmartPtr<luk::World> world = luk::World::GetWorld();
    const du::SmartPtr<luk::Preferences> preferences = world ? world->GetPreferences() : nullptr;
    if (!preferences || !preferences->IsSharedSymbolLibraryEnabled() ||
        preferences->GetSharedSymbolLibraryFolder().IsNull()) {
        return false;
    }
    std::string folder = preferences->GetSharedSymbolLibraryFolder().GetText();
    folder.append("/").append(format::kLibraryFolder);
    const std::string shared = MakeLibraryFile(folder).GetFileSpec();
    return IsSamePath(shared, libraryFile) && du::FileSystem::FileReadable(shared);
}

Origin ChooseOrigin(const std::string& source)
{
    const std::string libraryFile = du::FileSpec(source).GetFileSpec();
    if (libraryFile.empty()) {
        return Origin::ORIGIN_OOTB;
    }
    if (IsSharedLibrary(libraryFile)) {
        return Origin::ORIGIN_SHARED;
    }
    const du::FileSpec user = MakeLibraryFile(Partslibrary::GetLibraryPath());
    du::FileSpec delivered;
    delivered.SetFileSpec(user.GetFileSpec());
    delivered.DirPushBack(format::kStandardFolder);
    if (IsSamePath(delivered.GetFileSpec(), libraryFile)) {
        return Origin::ORIGIN_OOTB;
    }
    return IsSamePath(user.GetFileSpec(), libraryFile) ? Origin::ORIGIN_USER : Origin::ORIGIN_OOTB;
}

/// Makes room so that appending stays linear over many calls, which an exact reserve in each would not.
template <class T>
void ReserveMore(std::vector<T>& list, std::size_t more)
{
    const std::size_t needed = list.size() + more;
    if (needed > list.capacity()) {
        list.reserve(std::max(needed, 2 * list.capacity()));
    }
}

} // namespace

SymbolTemplateLoader::SymbolTemplateLoader() = default;
SymbolTemplateLoader::~SymbolTemplateLoader() = default;
SymbolTemplateLoader::SymbolTemplateLoader(const SymbolTemplateLoader& other) = default;
SymbolTemplateLoader& SymbolTemplateLoader::operator=(const SymbolTemplateLoader& other) = default;

du::SmartPtr<CollectionInformation> SymbolTemplateLoader::GetCollectionInformation()
{
    const auto information = du::MakeCounted<SymbolCollectionInformation>();
    information->SetUnits(m_units);
    information->SetInformation(m_information);
    return information;
}

bool SymbolTemplateLoader::GetTemplateList(const du::Symbol& libraryFile,
                                           std::vector<du::SmartPtr<SymbolTemplate>>& out)
{
    const std::size_t categoryCount = m_categories.size();
    const std::size_t pendingCount = m_pendingItems.size();
    try {
        ParseFromFile(libraryFile.GetText(), ChooseOrigin(libraryFile.GetText()));
        AddPartslibraryList();
        ReserveMore(out, m_templates.size());
    } catch (const std::bad_alloc&) {
        // What was read of it would be there twice when it is read again; entries are not, since names are unique.
        m_categories.erase(m_categories.begin() + static_cast<std::ptrdiff_t>(categoryCount), m_categories.end());
        const std::size_t kept = std::min(pendingCount, m_pendingItems.size());
        m_pendingItems.erase(m_pendingItems.begin() + static_cast<std::ptrdiff_t>(kept), m_pendingItems.end());
        throw;
    }
    out.insert(out.end(), m_templates.begin(), m_templates.end());
    return true;
}

void SymbolTemplateLoader::GetCategoryList(std::vector<du::SmartPtr<CategoryInfo>>& out)
{
    ReserveMore(out, m_categories.size());
    out.insert(out.end(), m_categories.begin(), m_categories.end());
}

void SymbolTemplateLoader::ParseFromFile(const std::string& source, Origin origin)
{
    // What is read from a file is parsed where it lies.
    const bool isInline = source.starts_with(format::kInlineDocumentStart);
    const std::unique_ptr<dg::XmlElem, dg::XmlFreer> root(isInline ? dg::ParseXml(source, false, nullptr)
                                                                   : dg::ParseXml(ReadLines(source), false, nullptr));
    if (root) {
        CreateListFromXml(root.get(), origin);
    }
}

void SymbolTemplateLoader::CreateListFromXml(dg::XmlElem* root, Origin origin)
{
    if (!root || root->GetName() != format::kRoot) {
        return;
    }
    if (origin != Origin::ORIGIN_SHARED && root->CountChildren() != format::kSectionCount) {
        return;
    }
    for (dg::XmlElem section = root->FirstChild(); section; section = section.NextSibling()) {
        const std::string_view name = section.GetName();
        if (name == format::kUnits) {
            SetUnits(section.GetText());
        } else if (name == format::kInformation) {
            SetInformation(section.GetText());
        } else if (name == format::kCategories) {
            CreateCategoryListFromXml(&section, origin);
        } else if (name == format::kShapes) {
            CreateOlListFromXml(&section, origin);
        } else if (name == format::kSymbols) {
            CreateImageListFromXml(&section, origin);
        }
    }
}

void SymbolTemplateLoader::CreateCategoryListFromXml(dg::XmlElem* categories, Origin origin)
{
    if (!categories) {
        return;
    }
    for (dg::XmlElem element = categories->FirstChild(); element; element = element.NextSibling()) {
        if (element.GetName() == format::kCategory) {
            const auto category = du::MakeCounted<PartslibraryCategoryItem>(origin);
            ReadCategory(element, *category);
            AddCategoryItem(category);
        }
    }
}

template <class Item>
void SymbolTemplateLoader::ReadEntries(const dg::XmlElem& section, std::string_view name, Origin origin)
{
    const std::vector<dg::XmlElem> elements = ChildrenNamed(section, name);
    std::vector<du::SmartPtr<PartslibraryItem>> items(elements.size());
    const LibraryRoots roots = LibraryRoots::FromHost();
    RunInRanges(elements.size(), kEntriesWorthAThread, [&](std::size_t begin, std::size_t end) {
        Scratch scratch;
        for (std::size_t i = begin; i < end; ++i) {
            const auto item = du::MakeCounted<Item>(origin);
            ReadEntry(elements[i], EntryContext<Item>{*item, roots, scratch});
            items[i] = item;
        }
    });
    m_pendingItems.insert(m_pendingItems.end(), std::make_move_iterator(items.begin()),
                          std::make_move_iterator(items.end()));
}

void SymbolTemplateLoader::CreateOlListFromXml(dg::XmlElem* shapes, Origin origin)
{
    if (shapes) {
        ReadEntries<PartslibraryOlItem>(*shapes, format::kShape, origin);
    }
}

void SymbolTemplateLoader::CreateImageListFromXml(dg::XmlElem* symbols, Origin origin)
{
    if (symbols) {
        ReadEntries<PartslibraryImageItem>(*symbols, format::kSymbol, origin);
    }
}

void SymbolTemplateLoader::AddItem(const du::SmartPtr<PartslibraryItem>& item) { m_pendingItems.push_back(item); }

void SymbolTemplateLoader::AddCategoryItem(const du::SmartPtr<PartslibraryCategoryItem>& category)
{
    m_categories.push_back(category);
}

void SymbolTemplateLoader::AddPartslibraryList()
{
    // Names may have changed since the last merge, so the set is made of what they are now.
    TextSet names;
    names.Reserve(m_templates.size() + m_pendingItems.size());
    for (const du::SmartPtr<SymbolTemplate>& item : m_templates) {
        names.Insert(item->GetName());
    }
    ReserveMore(m_templates, m_pendingItems.size());
    m_ids.Reserve(m_templates.size() + m_pendingItems.size());
    for (du::SmartPtr<PartslibraryItem>& item : m_pendingItems) {
        if (item && names.Insert(item->GetName())) {
            GiveUniqueId(*item);
            m_templates.push_back(std::move(item));
        }
    }
    m_pendingItems.clear();
}

void SymbolTemplateLoader::GiveUniqueId(PartslibraryItem& item)
{
    if (m_ids.Insert(item.GetId())) {
        return;
    }
    unsigned long& suffix = m_nextSuffixById[item.GetId()];
    std::string candidate;
    do {
        candidate = item.GetId() + std::to_string(++suffix);
    } while (!m_ids.Insert(candidate));
    item.SetId(candidate);
}

} // namespace lusymbols
