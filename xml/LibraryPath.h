#pragma once

#include <du/Utf8.h>

#include <filesystem>
#include <string>
#ifdef _WIN32
#  include <system_error>
#endif

namespace lusymbols
{

#ifdef _WIN32
/// A path of Windows at any length: a long one only opens with the prefix for such, which takes it as it is.
inline std::filesystem::path WithoutLimit(const std::filesystem::path& path)
{
    // A folder has to leave room for a short name within the old limit.
    constexpr std::size_t kLongestPlain = 247;
    std::error_code error;
    const std::wstring full = std::filesystem::absolute(path, error).lexically_normal().make_preferred().native();
    if (error || full.size() <= kLongestPlain || full.starts_with(L"\\\\?\\") || full.starts_with(L"\\\\.\\")) {
        return path;
    }
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}
#endif

/// A UTF-8 path in the form in which the platform opens files: wide on Windows, the bytes themselves elsewhere, where a
/// file name need not be text at all. A text with a NUL byte names nothing: the system would see but its beginning.
inline std::filesystem::path MakeLibraryPath(const std::string& utf8Path)
{
    if (utf8Path.find('\0') != std::string::npos) {
        return {};
    }
#ifdef _WIN32
    return WithoutLimit(std::filesystem::path(du::Utf8ToWideStr(utf8Path)));
#else
    return std::filesystem::path(utf8Path);
#endif
}

} // namespace lusymbols
