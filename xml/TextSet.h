#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lusymbols
{

/// A set of texts that only grows, for the ids and names of libraries with very many entries.
///
/// Use: internal to the plug-in. The texts are copied, so that it does not matter what becomes of the originals.
///
/// Threads and locks: a value like a string.
///
/// Errors: nothing but std::bad_alloc; the set is then as it was.
///
/// Cost: the texts themselves and some 24 bytes each, in three blocks of memory, where a node and a string for each would
/// take several times that. Constant time for each call; the hash is keyed, so that no document can spoil it.
class TextSet
{
public:
    /// Makes room for this many texts in all.
    void Reserve(std::size_t count);

    /// A text that is going to be looked up; a view of it.
    struct Key {
        std::string_view text;
        std::uint32_t hash = 0;
    };

    /// Asks for the memory in which the text is going to be looked for, so that Insert need not wait for it. Worth its while
    /// for many texts at once.
    Key Fetch(std::string_view text) const noexcept;

    /// @return false when it is there already
    bool Insert(const Key& key);
    bool Insert(std::string_view text) { return Insert(Key{text, HashOf(text)}); }

private:
    /// Holds the number of a text, from 1; 0 where it is free.
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t number = 0;
    };

    static std::uint32_t HashOf(std::string_view text) noexcept;
    std::string_view TextOf(std::uint32_t number) const noexcept;
    /// The slot of the text, or the free one where it belongs. There must be slots.
    std::size_t Find(std::string_view text, std::uint32_t hash) const noexcept;

    std::vector<Slot> m_slots; ///< a power of two of them, at most half taken
    std::vector<std::size_t> m_ends;
    std::string m_texts;
};

} // namespace lusymbols
