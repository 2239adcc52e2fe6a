#pragma once

#include <du/Symbol.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace du
{

/// The address that stands for a key: equal keys have the same one. Null for a null key.
template <class T>
const void* PlaceOf(T* key) noexcept
{
    return key;
}

inline const void* PlaceOf(const Symbol& key) noexcept { return key.IsNull() ? nullptr : &key.GetText(); }

/// Spreads addresses over a table.
inline std::size_t HashOfPlace(const void* place) noexcept
{
    constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15U;
    const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(place));
    return static_cast<std::size_t>(((address >> 4U) * kGoldenRatio) >> 32U);
}

/// Map by the address of its keys, which are symbols or plain pointers and never null.
///
/// Ownership: holds its values; a value stays where it is until the next one comes or goes.
///
/// Errors: an insertion that throws std::bad_alloc leaves the map as it was.
///
/// Cost: constant; entries lie in one table, at most two thirds of which are taken, so that a look-up touches one or two
/// lines of memory and an insertion allocates only when the table grows.
template <class Key, class Value>
class PlaceMap
{
public:
    PlaceMap() = default;
    ~PlaceMap() = default;
    PlaceMap(const PlaceMap&) = delete;
    PlaceMap& operator=(const PlaceMap&) = delete;
    PlaceMap(PlaceMap&& other) noexcept
        : m_slots(std::exchange(other.m_slots, {})), m_count(std::exchange(other.m_count, 0))
    {
    }
    PlaceMap& operator=(PlaceMap&& other) noexcept
    {
        m_slots = std::exchange(other.m_slots, {});
        m_count = std::exchange(other.m_count, 0);
        return *this;
    }

    std::size_t GetCount() const noexcept { return m_count; }

    /// Null when there is none, and for a null key.
    Value* Find(const Key& key) noexcept
    {
        const std::size_t place = FindPlace(key);
        return place == kNowhere ? nullptr : &m_slots[place].value;
    }
    const Value* Find(const Key& key) const noexcept
    {
        const std::size_t place = FindPlace(key);
        return place == kNowhere ? nullptr : &m_slots[place].value;
    }

    /// @param key not null @return the value that is there now, and whether it is the new one
    template <class... Args>
    std::pair<Value*, bool> TryEmplace(const Key& key, Args&&... args)
    {
        if (Value* const known = Find(key)) {
            return {known, false};
        }
        Reserve(m_count + 1);
        Slot& slot = m_slots[FreePlaceOf(key)];
        slot.value = Value(std::forward<Args>(args)...);
        slot.key = key;
        ++m_count;
        return {&slot.value, true};
    }

    /// Hands over the value, which is that of nothing when there is none.
    Value Take(const Key& key) noexcept
    {
        std::size_t gap = FindPlace(key);
        if (gap == kNowhere) {
            return Value();
        }
        Value taken = std::exchange(m_slots[gap].value, Value());
        // A later entry of the run moves into the gap unless it would then lie before where the search for it begins.
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = (gap + 1) & mask; PlaceOf(m_slots[i].key); i = (i + 1) & mask) {
            const std::size_t home = HashOfPlace(PlaceOf(m_slots[i].key)) & mask;
            if (((i - home) & mask) >= ((i - gap) & mask)) {
                m_slots[gap] = std::move(m_slots[i]);
                gap = i;
            }
        }
        m_slots[gap] = Slot();
        --m_count;
        return taken;
    }

    void Reserve(std::size_t count)
    {
        constexpr std::size_t kLeast = 8;
        if (count + count / 2 >= m_slots.size()) {
            Resize(std::bit_ceil(count + count / 2 + kLeast));
        }
    }

    /// In no order; the call leaves the map alone.
    template <class Call>
    void ForEach(const Call& call) const
    {
        for (const Slot& slot : m_slots) {
            if (PlaceOf(slot.key)) {
                call(slot.key, slot.value);
            }
        }
    }

private:
    struct Slot {
        Key key{};
        Value value{};
    };
    static constexpr std::size_t kNowhere = ~std::size_t{0};

    std::size_t FindPlace(const Key& key) const noexcept
    {
        const void* const place = PlaceOf(key);
        if (m_count == 0 || !place) {
            return kNowhere;
        }
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = HashOfPlace(place) & mask;; i = (i + 1) & mask) {
            const void* const there = PlaceOf(m_slots[i].key);
            if (there == place) {
                return i;
            }
            if (!there) {
                return kNowhere;
            }
        }
    }

    std::size_t FreePlaceOf(const Key& key) const noexcept
    {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t i = HashOfPlace(PlaceOf(key)) & mask;
        while (PlaceOf(m_slots[i].key)) {
            i = (i + 1) & mask;
        }
        return i;
    }

    void Resize(std::size_t slotCount)
    {
        std::vector<Slot> old(slotCount);
        old.swap(m_slots);
        for (Slot& slot : old) {
            if (PlaceOf(slot.key)) {
                m_slots[FreePlaceOf(slot.key)] = std::move(slot);
            }
        }
    }

    std::vector<Slot> m_slots; ///< as many as a power of two
    std::size_t m_count = 0;
};

} // namespace du
