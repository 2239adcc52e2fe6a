#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#if !defined(_WIN32)

namespace du
{

/// The path of a UTF-8 text as the system takes it. Elsewhere than on Windows the bytes are the name, text or not.
inline std::filesystem::path SystemPath(std::string_view utf8) { return std::filesystem::path(std::string(utf8)); }

inline std::string TextOfPath(const std::filesystem::path& path) { return path.native(); }

} // namespace du

#else

#  include <vector>

namespace du
{

/// The path of a UTF-8 text as the system takes it, at any length: a long one has the prefix with which the system takes it.
std::filesystem::path SystemPath(std::string_view utf8);

/// Back to UTF-8, without that prefix.
std::string TextOfPath(const std::filesystem::path& path);

/// What there is at a path on Windows, and what a folder holds.
///
/// *Rationale:* the standard library asks through the system's old C library, which neither knows links nor takes long
/// paths.
class WindowsFiles
{
public:
    enum class Kind : unsigned char { Nothing, File, Folder, Other };

    struct Entry {
        std::wstring name;
        Kind kind = Kind::Other; ///< a link is Other
    };

    /// Of a link, what it leads to. Devices and pipes are told by their names and not opened, which may have effects.
    static Kind KindOf(const std::filesystem::path& path);
    static bool NamesDevice(const std::filesystem::path& path);

    /// Empty also for what is no folder.
    static std::vector<Entry> ListFolder(const std::filesystem::path& folder);

    static bool IsLink(const std::filesystem::path& path);

    /// Deletes a file, a link itself, or a folder with all that it holds. @return whether nothing is there any more
    static bool DeleteTree(const std::filesystem::path& path);

    /// The file behind a link, also behind several; the path itself for anything else.
    /// @return an error number of the C library, or 0
    static int FollowLink(std::filesystem::path& path);

    /// An error of the system in its words, in one line.
    static std::string MessageOf(unsigned long systemError);

    /// An error of the system as one of the C library.
    static int ErrorNumberOf(unsigned long systemError);

    WindowsFiles() = delete;
};

} // namespace du

#endif
