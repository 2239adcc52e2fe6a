#pragma once

#include "plugin/Export.h"

#include <du/SmartPtr.h>
#include <luk/illustration/SequencerTag.h>
#include <luk/illustration/SymbolTemplate.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lusymbols
{

/// One entry of the symbol library: what image entries and 3D entries have in common.
///
/// Use: made by the library loader or by an editor, kept in the host's symbol template collection, written back by the
/// library writer, shown by the gallery. Texts are UTF-8.
///
/// Ownership: counted; always held through du::SmartPtr.
///
/// Threads and locks: no lock. Built by one thread, then read on the host's thread.
///
/// Errors: none are reported. Indices of tags are the caller's promise; one out of range is ignored.
///
/// Copies: a copy-constructed entry owns tags of its own, an assigned one shares the tags of its source.
/// *Rationale:* a new entry is edited on its own, while an assignment brings an existing entry up to date with another.
class LUSYMBOLS_API PartslibraryItem : public luk::illustration::SymbolTemplate
{
public:
    using SequencerTagPtr = du::SmartPtr<luk::illustration::SequencerTag>;

    PartslibraryItem(const PartslibraryItem& other);
    PartslibraryItem& operator=(const PartslibraryItem& other);
    ~PartslibraryItem() override;

    /// Sets the title; an empty one becomes a default made of the kind of entry and its id, such as "Image 12".
    virtual void SetTitle(const std::string& title) = 0;
    const std::string& GetTitle() const { return m_title; }

    const std::string& GetDescription() const { return m_description; }
    void SetDescription(const std::string& description) { m_description = description; }

    bool ShowTooltipTitle() const { return m_showTooltipTitle; }
    void SetShowTooltipTitle(bool show) { m_showTooltipTitle = show; }

    bool ShowTooltipDescription() const { return m_showTooltipDescription; }
    void SetShowTooltipDescription(bool show) { m_showTooltipDescription = show; }

    /// Appends the tag and shares it.
    void AddSequencerTag(const SequencerTagPtr& tag);
    void DelSequencerTag(int index);
    void SetSequencerTag(unsigned int index, const SequencerTagPtr& tag);
    /// Replaces `out` by the whole list; the tags are shared.
    void GetSequencerTags(std::vector<SequencerTagPtr>& out) const { out = m_sequencerTags; }
    const std::vector<SequencerTagPtr>& GetSequencerTags() const { return m_sequencerTags; }

    /// Keys of the message table for name, title and description; empty where the text is its own.
    const std::string& GetLocIdName() const { return GetKey(&MessageKeys::name); }
    void SetLocIdName(std::string& key) { SetKey(&MessageKeys::name, key); }
    const std::string& GetLocIdTitle() const { return GetKey(&MessageKeys::title); }
    void SetLocIdTitle(std::string& key) { SetKey(&MessageKeys::title, key); }
    const std::string& GetLocIdDesc() const { return GetKey(&MessageKeys::description); }
    void SetLocIdDesc(std::string& key) { SetKey(&MessageKeys::description, key); }

    /// Same texts, tooltip switches, tags and host part (id, name, category). Message keys do not count: they say where
    /// a text came from, not what it is.
    bool operator==(const PartslibraryItem& other) const;

    /// Turns a URL of this entry that is relative to its library into a usable one; an absolute URL stays as it is.
    ///
    /// Shared entries resolve against the shared cache folder, all others against the base folder of the illustration
    /// preferences. The result has forward slashes only, on every platform. Without preferences the URL stays relative.
    void CheckRelativeUrlAndConcatIfNeeded(std::string& url) const;

protected:
    explicit PartslibraryItem(Origin origin);

    void SetTitleOrDefault(const std::string& title, std::string_view defaultPrefix);

private:
    struct MessageKeys {
        std::string name;
        std::string title;
        std::string description;
    };

    const std::string& GetKey(std::string MessageKeys::*which) const;
    void SetKey(std::string MessageKeys::*which, const std::string& key);

    std::string m_title;
    std::string m_description;
    bool m_showTooltipTitle = false;
    bool m_showTooltipDescription = false;
    std::vector<SequencerTagPtr> m_sequencerTags;
    /// Null where no text has one, as in nearly all entries. Shared with copies and never changed.
    std::shared_ptr<const MessageKeys> m_messageKeys;
};

} // namespace lusymbols
