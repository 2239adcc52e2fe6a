#pragma once

#include <du/PlaceMap.h>
#include <du/SmartPtr.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace du
{

template <class T>
const void* PlaceOf(const SmartPtr<T>& key) noexcept
{
    return key.get();
}

/// Each thing once, in the order in which they came, known by the address that PlaceOf gives. Things are symbols, pointers,
/// handles or whatever else has a PlaceOf; one whose place is null is nothing.
///
/// Errors: an insertion that throws std::bad_alloc leaves the set as it was. Nothing else needs memory, but for GetAll.
///
/// Cost: constant for each thing that comes, goes or is looked for. Things lie in one list, which has gaps where some have
/// left, and beside it is a table of their numbers, which few do without.
template <class T>
class OrderedSet
{
public:
    /// @return false for nothing and for what is there already
    bool Add(T thing)
    {
        const void* const place = PlaceOf(thing);
        if (!place || FindNumber(place) != kNone) {
            return false;
        }
        if (m_things.size() == m_things.capacity()) {
            MakeRoom();
        }
        m_things.push_back(std::move(thing));
        ++m_count;
        if (!m_table.empty()) {
            Enter(static_cast<std::uint32_t>(m_things.size() - 1));
        }
        return true;
    }

    /// Hands over what is at the place; nothing when there is none.
    T Take(const void* place) noexcept
    {
        const std::uint32_t number = FindNumber(place);
        if (number == kNone) {
            return T();
        }
        T taken = std::exchange(m_things[number], T());
        --m_count;
        while (m_first < m_things.size() && !PlaceOf(m_things[m_first])) {
            ++m_first;
        }
        return taken;
    }

    /// All of them in order, without a copy.
    std::vector<T> TakeAll() noexcept
    {
        std::vector<T> all = std::exchange(m_things, {});
        std::vector<std::uint32_t>().swap(m_table);
        m_first = 0;
        m_count = 0;
        std::erase_if(all, [](const T& thing) { return !PlaceOf(thing); });
        return all;
    }

    /// Null when there is none.
    const T* Find(const void* place) const noexcept
    {
        const std::uint32_t number = FindNumber(place);
        return number == kNone ? nullptr : &m_things[number];
    }
    bool Contains(const void* place) const noexcept { return FindNumber(place) != kNone; }
    /// Null when there is none.
    const T* GetFirst() const noexcept { return m_first < m_things.size() ? &m_things[m_first] : nullptr; }
    std::size_t GetCount() const noexcept { return m_count; }

    std::vector<T> GetAll() const
    {
        std::vector<T> all;
        all.reserve(m_count);
        ForEach([&all](const T& thing) { all.push_back(thing); });
        return all;
    }

    /// In order; the call may take things out, and adds none.
    template <class Call>
    void ForEach(const Call& call) const
    {
        for (const T& thing : m_things) {
            if (PlaceOf(thing)) {
                call(thing);
            }
        }
    }

private:
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};
    static constexpr std::size_t kFew = 8;

    std::uint32_t FindNumber(const void* place) const noexcept
    {
        if (m_count == 0 || !place) {
            return kNone;
        }
        if (m_table.empty()) {
            for (std::uint32_t number = 0; number < m_things.size(); ++number) {
                if (PlaceOf(m_things[number]) == place) {
                    return number;
                }
            }
            return kNone;
        }
        const std::size_t mask = m_table.size() - 1;
        for (std::size_t i = HashOfPlace(place) & mask; m_table[i] != 0; i = (i + 1) & mask) {
            if (PlaceOf(m_things[m_table[i] - 1]) == place) {
                return m_table[i] - 1;
            }
        }
        return kNone;
    }

    void Enter(std::uint32_t number) noexcept
    {
        const std::size_t mask = m_table.size() - 1;
        std::size_t i = HashOfPlace(PlaceOf(m_things[number])) & mask;
        while (m_table[i] != 0) {
            i = (i + 1) & mask;
        }
        m_table[i] = number + 1;
    }

    /// Twice as much as there are things, without the gaps. Half of the table stays free.
    void MakeRoom()
    {
        const std::size_t room = std::bit_ceil(m_count + m_count / 2 + 2);
        std::vector<T> things;
        std::vector<std::uint32_t> table;
        things.reserve(room);
        if (things.capacity() > kFew) {
            table.resize(std::bit_ceil(2 * things.capacity()));
        }
        for (T& thing : m_things) {
            if (PlaceOf(thing)) {
                things.push_back(std::move(thing));
            }
        }
        m_things.swap(things);
        m_table.swap(table);
        m_first = 0;
        for (std::uint32_t number = 0; !m_table.empty() && number < m_things.size(); ++number) {
            Enter(number);
        }
    }

    std::vector<T> m_things;            ///< with nothing where one has left
    std::vector<std::uint32_t> m_table; ///< numbers of things and gaps, from 1; 0 for free
    std::size_t m_first = 0;
    std::size_t m_count = 0;
};

} // namespace du
