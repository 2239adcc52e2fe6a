#pragma once

#include <du/Export.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace du
{

/// Path of a file or folder, split into location, name and extension. Pure text work; the file system is never asked.
///
/// Use: both '/' and '\\' separate on every platform, since library files travel between platforms; what is read back
/// has the native separator. Repeated separators become one, "." components go, ".." and upper and lower case stay. The
/// two slashes of "scheme://" are kept, and so are the two that begin a network share on Windows.
///
/// A location that is the root reads back as "": joined with a separator and a name it is the root again. ".." always
/// belongs to the location, never to the name, because it names a folder.
///
/// Threads: a value like a string.
///
/// Cost: one pass over the text and at most one allocation for each call that builds or returns a text.
class LUHOST_API FileSpec
{
public:
#if defined(_WIN32)
    static constexpr char DIR_SEP_CHAR = '\\';
#else
    static constexpr char DIR_SEP_CHAR = '/';
#endif
    static constexpr char EXT_SEP_CHAR = '.';

    FileSpec() noexcept = default;
    explicit FileSpec(std::string_view path) { SetFileSpec(path); }

    /// Replaces everything. What follows the last separator is the name; a path that ends in a separator has none.
    void SetFileSpec(std::string_view path);

    /// Replaces the location and keeps the name; the whole text is taken as folders. "" makes the name relative.
    void SetLocation(std::string_view folders);

    /// Appends a folder, or several, to the location. Leading separators of the text do not make it absolute.
    void DirPushBack(std::string_view folders);

    /// Replaces name and extension. Folders in the text are dropped, so that a name cannot leave the location.
    void SetFile(std::string_view name);
    /// Replaces the name before the extension, which stays.
    void SetFileBaseName(std::string_view baseName);
    /// Replaces the extension, given with or without its separator; "" removes it with its separator.
    void SetFileExtension(std::string_view extension);

    /// The whole path; that of a pure location has no separator at its end.
    std::string GetFileSpec() const;

    /// @param withSeparator end with a separator, unless the location is empty
    void GetLocation(std::string* location, bool withSeparator) const;

    /// Appends what a FileSpec makes of the path, location with its separator and name, without building one.
    /// @return where the name begins in `out`
    static std::size_t AppendNormalised(std::string& out, std::string_view path);

    /// Name with extension; "" for a pure location.
    std::string GetFile() const { return std::string(FileView()); }

    /// What follows the last dot of the name, without it.
    std::string GetFileExtension() const;

    /// True for a leading '/' or '\\', a drive letter with ':' and a separator, and "scheme://" with a scheme of two or
    /// more characters.
    static bool IsAbsolute(std::string_view path) noexcept;

private:
    std::string_view FileView() const noexcept { return std::string_view(m_path).substr(m_fileStart); }
    std::size_t ExtensionStart() const noexcept;

    std::string m_path;          ///< location with its separator at the end, then the name
    std::size_t m_fileStart = 0; ///< where the name begins in m_path
};

} // namespace du
