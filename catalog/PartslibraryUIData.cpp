#include "catalog/PartslibraryUIData.h"

#include "catalog/LibraryRoots.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"

#include <du/TextHash.h>
#include <du/Utf8.h>
#include <luk/illustration/SymbolTemplateCollection.h>

#include <array>
#include <string_view>
#include <typeinfo>
#include <unordered_map>
#include <utility>

namespace lusymbols
{

namespace
{

using luk::illustration::AssociativeObject;
using luk::illustration::CategoryInfo;
using luk::illustration::SymbolTemplateCollection;

/// Sorts entries into shared, delivered and own ones, each kind in the order in which it came.
template <class Item>
class SourceBuckets
{
public:
    void Add(const Item* item)
    {
        const std::size_t rank = item->IsShared() ? 0 : item->IsOOTB() ? 1 : 2;
        m_buckets[rank].push_back(item);
    }

    std::vector<const Item*> TakeSorted()
    {
        std::vector<const Item*> sorted = std::move(m_buckets[0]);
        sorted.reserve(sorted.size() + m_buckets[1].size() + m_buckets[2].size());
        for (std::size_t rank : {1u, 2u}) {
            sorted.insert(sorted.end(), m_buckets[rank].begin(), m_buckets[rank].end());
        }
        return sorted;
    }

private:
    std::array<std::vector<const Item*>, 3> m_buckets;
};

/// Entries by the id of their category, in list order.
template <class Item>
using ItemsByCategory = std::unordered_map<std::string_view, std::vector<const Item*>, du::TextHash>;

template <class Item>
ItemsByCategory<Item> GroupByCategory(const std::vector<const Item*>& items)
{
    ItemsByCategory<Item> groups;
    for (const Item* const item : items) {
        if (item) {
            groups[item->GetCategoryId()].push_back(item);
        }
    }
    return groups;
}

/// The object as an entry of this kind, or null. Nearly all are of one of the two classes exactly, which is told sooner
/// than that they are of none derived from the other.
template <class Item>
const Item* CastTo(const AssociativeObject& object) noexcept
{
    if (typeid(object) == typeid(Item)) {
        return static_cast<const Item*>(&object);
    }
    const bool isOther =
        typeid(object) == typeid(PartslibraryOlItem) || typeid(object) == typeid(PartslibraryImageItem);
    return isOther ? nullptr : dynamic_cast<const Item*>(&object);
}

/// The entries behind the handles, null where a handle is.
template <class Item>
std::vector<const Item*> EntriesOf(const std::vector<du::SmartPtr<Item>>& handles)
{
    std::vector<const Item*> entries;
    entries.reserve(handles.size());
    for (const du::SmartPtr<Item>& handle : handles) {
        entries.push_back(handle.get());
    }
    return entries;
}

const std::string& GalleryThumbnailUrl(const PartslibraryOlItem& item) { return item.GetOlGalleryThumbnailUrl(); }

const std::string& GalleryThumbnailUrl(const PartslibraryImageItem& item) { return item.GetImageGalleryThumbnailUrl(); }

/// Asks for the memory of an entry before its turn comes. The entries of one category lie anywhere in a memory far larger
/// than any cache, and waiting for each of them is most of what a row costs.
template <class Item>
void FetchEntry(const Item* item) noexcept
{
    constexpr std::size_t kCacheLine = 64;
    for (std::size_t offset = 0; offset < sizeof(Item); offset += kCacheLine) {
        __builtin_prefetch(reinterpret_cast<const char*>(item) + offset);
    }
}

/// The same for its texts, once the entry itself is there.
template <class Item>
void FetchTexts(const Item* item) noexcept
{
    for (const std::string* text :
         {&item->GetName(), &item->GetTitle(), &item->GetDescription(), &GalleryThumbnailUrl(*item)}) {
        __builtin_prefetch(text->data());
    }
}

void AppendTooltip(std::wstring& tooltip, const PartslibraryItem& item)
{
    static constexpr std::wstring_view kBoldOn = L"\\b ";
    static constexpr std::wstring_view kBoldOff = L"\\b0 \n ";
    tooltip.reserve(kBoldOn.size() + item.GetTitle().size() + kBoldOff.size() + item.GetDescription().size());
    tooltip += kBoldOn;
    du::AppendUtf8AsWide(tooltip, item.GetTitle());
    tooltip += kBoldOff;
    du::AppendUtf8AsWide(tooltip, item.GetDescription());
}

} // namespace

/// Writes the rows of one build, from given rows on. What stands there already is written over, which spares a gallery
/// that is refreshed most of its allocations.
class PartslibraryUIData::Builder
{
public:
    Builder(PartslibraryUIData& data, std::size_t firstRow, std::size_t firstGroup)
        : m_data(data), m_firstRow(firstRow), m_row(firstRow), m_firstGroup(firstGroup), m_nextGroup(firstGroup)
    {
    }

