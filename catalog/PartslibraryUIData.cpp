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
    void Add(du::SmartPtr<Item> item)
    {
        const std::size_t rank = item->IsShared() ? 0 : item->IsOOTB() ? 1 : 2;
        m_buckets[rank].push_back(std::move(item));
    }

    std::vector<du::SmartPtr<Item>> TakeSorted()
    {
        std::vector<du::SmartPtr<Item>> sorted = std::move(m_buckets[0]);
        sorted.reserve(sorted.size() + m_buckets[1].size() + m_buckets[2].size());
        for (std::size_t rank : {1u, 2u}) {
            std::move(m_buckets[rank].begin(), m_buckets[rank].end(), std::back_inserter(sorted));
        }
        return sorted;
    }

private:
    std::array<std::vector<du::SmartPtr<Item>>, 3> m_buckets;
};

/// Entries by the id of their category, in list order.
template <class Item>
using ItemsByCategory = std::unordered_map<std::string_view, std::vector<const Item*>, du::TextHash>;

template <class Item>
ItemsByCategory<Item> GroupByCategory(const std::vector<du::SmartPtr<Item>>& items)
{
    ItemsByCategory<Item> groups;
    for (const du::SmartPtr<Item>& item : items) {
        if (item) {
            groups[item->GetCategoryId()].push_back(item.get());
        }
    }
    return groups;
}

const std::string& GalleryThumbnailUrl(const PartslibraryOlItem& item) { return item.GetOlGalleryThumbnailUrl(); }

const std::string& GalleryThumbnailUrl(const PartslibraryImageItem& item) { return item.GetImageGalleryThumbnailUrl(); }

std::wstring MakeTooltip(const PartslibraryItem& item)
{
    static constexpr std::wstring_view kBoldOn = L"\\b ";
    static constexpr std::wstring_view kBoldOff = L"\\b0 \n ";
    std::wstring tooltip;
    tooltip.reserve(kBoldOn.size() + item.GetTitle().size() + kBoldOff.size() + item.GetDescription().size());
    tooltip += kBoldOn;
    du::AppendUtf8AsWide(tooltip, item.GetTitle());
    tooltip += kBoldOff;
    du::AppendUtf8AsWide(tooltip, item.GetDescription());
    return tooltip;
}

} // namespace

/// Appends the rows of one build.
class PartslibraryUIData::Builder
{
public:
    explicit Builder(PartslibraryUIData& data) : m_data(data), m_firstGroup(data.m_groupItems.size()) {}

    void Reserve(std::size_t rows, std::size_t groups)
    {
        const std::size_t allRows = m_data.m_icons.size() + rows;
        m_data.m_icons.reserve(allRows);
        m_data.m_labels.reserve(allRows);
        m_data.m_tooltips.reserve(allRows);
        m_data.m_userData.reserve(allRows);
        m_data.m_names.reserve(allRows);
        m_data.m_sharedItems.reserve(allRows);
        const std::size_t allGroups = m_firstGroup + groups;
        m_data.m_groupNames.reserve(allGroups);
        m_data.m_groupLabels.reserve(allGroups);
        m_data.m_groupItems.reserve(allGroups);
    }

    void AddGroup(const PartslibraryCategoryItem& category)
    {
        m_data.m_groupNames.push_back(category.GetName());
        m_data.m_groupLabels.push_back(du::Utf8ToWideStr(category.GetName()));
        m_data.m_groupItems.emplace_back();
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
        for (const Item* item : group->second) {
            AddRow(*item, GalleryThumbnailUrl(*item), namePrefix, kind);
        }
    }

    /// Gives each empty group the first entry of the next group that has one.
    void FillEmptyGroups()
    {
        const std::string* next = nullptr;
        for (std::size_t group = m_data.m_groupItems.size(); group-- > m_firstGroup;) {
            std::string& item = m_data.m_groupItems[group];
            if (!item.empty()) {
                next = &item;
            } else if (next) {
                item = *next;
            }
        }
    }

    std::uint64_t GetRowCount() const { return m_rowCount; }

private:
    void AddRow(const PartslibraryItem& item, const std::string& thumbnailUrl, const std::string& namePrefix,
                std::string_view kind)
    {
        m_roots.Resolve(item, m_data.m_icons.emplace_back(thumbnailUrl));
        m_data.m_labels.push_back(du::Utf8ToWideStr(item.GetTitle()));
        m_data.m_tooltips.push_back(MakeTooltip(item));

        std::string& name = m_data.m_names.emplace_back();
        name.reserve(namePrefix.size() + item.GetName().size() + item.GetId().size());
        name.append(namePrefix).append(item.GetName()).append(item.GetId());
        if (m_isGroupEmpty) {
            m_data.m_groupItems.back() = name;
            m_isGroupEmpty = false;
        }

        std::string& userData = m_data.m_userData.emplace_back();
        userData.reserve(kind.size() + 1 + item.GetId().size());
        userData.append(kind).append(1, '.').append(item.GetId());
        m_data.m_sharedItems.push_back(item.IsShared() || item.IsOOTB());
        ++m_rowCount;
    }

    PartslibraryUIData& m_data;
    const std::size_t m_firstGroup;
    const LibraryRoots m_roots = LibraryRoots::FromHost();
    bool m_isGroupEmpty = true;
    std::uint64_t m_rowCount = 0;
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
    Clear();
    CategoryList categories;
    SourceBuckets<PartslibraryOlItem> ols;
    SourceBuckets<PartslibraryImageItem> images;
    if (collection) {
        std::vector<du::SmartPtr<CategoryInfo>> allCategories;
        collection->GetCategories(allCategories);
        for (const auto& candidate : allCategories) {
            if (auto category = du::DynamicCast<PartslibraryCategoryItem>(candidate)) {
                categories.push_back(std::move(category));
            }
        }
        for (const auto& object : collection->GetAssociativeObjects()) {
            if (auto ol = du::DynamicCast<PartslibraryOlItem>(object)) {
                ols.Add(std::move(ol));
            } else if (auto image = du::DynamicCast<PartslibraryImageItem>(object)) {
                images.Add(std::move(image));
            }
        }
    }
    return Construct(ols.TakeSorted(), images.TakeSorted(), categories);
}

std::uint64_t PartslibraryUIData::Construct(const OlList& ols, const ImageList& images, const CategoryList& categories)
{
    m_numActualCategories = 0;
    m_numItems = ols.size() + images.size();
    if (m_numItems == 0) {
        return 0;
    }
    const ItemsByCategory<PartslibraryOlItem> olGroups = GroupByCategory(ols);
    const ItemsByCategory<PartslibraryImageItem> imageGroups = GroupByCategory(images);
    Builder builder(*this);
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
    builder.FillEmptyGroups();
    m_numItems = builder.GetRowCount();
    return m_numItems;
}

void PartslibraryUIData::Clear()
{
    m_icons.clear();
    m_labels.clear();
    m_tooltips.clear();
    m_userData.clear();
    m_names.clear();
    m_groupNames.clear();
    m_groupLabels.clear();
    m_groupItems.clear();
    m_sharedItems.clear();
}

} // namespace lusymbols
