#pragma once

#include <string_view>

namespace lusymbols
{

/// Whether a name that came from a document is one plain file name, on every platform: not empty, not "." or "..", and
/// without separators, drives, stream colons and NUL. Anything else could lead out of the folder that it is looked up in.
inline bool IsPlainFileName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\\:\0", 4)) == std::string_view::npos;
}

} // namespace lusymbols
