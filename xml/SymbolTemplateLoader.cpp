#include "xml/SymbolTemplateLoader.h"

#include "catalog/LibraryRoots.h"
#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryItem.h"
#include "xml/EntryReader.h"
#include "xml/LibraryFormat.h"
#include "xml/LibraryPieces.h"
#include "xml/LibraryText.h"
#include "xml/RunOnThreads.h"

#include <dg/XmlElem.h>
#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <luk/illustration/SymbolCollectionInformation.h>
#include <luk/Preferences.h>
#include <luk/World.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>
#include <mutex>
#include <span>
#include <utility>

namespace lusymbols
{

namespace
{

using luk::illustration::CategoryInfo;
using luk::illustration::CollectionInformation;
using luk::illustration::SymbolCollectionInformation;
using luk::illustration::SymbolTemplate;
using Origin = SymbolTemplateLoader::Origin;

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

constexpr std::size_t kMergedAtOnce = 32;

/// Makes room so that appending stays linear over many calls, which an exact reserve in each would not.
template <class T>
void ReserveMore(std::vector<T>& list, std::size_t more)
{
    const std::size_t needed = list.size() + more;
    if (needed > list.capacity()) {
        list.reserve(std::max(needed, 2 * list.capacity()));
    }
}

/// Reads one element of a section; null when it is no entry.
using EntryFunction = du::SmartPtr<PartslibraryItem> (EntryReader::*)(const dg::XmlElem& element);

EntryFunction EntriesOf(std::string_view section)
{
    return section == format::kShapes ? &EntryReader::ReadShape : &EntryReader::ReadSymbol;
}

using Entries = std::vector<du::SmartPtr<PartslibraryItem>>;

/// Reads the entries of all pieces of a document, on several threads where there are many.
class PieceReading
{
public:
    PieceReading(LibraryPieces& pieces, Origin origin) : m_pieces(pieces), m_origin(origin) {}

    /// @return whether all of them are whole entries
    bool Run(std::size_t blocks)
    {
        RunOnThreads(blocks / kBlocksWorthAThread, [this] { ReadWhileThereAreAny(); });
        return m_isWhole;
    }

    /// By the number of the piece.
    std::span<Entries> GetEntries() noexcept { return m_entries; }

private:
    static constexpr std::size_t kBlocksWorthAThread = 2;

    void ReadWhileThereAreAny()
    {
        EntryReader reader(m_origin, m_roots);
        LibraryPieces::Piece piece;
        while (m_isWhole && m_pieces.Take(piece)) {
            if (const XmlRoot root = piece.Parse()) {
                Keep(piece.number, Read(reader, root->FirstChild(), EntriesOf(piece.section)));
            } else {
                m_isWhole = false;
            }
        }
    }

    static Entries Read(EntryReader& reader, const dg::XmlElem& section, EntryFunction read)
    {
        Entries entries;
        for (dg::XmlElem element = section.FirstChild(); element; element = element.NextSibling()) {
            if (auto entry = (reader.*read)(element)) {
                entries.push_back(std::move(entry));
            }
        }
        return entries;
    }

    void Keep(std::size_t number, Entries&& entries)
    {
        const std::lock_guard lock(m_lock);
        m_entries.resize(std::max(m_entries.size(), number + 1));
        m_entries[number] = std::move(entries);
    }

