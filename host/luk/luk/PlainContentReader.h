#pragma once

#include <du/Export.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace luk
{

class SerializedContentElement;

/// Reads saved content from a text in which it stands as SerializedContentXml::Append writes it, without parsing the text
/// first: many times quicker. What stands there in any other way is left to SerializedContentXml::Reader, such as comments,
/// values in Base64, attributes that are not understood, and values that are wrong.
///
/// Use: one reader for contents that follow one another. They are mostly alike, so that each line is compared with the one
/// at the same place in the content before, and read only where it differs.
///
/// Ownership: the texts outlive the reader.
///
/// Threads: one reader belongs to one thread at a time.
///
/// Cost: linear; no recursion.
class LUHOST_API PlainContentReader
{
public:
    PlainContentReader();
    ~PlainContentReader();
    PlainContentReader(const PlainContentReader&) = delete;
    PlainContentReader& operator=(const PlainContentReader&) = delete;

    /// Reads the element at the front of a text.
    /// @param content becomes what SerializedContentXml::Reader makes of the same bytes in a document
    /// @return the bytes that it takes; 0, with the content undefined, when it stands there in another way
    std::size_t Read(std::string_view text, SerializedContentElement& content);

private:
    class Lines;
    std::unique_ptr<Lines> m_lines;
};

} // namespace luk
