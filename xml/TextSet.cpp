#include "xml/TextSet.h"

#include <du/TextHash.h>

#include <algorithm>
#include <bit>

namespace lusymbols
{

std::uint32_t TextSet::HashOf(std::string_view text) noexcept
{
    return static_cast<std::uint32_t>(du::TextHash()(text));
}

std::string_view TextSet::TextOf(std::uint32_t number) const noexcept
{
    const std::size_t begin = number == 1 ? 0 : m_ends[number - 2];
    return std::string_view(m_texts).substr(begin, m_ends[number - 1] - begin);
}

std::size_t TextSet::Find(std::string_view text, std::uint32_t hash) const noexcept
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t at = hash & mask;
    while (m_slots[at].number != 0 && (m_slots[at].hash != hash || TextOf(m_slots[at].number) != text)) {
        at = (at + 1) & mask;
    }
    return at;
}

void TextSet::Reserve(std::size_t count)
{
    m_ends.reserve(count);
    constexpr std::size_t kLeastSlots = 16;
    const std::size_t slots = std::bit_ceil(std::max(2 * count, kLeastSlots));
    if (slots <= m_slots.size()) {
        return;
    }
    std::vector<Slot> grown(slots);
    for (const Slot& slot : m_slots) {
        if (slot.number != 0) {
            std::size_t at = slot.hash & (slots - 1);
            while (grown[at].number != 0) {
                at = (at + 1) & (slots - 1);
            }
            grown[at] = slot;
        }
    }
    m_slots.swap(grown);
}

TextSet::Key TextSet::Fetch(std::string_view text) const noexcept
{
    const Key key{text, HashOf(text)};
    if (!m_slots.empty()) {
        __builtin_prefetch(&m_slots[key.hash & (m_slots.size() - 1)]);
    }
    return key;
}

bool TextSet::Insert(const Key& key)
{
    const auto& [text, hash] = key;
    if (2 * (m_ends.size() + 1) > m_slots.size()) {
        Reserve(2 * (m_ends.size() + 1));
    }
    const std::size_t at = Find(text, hash);
    if (m_slots[at].number != 0) {
        return false;
    }
    m_ends.push_back(m_texts.size() + text.size());
    try {
        m_texts.append(text);
    } catch (...) {
        m_ends.pop_back();
        throw;
    }
    m_slots[at] = {hash, static_cast<std::uint32_t>(m_ends.size())};
    return true;
}

} // namespace lusymbols