    void Reserve(std::size_t rows, std::size_t groups)
    {
        m_data.m_icons.reserve(m_firstRow + rows);
        m_data.m_labels.reserve(m_firstRow + rows);
        m_data.m_tooltips.reserve(m_firstRow + rows);
        m_data.m_userData.reserve(m_firstRow + rows);
        m_data.m_names.reserve(m_firstRow + rows);
        m_data.m_sharedItems.reserve(m_firstRow + rows);
        m_data.m_groupNames.reserve(m_firstGroup + groups);
        m_data.m_groupLabels.reserve(m_firstGroup + groups);
        m_data.m_groupItems.reserve(m_firstGroup + groups);
    }

    void AddGroup(const PartslibraryCategoryItem& category)
    {
        At(m_data.m_groupNames, m_nextGroup) = category.GetName();
        du::AppendUtf8AsWide(Emptied(m_data.m_groupLabels, m_nextGroup), category.GetName());
        Emptied(m_data.m_groupItems, m_nextGroup);
        ++m_nextGroup;
        m_isGroupEmpty = true;
    }

    template <class Item>
    void AddRows(const ItemsByCategory<Item>& groups, const std::string& categoryId, const std::string& namePrefix,
                 std::string_view kind)
    {
        const auto group = groups.find(categoryId);
        if (group == groups.end()) {
            return;
        }
        const std::vector<const Item*>& items = group->second;
        constexpr std::size_t kAhead = 4;
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (i + 2 * kAhead < items.size()) {
                FetchEntry(items[i + 2 * kAhead]);
            }
            if (i + kAhead < items.size()) {
                FetchTexts(items[i + kAhead]);
            }
            AddRow(*items[i], GalleryThumbnailUrl(*items[i]), namePrefix, kind);
        }
    }

    /// Gives each empty group the first entry of the next group that has one, and drops what is left of older rows.
    /// @return the number of rows written
    std::uint64_t Finish()
    {
        const std::string* next = nullptr;
        for (std::size_t group = m_nextGroup; group-- > m_firstGroup;) {
            std::string& item = m_data.m_groupItems[group];
            if (!item.empty()) {
                next = &item;
            } else if (next) {
                item = *next;
            }
        }
        m_data.Truncate(m_row, m_nextGroup);
        return m_row - m_firstRow;
    }

private:
    template <class Text>
    static Text& At(std::vector<Text>& list, std::size_t index)
    {
        return index < list.size() ? list[index] : list.emplace_back();
    }

    template <class Text>
    static Text& Emptied(std::vector<Text>& list, std::size_t index)
    {
        Text& text = At(list, index);
        text.clear();
        return text;
    }

    void AddRow(const PartslibraryItem& item, const std::string& thumbnailUrl, const std::string& namePrefix,
                std::string_view kind)
    {
        m_roots.Resolve(item, thumbnailUrl, At(m_data.m_icons, m_row));
        du::AppendUtf8AsWide(Emptied(m_data.m_labels, m_row), item.GetTitle());
        AppendTooltip(Emptied(m_data.m_tooltips, m_row), item);

        std::string& name = Emptied(m_data.m_names, m_row);
        name.reserve(namePrefix.size() + item.GetName().size() + item.GetId().size());
        name.append(namePrefix).append(item.GetName()).append(item.GetId());
        if (m_isGroupEmpty) {
            m_data.m_groupItems[m_nextGroup - 1] = name;
            m_isGroupEmpty = false;
        }

        std::string& userData = Emptied(m_data.m_userData, m_row);
        userData.reserve(kind.size() + 1 + item.GetId().size());
        userData.append(kind).append(1, '.').append(item.GetId());

        if (m_row == m_data.m_sharedItems.size()) {
            m_data.m_sharedItems.push_back(false);
        }
        m_data.m_sharedItems[m_row] = item.IsShared() || item.IsOOTB();
        ++m_row;
    }

    PartslibraryUIData& m_data;
    const std::size_t m_firstRow;
    std::size_t m_row;
    const std::size_t m_firstGroup;
    std::size_t m_nextGroup;
    const LibraryRoots m_roots = LibraryRoots::FromHost();
    bool m_isGroupEmpty = true;
};

