#pragma once

#include "plugin/Export.h"

#include <luk/illustration/CategoryInfo.h>

#include <string>
#include <utility>

namespace lusymbols
{

/// A category of the symbol library. Entries belong to it by its id.
///
/// Ownership, threads: counted, no lock; built by one thread, then read on the host's thread. It has no equality of its
/// own: a category is known by its id.
class LUSYMBOLS_API PartslibraryCategoryItem : public luk::illustration::CategoryInfo
{
public:
    explicit PartslibraryCategoryItem(Origin origin = ORIGIN_USER);
    PartslibraryCategoryItem(const PartslibraryCategoryItem& other);
    PartslibraryCategoryItem(PartslibraryCategoryItem&& other);
    PartslibraryCategoryItem& operator=(const PartslibraryCategoryItem& other);
    PartslibraryCategoryItem& operator=(PartslibraryCategoryItem&& other);
    ~PartslibraryCategoryItem() override;

    /// The category's name is its host name.
    void SetCatName(std::string name) { SetName(name); }

    const std::string& GetCatTooltip() const { return m_catTooltip; }
    void SetCatTooltip(std::string tooltip) { m_catTooltip = std::move(tooltip); }

    const std::string& GetCatDescription() const { return m_catDescription; }
    void SetCatDescription(std::string description) { m_catDescription = std::move(description); }

    /// Keys of the message table; empty where the text is its own.
    const std::string& GetLocIdName() const { return m_locIdName; }
    void SetLocIdName(std::string& key) { m_locIdName = key; }
    const std::string& GetLocIdTitle() const { return m_locIdTitle; }
    void SetLocIdTitle(std::string& key) { m_locIdTitle = key; }
    const std::string& GetLocIdDesc() const { return m_locIdDesc; }
    void SetLocIdDesc(std::string& key) { m_locIdDesc = key; }

private:
    std::string m_catTooltip;
    std::string m_catDescription;
    std::string m_locIdName;
    std::string m_locIdTitle;
    std::string m_locIdDesc;
};

} // namespace lusymbols
