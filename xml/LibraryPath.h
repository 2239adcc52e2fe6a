#pragma once

#include <du/Utf8.h>

#include <filesystem>
#include <string>

namespace lusymbols
{

/// A UTF-8 path in the form in which the platform opens files: wide on Windows, the bytes themselves elsewhere, where a
/// file name need not be text at all. A text with a NUL byte names nothing: the system would see but its beginning.
inline std::filesystem::path MakeLibraryPath(const std::string& utf8Path)
{
    if (utf8Path.find('\0') != std::string::npos) {
        return {};
    }
#ifdef _WIN32
    return std::filesystem::path(du::Utf8ToWideStr(utf8Path));
#else
    return std::filesystem::path(utf8Path);
#endif
}

} // namespace lusymbols
