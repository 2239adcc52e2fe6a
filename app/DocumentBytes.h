#pragma once

#include "Finding.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lusym
{

/// Lines of a text by offset, asked for with offsets in it that never go back. Linear over all calls, also where the text
/// is one long line.
class LineCounter
{
public:
    explicit LineCounter(std::string_view text) : m_text(text) {}

    std::size_t LineAt(std::size_t offset);

private:
    std::string_view m_text;
    std::size_t m_scanned = 0;
    std::size_t m_line = 1;
};

/// What can be told of a library document from its bytes alone: byte order mark, encoding, NUL bytes.
/// @return whether the bytes may be text of a document at all
bool ExamineBytes(std::string_view bytes, std::vector<Finding>& findings);

/// What an XML reader passes over in a well-formed document: comments, instructions, document types.
void ExaminePassedOver(std::string_view text, std::vector<Finding>& findings);

/// Cuts the carriage return off the end of each line, as the loader does with a file.
void CutCarriageReturns(std::string& text);

} // namespace lusym
