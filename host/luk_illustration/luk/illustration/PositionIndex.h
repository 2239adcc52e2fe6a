#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>
#include <vector>

namespace luk::illustration
{

/// Finds the positions of a key in a list whose elements carry their own keys; for the sources of this library alone.
///
/// A table with open addressing, 8 bytes a slot: the keys stay in the elements. A key with several positions has an
/// ordered set beside the table, so that a thousand equal keys cost no more than a thousand different ones.
class PositionIndex
{
public:
    static constexpr std::uint32_t kNone = 0xFFFFFFFFU;
    static constexpr std::uint32_t kMaxPositions = 0x7FFFFFFEU;

    /// Answers the key of the element at a position.
    class KeySource
    {
    public:
        virtual std::string_view KeyAt(std::uint32_t position) const = 0;

    protected:
        ~KeySource() = default;
    };

    /// Without effect when it throws std::bad_alloc. The element may have another key yet, or be a new one.
    void Insert(const KeySource& keys, std::string_view key, std::uint32_t position);
    void Erase(const KeySource& keys, std::string_view key, std::uint32_t position) noexcept;
    void Clear();
    void Reserve(std::size_t count);

    /// The smallest position, or kNone.
    std::uint32_t FindFirst(const KeySource& keys, std::string_view key) const { return FindFrom(keys, key, 0); }
    /// The smallest position that is not below the given one, or kNone.
    std::uint32_t FindFrom(const KeySource& keys, std::string_view key, std::uint32_t from) const;
    std::set<std::uint64_t> FindAll(const KeySource& keys, std::string_view key) const;

private:
    struct Slot {
        std::uint32_t hash;
        std::uint32_t value; ///< 0: empty; below kSharedBit: position + 1; else which of m_shared
    };
    using PositionSet = std::set<std::uint32_t>;

    static constexpr std::uint32_t kSharedBit = 0x80000000U;
    static constexpr std::size_t kNoSlot = ~std::size_t{0};

    static std::uint32_t HashOf(std::string_view key) noexcept;
    bool IsShared(const Slot& slot) const noexcept { return (slot.value & kSharedBit) != 0; }
    PositionSet& SharedOf(const Slot& slot) { return m_shared[slot.value & ~kSharedBit]; }
    const PositionSet& SharedOf(const Slot& slot) const { return m_shared[slot.value & ~kSharedBit]; }
    std::uint32_t FirstPosition(const Slot& slot) const;
    std::size_t FindSlot(const KeySource& keys, std::string_view key, std::uint32_t hash) const;
    void PlaceSlot(const Slot& slot);
    void EraseSlot(std::size_t index);
    void Resize(std::size_t slotCount);
    std::uint32_t TakeShared(PositionSet positions);

    std::vector<Slot> m_slots; ///< as many as a power of two
    std::size_t m_used = 0;
    std::vector<PositionSet> m_shared;
    std::vector<std::uint32_t> m_freeShared;
};

} // namespace luk::illustration
