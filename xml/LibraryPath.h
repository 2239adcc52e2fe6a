#pragma once

#include <du/Utf8.h>

#include <filesystem>
#include <string>

namespace lusymbols
{

/// A UTF-8 path in the form in which the platform opens files: wide on Windows, the bytes themselves elsewhere, where a
/// file name need not be text at all.
inline std::filesystem::path MakeLibraryPath(const std::string& utf8Path)
{
#ifdef _WIN32
    return std::filesystem::path(du::Utf8ToWideStr(utf8Path));
#else
    return std::filesystem::path(utf8Path);
#endif
}

} // namespace lusymbols