PartslibraryUIData::PartslibraryUIData() = default;

PartslibraryUIData::PartslibraryUIData(const std::string& olNamePrefix, const std::string& imageNamePrefix)
    : m_imageNamePrefix(imageNamePrefix), m_olNamePrefix(olNamePrefix)
{
    Clear();
}

PartslibraryUIData::PartslibraryUIData(const OlList& ols, const ImageList& images, const CategoryList& categories)
{
    Construct(ols, images, categories);
}

PartslibraryUIData::~PartslibraryUIData() = default;
PartslibraryUIData::PartslibraryUIData(const PartslibraryUIData& other) = default;
PartslibraryUIData::PartslibraryUIData(PartslibraryUIData&& other) noexcept = default;
PartslibraryUIData& PartslibraryUIData::operator=(const PartslibraryUIData& other) = default;
PartslibraryUIData& PartslibraryUIData::operator=(PartslibraryUIData&& other) noexcept = default;

std::uint64_t PartslibraryUIData::Refresh(const du::SmartPtr<SymbolTemplateCollection>& collection)
{
    CategoryList categories;
    SourceBuckets<PartslibraryOlItem> ols;
    SourceBuckets<PartslibraryImageItem> images;
    // Holds the entries while their rows are made.
    std::vector<du::SmartPtr<AssociativeObject>> objects;
    if (collection) {
        std::vector<du::SmartPtr<CategoryInfo>> allCategories;
        collection->GetCategories(allCategories);
        for (const auto& candidate : allCategories) {
            if (auto category = du::DynamicCast<PartslibraryCategoryItem>(candidate)) {
                categories.push_back(std::move(category));
            }
        }
        objects = collection->GetAssociativeObjects();
        for (const auto& object : objects) {
            if (const auto* const ol = CastTo<PartslibraryOlItem>(*object)) {
                ols.Add(ol);
            } else if (const auto* const image = CastTo<PartslibraryImageItem>(*object)) {
                images.Add(image);
            }
        }
    }
    const std::vector<const PartslibraryOlItem*> sortedOls = ols.TakeSorted();
    const std::vector<const PartslibraryImageItem*> sortedImages = images.TakeSorted();
    return Build(sortedOls, sortedImages, categories, 0, 0);
}

std::uint64_t PartslibraryUIData::Construct(const OlList& ols, const ImageList& images, const CategoryList& categories)
{
    const std::vector<const PartslibraryOlItem*> olEntries = EntriesOf(ols);
    const std::vector<const PartslibraryImageItem*> imageEntries = EntriesOf(images);
    return Build(olEntries, imageEntries, categories, m_icons.size(), m_groupItems.size());
}

std::uint64_t PartslibraryUIData::Build(const std::vector<const PartslibraryOlItem*>& ols,
                                        const std::vector<const PartslibraryImageItem*>& images,
                                        const CategoryList& categories, std::size_t firstRow, std::size_t firstGroup)
{
    m_numActualCategories = 0;
    m_numItems = ols.size() + images.size();
    if (m_numItems == 0) {
        Truncate(firstRow, firstGroup);
        return 0;
    }
    const ItemsByCategory<PartslibraryOlItem> olGroups = GroupByCategory(ols);
    const ItemsByCategory<PartslibraryImageItem> imageGroups = GroupByCategory(images);
    Builder builder(*this, firstRow, firstGroup);
    builder.Reserve(m_numItems, categories.size());
    for (const du::SmartPtr<PartslibraryCategoryItem>& category : categories) {
        if (!category) {
            continue;
        }
        builder.AddGroup(*category);
        ++m_numActualCategories;
        builder.AddRows(olGroups, category->GetId(), m_olNamePrefix, "ol");
        builder.AddRows(imageGroups, category->GetId(), m_imageNamePrefix, "image");
    }
    m_numItems = builder.Finish();
    return m_numItems;
}

void PartslibraryUIData::Clear() { Truncate(0, 0); }

void PartslibraryUIData::Truncate(std::size_t rows, std::size_t groups)
{
    m_icons.resize(rows);
    m_labels.resize(rows);
    m_tooltips.resize(rows);
    m_userData.resize(rows);
    m_names.resize(rows);
    m_sharedItems.resize(rows);
    m_groupNames.resize(groups);
    m_groupLabels.resize(groups);
    m_groupItems.resize(groups);
}

} // namespace lusymbols