    LibraryPieces& m_pieces;
    const Origin m_origin;
    const LibraryRoots m_roots = LibraryRoots::FromHost();
    std::atomic<bool> m_isWhole = true;
    std::mutex m_lock;
    std::vector<Entries> m_entries;
};

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
    if (source.starts_with(format::kInlineDocumentStart)) {
        const XmlRoot root(dg::ParseXml(source, false, nullptr));
        CreateListFromXml(root.get(), origin);
    } else if (!ReadInPieces(source, origin)) {
        const XmlRoot root(dg::ParseXml(LibraryText(source).ReadRest(), false, nullptr));
        CreateListFromXml(root.get(), origin);
    }
}

bool SymbolTemplateLoader::ReadInPieces(const std::string& path, Origin origin)
{
    LibraryText file(path);
    const std::size_t blocks = file.CountBlocks();
    LibraryPieces pieces(std::move(file));
    PieceReading reading(pieces, origin);
    if (!reading.Run(blocks)) {
        return false;
    }
    const XmlRoot root(dg::ParseXml(pieces.TakeRest(), false, nullptr));
    if (root && pieces.HasAllMarkers(*root)) {
        ReadSections(*root, origin, reading.GetEntries());
        return true;
    }
    return pieces.CountPieces() == 0;
}

void SymbolTemplateLoader::CreateListFromXml(dg::XmlElem* root, Origin origin)
{
    if (root) {
        ReadSections(*root, origin, {});
    }
}

void SymbolTemplateLoader::ReadSections(const dg::XmlElem& root, Origin origin, std::span<Entries> pieces)
{
    if (root.GetName() != format::kRoot) {
        return;
    }
    if (origin != Origin::ORIGIN_SHARED && root.CountChildren() != format::kSectionCount) {
        return;
    }
    for (dg::XmlElem section = root.FirstChild(); section; section = section.NextSibling()) {
        const std::string_view name = section.GetName();
        if (name == format::kUnits) {
            SetUnits(section.GetText());
        } else if (name == format::kInformation) {
            SetInformation(section.GetText());
        } else if (name == format::kCategories) {
            CreateCategoryListFromXml(&section, origin);
        } else if (name == format::kShapes || name == format::kSymbols) {
            ReadEntries(section, name, origin, pieces);
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

void SymbolTemplateLoader::ReadEntries(const dg::XmlElem& section, std::string_view name, Origin origin,
                                       std::span<Entries>& pieces)
{
    const LibraryRoots roots = LibraryRoots::FromHost();
    EntryReader reader(origin, roots);
    const EntryFunction read = EntriesOf(name);
    for (dg::XmlElem element = section.FirstChild(); element; element = element.NextSibling()) {
        if (auto entry = (reader.*read)(element)) {
            m_pendingItems.push_back(std::move(entry));
        } else if (!pieces.empty() && LibraryPieces::IsMarker(element)) {
            m_pendingItems.insert(m_pendingItems.end(), std::make_move_iterator(pieces.front().begin()),
                                  std::make_move_iterator(pieces.front().end()));
            pieces = pieces.subspan(1);
        }
    }
}

void SymbolTemplateLoader::CreateOlListFromXml(dg::XmlElem* shapes, Origin origin)
{
    std::span<Entries> none;
    if (shapes) {
        ReadEntries(*shapes, format::kShapes, origin, none);
    }
}

void SymbolTemplateLoader::CreateImageListFromXml(dg::XmlElem* symbols, Origin origin)
{
    std::span<Entries> none;
    if (symbols) {
        ReadEntries(*symbols, format::kSymbols, origin, none);
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
    std::erase(m_pendingItems, nullptr);
    for (std::span<du::SmartPtr<PartslibraryItem>> rest = m_pendingItems; !rest.empty();) {
        const std::size_t count = std::min(rest.size(), kMergedAtOnce);
        AddUniqueNames(rest.first(count), names);
        rest = rest.subspan(count);
    }
    m_pendingItems.clear();
}

void SymbolTemplateLoader::AddUniqueNames(std::span<du::SmartPtr<PartslibraryItem>> items, TextSet& names)
{
    // Entries, names and places in the sets lie anywhere in a memory larger than any cache; asked for together they come
    // together.
    for (const du::SmartPtr<PartslibraryItem>& item : items) {
        __builtin_prefetch(&item->GetName());
    }
    std::array<std::pair<TextSet::Key, TextSet::Key>, kMergedAtOnce> keys;
    std::ranges::transform(items, keys.begin(), [&](const du::SmartPtr<PartslibraryItem>& item) {
        return std::pair(names.Fetch(item->GetName()), m_ids.Fetch(item->GetId()));
    });
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (names.Insert(keys[i].first)) {
            GiveUniqueId(*items[i], keys[i].second);
            m_templates.push_back(std::move(items[i]));
        }
    }
}

void SymbolTemplateLoader::GiveUniqueId(PartslibraryItem& item, const TextSet::Key& id)
{
    if (m_ids.Insert(id)) {
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
