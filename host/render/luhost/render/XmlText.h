#pragma once

#include <string>
#include <string_view>

namespace luhost::render
{

/// Text with the characters alone that an XML document may hold: control characters but tab and line feed are dropped,
/// ill-formed UTF-8 becomes U+FFFD.
std::string ToXmlCharacters(std::string_view text);

/// The same, escaped for the content of an element and for an attribute in double quotes.
void AppendXmlText(std::string& out, std::string_view text);

} // namespace luhost::render
