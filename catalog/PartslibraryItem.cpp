#include "catalog/PartslibraryItem.h"

#include "catalog/LibraryRoots.h"

#include <luk/illustration/SequencerTagPtrComparator.h>

#include <algorithm>
#include <utility>

namespace lusymbols
{

using luk::illustration::SequencerTag;
using luk::illustration::SequencerTagPtrComparator;

PartslibraryItem::PartslibraryItem(Origin origin) : SymbolTemplate(origin) {}

PartslibraryItem::~PartslibraryItem() = default;

PartslibraryItem::PartslibraryItem(const PartslibraryItem& other) : SymbolTemplate(other)
{
    *this = other;
    m_sequencerTags.clear();
    m_sequencerTags.reserve(other.m_sequencerTags.size());
    for (const SequencerTagPtr& tag : other.m_sequencerTags) {
        if (tag) {
            m_sequencerTags.push_back(du::MakeCounted<SequencerTag>(*tag));
        }
    }
}

PartslibraryItem& PartslibraryItem::operator=(const PartslibraryItem& other) = default;

void PartslibraryItem::SetTitleOrDefault(const std::string& title, std::string_view defaultPrefix)
{
    if (title.empty()) {
        m_title.assign(defaultPrefix).append(GetId());
    } else {
        m_title = title;
    }
}

void PartslibraryItem::AddSequencerTag(const SequencerTagPtr& tag) { m_sequencerTags.push_back(tag); }

void PartslibraryItem::DelSequencerTag(int index)
{
    if (index >= 0 && static_cast<std::size_t>(index) < m_sequencerTags.size()) {
        m_sequencerTags.erase(m_sequencerTags.begin() + index);
    }
}

void PartslibraryItem::SetSequencerTag(unsigned int index, const SequencerTagPtr& tag)
{
    if (index < m_sequencerTags.size()) {
        m_sequencerTags[index] = tag;
    }
}

const std::string& PartslibraryItem::GetKey(std::string MessageKeys::*which) const
{
    static const std::string none;
    return m_messageKeys ? (*m_messageKeys).*which : none;
}

void PartslibraryItem::SetKey(std::string MessageKeys::*which, const std::string& key)
{
    if (key != GetKey(which)) {
        MessageKeys keys = m_messageKeys ? *m_messageKeys : MessageKeys();
        keys.*which = key;
        m_messageKeys = std::make_shared<const MessageKeys>(std::move(keys));
    }
}

bool PartslibraryItem::operator==(const PartslibraryItem& other) const
{
    return m_title == other.m_title && m_description == other.m_description &&
           m_showTooltipTitle == other.m_showTooltipTitle &&
           m_showTooltipDescription == other.m_showTooltipDescription &&
           std::equal(m_sequencerTags.begin(), m_sequencerTags.end(), other.m_sequencerTags.begin(),
                      other.m_sequencerTags.end(), SequencerTagPtrComparator()) &&
           AssociativeObject::operator==(other);
}

void PartslibraryItem::CheckRelativeUrlAndConcatIfNeeded(std::string& url) const
{
    const std::string relative = url;
    LibraryRoots::FromHost().Resolve(*this, relative, url);
}

} // namespace lusymbols
