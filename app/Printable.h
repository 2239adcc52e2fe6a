#pragma once

#include <string>
#include <string_view>

namespace lusym
{

/// A text from a document or a file system as it may go to a terminal: in one line, valid UTF-8, and without control
/// characters or marks that turn the direction of what follows; those are shown as "\n", "\x1b" or "\u202e".
std::string Printable(std::string_view text);

/// A JSON document whose strings keep letters of every script, but not what could disturb a terminal: what `Printable`
/// shows otherwise becomes "\u202e" here too, which in JSON is the same text.
std::string PrintableJson(std::string_view json);

/// The same as Printable between double quotes, cut short when it is long.
std::string Quote(std::string_view text);

} // namespace lusym
