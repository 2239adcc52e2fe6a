#pragma once

#include <cstddef>
#include <string_view>

namespace dg
{

struct XmlParseError;

/// Words of XmlParseError for a text that the parser refused; not part of the interface. They cost a second pass over
/// the text and are made only when somebody asks.
class XmlDiagnosis
{
public:
    /// @param text as it was before the parser worked in it
    explicit XmlDiagnosis(std::string_view text) noexcept : m_text(text) {}

    /// @param offset where in the text the fault is
    XmlParseError At(std::size_t offset, std::string_view reason) const;

    /// An end tag that does not fit, or none where the text ends.
    /// @param offset behind the "</" of the end tag, or the end of the text
    XmlParseError ForTagMismatch(std::size_t offset) const;

private:
    std::size_t LineOf(std::size_t offset) const noexcept;

    std::string_view m_text;
};

} // namespace dg
