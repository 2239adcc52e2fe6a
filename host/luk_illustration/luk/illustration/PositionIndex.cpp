#include <du/TextHash.h>
#include <luk/illustration/PositionIndex.h>

#include <algorithm>
#include <bit>
#include <utility>

namespace luk::illustration
{

namespace
{

constexpr std::size_t kMinSlots = 16;

/// At most three quarters of the slots are used, so that a probe soon meets an empty one.
std::size_t SlotsFor(std::size_t count) { return std::bit_ceil(std::max(kMinSlots, count + count / 3 + 1)); }

} // namespace

std::uint32_t PositionIndex::HashOf(std::string_view key) noexcept
{
    const std::uint64_t hash = du::TextHash()(key);
    return static_cast<std::uint32_t>(hash ^ (hash >> 32U));
}

std::uint32_t PositionIndex::FirstPosition(const Slot& slot) const
{
    return IsShared(slot) ? *SharedOf(slot).begin() : slot.value - 1;
}

std::size_t PositionIndex::FindSlot(const KeySource& keys, std::string_view key, std::uint32_t hash) const
{
    if (m_slots.empty()) {
        return kNoSlot;
    }
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = hash & mask; m_slots[i].value != 0; i = (i + 1) & mask) {
        if (m_slots[i].hash == hash && keys.KeyAt(FirstPosition(m_slots[i])) == key) {
            return i;
        }
    }
    return kNoSlot;
}

void PositionIndex::Insert(const KeySource& keys, std::string_view key, std::uint32_t position)
{
    const std::uint32_t hash = HashOf(key);
    const std::size_t found = FindSlot(keys, key, hash);
    if (found == kNoSlot) {
        if (m_slots.size() < SlotsFor(m_used + 1)) {
            Resize(SlotsFor(m_used + 1));
        }
        PlaceSlot({hash, position + 1});
        ++m_used;
    } else if (IsShared(m_slots[found])) {
        SharedOf(m_slots[found]).insert(position);
    } else {
        m_slots[found].value = TakeShared({FirstPosition(m_slots[found]), position});
    }
}

void PositionIndex::Erase(const KeySource& keys, std::string_view key, std::uint32_t position) noexcept
{
    const std::size_t found = FindSlot(keys, key, HashOf(key));
    if (found == kNoSlot) {
        return;
    }
    Slot& slot = m_slots[found];
    if (!IsShared(slot)) {
        EraseSlot(found);
        return;
    }
    PositionSet& positions = SharedOf(slot);
    positions.erase(position);
    if (positions.size() == 1) {
        const std::uint32_t last = *positions.begin();
        positions.clear();
        m_freeShared.push_back(slot.value & ~kSharedBit);
        slot.value = last + 1;
    }
}

void PositionIndex::Clear()
{
    m_slots.clear();
    m_used = 0;
    m_shared.clear();
    m_freeShared.clear();
}

void PositionIndex::Reserve(std::size_t count)
{
    if (m_slots.size() < SlotsFor(count)) {
        Resize(SlotsFor(count));
    }
}

std::uint32_t PositionIndex::FindFrom(const KeySource& keys, std::string_view key, std::uint32_t from) const
{
    const std::size_t found = FindSlot(keys, key, HashOf(key));
    if (found == kNoSlot) {
        return kNone;
    }
    if (!IsShared(m_slots[found])) {
        const std::uint32_t position = m_slots[found].value - 1;
        return position < from ? kNone : position;
    }
    const PositionSet& positions = SharedOf(m_slots[found]);
    const auto next = positions.lower_bound(from);
    return next == positions.end() ? kNone : *next;
}

std::set<std::uint64_t> PositionIndex::FindAll(const KeySource& keys, std::string_view key) const
{
    const std::size_t found = FindSlot(keys, key, HashOf(key));
    if (found == kNoSlot) {
        return {};
    }
    if (!IsShared(m_slots[found])) {
        return {FirstPosition(m_slots[found])};
    }
    const PositionSet& positions = SharedOf(m_slots[found]);
    return {positions.begin(), positions.end()};
}

void PositionIndex::PlaceSlot(const Slot& slot)
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t i = slot.hash & mask;
    while (m_slots[i].value != 0) {
        i = (i + 1) & mask;
    }
    m_slots[i] = slot;
}

/// Closes the gap: a later slot of the run moves into it unless it would then lie before where its probe begins.
void PositionIndex::EraseSlot(std::size_t index)
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t gap = index;
    for (std::size_t i = (gap + 1) & mask; m_slots[i].value != 0; i = (i + 1) & mask) {
        const std::size_t home = m_slots[i].hash & mask;
        if (((i - home) & mask) >= ((i - gap) & mask)) {
            m_slots[gap] = m_slots[i];
            gap = i;
        }
    }
    m_slots[gap] = {0, 0};
    --m_used;
}

void PositionIndex::Resize(std::size_t slotCount)
{
    const std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(slotCount, Slot{0, 0}));
    for (const Slot& slot : old) {
        if (slot.value != 0) {
            PlaceSlot(slot);
        }
    }
}

std::uint32_t PositionIndex::TakeShared(PositionSet positions)
{
    if (m_freeShared.empty()) {
        m_shared.push_back(std::move(positions));
        m_freeShared.reserve(m_shared.capacity()); // so that erasing needs none
        return static_cast<std::uint32_t>(m_shared.size() - 1) | kSharedBit;
    }
    const std::uint32_t index = m_freeShared.back();
    m_freeShared.pop_back();
    m_shared[index] = std::move(positions);
    return index | kSharedBit;
}

} // namespace luk::illustration
