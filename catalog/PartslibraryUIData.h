#pragma once

#include "plugin/Export.h"

#include <du/RefCounted.h>
#include <du/SmartPtr.h>

#include <cstdint>
#include <string>
#include <vector>

namespace luk::illustration
{
class SymbolTemplateCollection;
}

namespace lusymbols
{

class PartslibraryCategoryItem;
class PartslibraryImageItem;
class PartslibraryOlItem;

/// The rows of a gallery control: the symbol library as parallel lists.
///
/// Use: make one with the two name prefixes, call Refresh, read the lists. Row i of every list about entries describes
/// the same entry; entry lists have GetNumItems() rows, group lists one for each category. Within a category 3D entries
/// come before images; Refresh puts shared entries first, then delivered ones, then the user's own. An entry whose
/// category does not exist has no row.
///
/// Ownership: counted; the lists belong to the object and are valid until it is built again.
///
/// Threads and locks: built and read on the host's thread; no lock.
///
/// Errors: none. Without any entry there are no groups either: an empty gallery shows no headings.
///
/// Cost: linear in entries plus categories.
class LUSYMBOLS_API PartslibraryUIData : public du::RefCounted
{
public:
    using OlList = std::vector<du::SmartPtr<PartslibraryOlItem>>;
    using ImageList = std::vector<du::SmartPtr<PartslibraryImageItem>>;
    using CategoryList = std::vector<du::SmartPtr<PartslibraryCategoryItem>>;

    /// The prefixes keep the names of entries of the two kinds apart where their ids are equal.
    PartslibraryUIData(const std::string& olNamePrefix, const std::string& imageNamePrefix);
    /// Builds from lists, in their order, without prefixes.
    PartslibraryUIData(const OlList& ols, const ImageList& images, const CategoryList& categories);
    PartslibraryUIData(const PartslibraryUIData& other);
    PartslibraryUIData(PartslibraryUIData&& other) noexcept;
    PartslibraryUIData& operator=(const PartslibraryUIData& other);
    PartslibraryUIData& operator=(PartslibraryUIData&& other) noexcept;
    ~PartslibraryUIData() override;

    /// Rebuilds from the collection; null builds an empty gallery.
    /// @return the number of rows
    std::uint64_t Refresh(const du::SmartPtr<luk::illustration::SymbolTemplateCollection>& collection);

    /// Empties the lists. The two counters keep their values until the next build.
    void Clear();

    const std::vector<std::string>& GetIcons() const { return m_icons; }
    const std::vector<std::wstring>& GetLabels() const { return m_labels; }
    /// Rich text: the title in bold ("\b ... \b0"), a line feed, the description.
    const std::vector<std::wstring>& GetTooltips() const { return m_tooltips; }
    /// "ol." or "image." and the entry's id.
    const std::vector<std::string>& GetUserData() const { return m_userData; }
    /// Prefix, name and id, without separators.
    const std::vector<std::string>& GetNames() const { return m_names; }
    const std::vector<std::string>& GetGroupNames() const { return m_groupNames; }
    const std::vector<std::wstring>& GetGroupLabels() const { return m_groupLabels; }
    /// True for entries that the user cannot change: shared or delivered.
    const std::vector<bool>& GetSharedItems() const { return m_sharedItems; }

    std::uint64_t GetNumIcons() const { return m_icons.size(); }
    std::uint64_t GetNumLabels() const { return m_labels.size(); }
    std::uint64_t GetNumTooltips() const { return m_tooltips.size(); }
    std::uint64_t GetNumUserData() const { return m_userData.size(); }
    std::uint64_t GetNumNames() const { return m_names.size(); }
    std::uint64_t GetNumGroupNames() const { return m_groupNames.size(); }
    std::uint64_t GetNumGroupLabels() const { return m_groupLabels.size(); }
    std::uint64_t GetNumgroupItems() const { return m_groupItems.size(); }
    std::uint64_t GetNumActualCategories() const { return m_numActualCategories; }
    std::uint64_t GetNumItems() const { return m_numItems; }

protected:
    PartslibraryUIData();

    /// Appends the rows of these entries to what is there.
    /// @return the number of rows appended
    std::uint64_t Construct(const OlList& ols, const ImageList& images, const CategoryList& categories);

    /// First entry of each group, for a control that scrolls to it; an empty group has that of the next one.
    const std::vector<std::string>& GetGroupItems() const { return m_groupItems; }

private:
    class Builder;

    std::uint64_t Build(const std::vector<const PartslibraryOlItem*>& ols,
                        const std::vector<const PartslibraryImageItem*>& images, const CategoryList& categories,
                        std::size_t firstRow, std::size_t firstGroup);
    void Truncate(std::size_t rows, std::size_t groups);

    std::vector<std::string> m_icons;
    std::vector<std::wstring> m_labels;
    std::vector<std::wstring> m_tooltips;
    std::vector<std::string> m_userData;
    std::vector<std::string> m_names;
    std::vector<std::string> m_groupNames;
    std::vector<std::wstring> m_groupLabels;
    std::vector<std::string> m_groupItems;
    std::vector<bool> m_sharedItems;
    std::uint64_t m_numActualCategories = 0;
    std::uint64_t m_numItems = 0;
    std::string m_imageNamePrefix;
    std::string m_olNamePrefix;
};

} // namespace lusymbols
