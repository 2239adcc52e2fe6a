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
        for (const Item* item : group->second) {
            AddRow(*item, GalleryThumbnailUrl(*item), namePrefix, kind);
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
        m_roots.Resolve(item, At(m_data.m_icons, m_row) = thumbnailUrl);
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
    return Build(ols.TakeSorted(), images.TakeSorted(), categories, 0, 0);
}

std::uint64_t PartslibraryUIData::Construct(const OlList& ols, const ImageList& images, const CategoryList& categories)
{
    return Build(ols, images, categories, m_icons.size(), m_groupItems.size());
}

std::uint64_t PartslibraryUIData::Build(const OlList& ols, const ImageList& images, const CategoryList& categories,
                                        std::size_t firstRow, std::size_t firstGroup)
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
