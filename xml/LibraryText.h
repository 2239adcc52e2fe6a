#pragma once

#include <cstddef>
#include <fstream>
#include <string>

namespace lusymbols
{

/// The lines of a library file, read block by block: each ends with a line feed alone, the last one included.
///
/// Use: internal to the loader.
///
/// Threads and locks: one thread at a time; no lock.
///
/// Errors: nothing but std::bad_alloc. What is no regular file is empty, since a pipe or a device might never end. So is
/// from there on a file with a NUL byte, which is no document and, where it is a hole, might go on for terabytes.
///
/// Cost: linear. Memory comes with the bytes that were read, whatever the file claims to hold.
class LibraryText
{
public:
    /// Small enough to stay in the cache between reading, looking for carriage returns and parsing.
    static constexpr std::size_t kBlockSize = std::size_t{128} * 1024;

    explicit LibraryText(const std::string& path);

    /// The room that ReadBlock uses behind a text.
    static constexpr std::size_t kBlockRoom = kBlockSize + 1;

    /// Appends the lines of the next block to the text.
    /// @return false when there is none
    bool ReadBlock(std::string& text);

    /// All that is left, in one piece; empty when a NUL byte is in it.
    std::string ReadRest();

    /// What the file claims, in blocks, the last one counted whole.
    std::size_t CountBlocks() const noexcept { return (m_size + kBlockSize - 1) / kBlockSize; }

    bool HasNul() const noexcept { return m_hasNul; }

private:
    bool AppendBytes(std::string& text);
    void EndLines(std::string& text, std::size_t start);

    std::ifstream m_file;
    std::size_t m_size = 0;
    bool m_hasNul = false;
    /// The block before ended with a carriage return that a line feed may follow.
    bool m_hasPendingReturn = false;
    bool m_isLineOpen = false;
};

} // namespace lusymbols
