#include <du/FileSpec.h>

#include <algorithm>
#include <cstddef>

namespace du
{

namespace
{

constexpr bool IsSeparator(char c) noexcept { return c == '/' || c == '\\'; }

constexpr bool IsLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

constexpr bool IsSchemeCharacter(char c) noexcept
{
    return IsLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

/// Length of "scheme://" at the beginning, else 0. One letter is a drive.
std::size_t SchemeLength(std::string_view text) noexcept
{
    const std::size_t end = text.find(':');
    if (end == std::string_view::npos || end < 2 || text.substr(end, 3) != "://" || !IsLetter(text.front())) {
        return 0;
    }
    return std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(end), IsSchemeCharacter) ? end + 3
                                                                                                             : 0;
}

/// A location without the separator at its end, unless that is one of the two of "scheme://".
std::string_view WithoutSeparator(std::string_view location) noexcept
{
    const bool isSchemeAlone = location.size() == SchemeLength(location);
    return location.substr(0, location.size() - (location.empty() || isSchemeAlone ? 0 : 1));
}

std::size_t NameStart(std::string_view path) noexcept
{
    std::size_t start = path.size();
    while (start > 0 && !IsSeparator(path[start - 1])) {
        --start;
    }
    const std::string_view name = path.substr(start);
    return name == "." || name == ".." ? path.size() : start;
}

std::string_view NameOf(std::string_view path) noexcept { return path.substr(NameStart(path)); }

/// Whether these folders are already written as a location is: each with one native separator behind it. A name that
/// begins with a dot is left to the one who looks closer.
bool IsNormalised(std::string_view folders) noexcept
{
    constexpr char kOtherSeparator = FileSpec::DIR_SEP_CHAR == '/' ? '\\' : '/';
    std::size_t start = 0;
    while (start < folders.size()) {
        const std::size_t end = folders.find(FileSpec::DIR_SEP_CHAR, start);
        if (end == start || end == std::string_view::npos || folders[start] == '.') {
            return false;
        }
        start = end + 1;
    }
    return folders.find(kOtherSeparator) == std::string_view::npos;
}

void AppendComponents(std::string& out, std::string_view folders)
{
    if (IsNormalised(folders)) {
        out += folders;
        return;
    }
    std::size_t start = 0;
    while (start < folders.size()) {
        std::size_t end = start;
        while (end < folders.size() && !IsSeparator(folders[end])) {
            ++end;
        }
        const std::string_view component = folders.substr(start, end - start);
        if (!component.empty() && component != ".") {
            out += component;
            out += FileSpec::DIR_SEP_CHAR;
        }
        start = end + 1;
    }
}

void AppendLocation(std::string& out, std::string_view folders)
{
    const std::size_t schemeLength = SchemeLength(folders);
    out += folders.substr(0, schemeLength);
    folders.remove_prefix(schemeLength);
    if (!folders.empty() && IsSeparator(folders.front())) {
        out += FileSpec::DIR_SEP_CHAR;
#if defined(_WIN32)
        const bool isNetworkShare = schemeLength == 0 && folders.size() > 2 && IsSeparator(folders[1]);
        if (isNetworkShare && !IsSeparator(folders[2])) {
            out += FileSpec::DIR_SEP_CHAR;
        }
#endif
    }
    AppendComponents(out, folders);
}

} // namespace

void FileSpec::SetFileSpec(std::string_view path)
{
    std::string built;
    built.reserve(path.size() + 1);
    m_fileStart = AppendNormalised(built, path);
    m_path = std::move(built);
}

std::size_t FileSpec::AppendNormalised(std::string& out, std::string_view path)
{
    const std::size_t nameStart = NameStart(path);
    AppendLocation(out, path.substr(0, nameStart));
    const std::size_t fileStart = out.size();
    out += path.substr(nameStart);
    return fileStart;
}

void FileSpec::SetLocation(std::string_view folders)
{
    const std::string_view file = FileView();
    std::string built;
    built.reserve(folders.size() + 1 + file.size());
    AppendLocation(built, folders);
    const std::size_t fileStart = built.size();
    built += file;
    m_path = std::move(built);
    m_fileStart = fileStart;
}

void FileSpec::DirPushBack(std::string_view folders)
{
    const std::string_view file = FileView();
    std::string built;
    built.reserve(m_path.size() + folders.size() + 1);
    built.append(m_path, 0, m_fileStart);
    AppendComponents(built, folders);
    const std::size_t fileStart = built.size();
    built += file;
    m_path = std::move(built);
    m_fileStart = fileStart;
}

void FileSpec::SetFile(std::string_view name) { m_path.replace(m_fileStart, std::string::npos, NameOf(name)); }

void FileSpec::SetFileBaseName(std::string_view baseName)
{
    m_path.replace(m_fileStart, ExtensionStart() - m_fileStart, NameOf(baseName));
}

void FileSpec::SetFileExtension(std::string_view extension)
{
    const std::string name(NameOf(extension));
    m_path.erase(ExtensionStart());
    if (name.empty()) {
        return;
    }
    if (name.front() != EXT_SEP_CHAR) {
        m_path += EXT_SEP_CHAR;
    }
    m_path += name;
}

std::string FileSpec::GetFileSpec() const
{
    return m_fileStart == m_path.size() ? std::string(WithoutSeparator(m_path)) : m_path;
}

void FileSpec::GetLocation(std::string* location, bool withSeparator) const
{
    if (location) {
        const std::string_view folders = std::string_view(m_path).substr(0, m_fileStart);
        location->assign(withSeparator ? folders : WithoutSeparator(folders));
    }
}

std::string FileSpec::GetFileExtension() const
{
    const std::size_t start = ExtensionStart();
    return start < m_path.size() ? m_path.substr(start + 1) : std::string();
}

/// Where the dot of the extension stands in m_path, or its end.
std::size_t FileSpec::ExtensionStart() const noexcept
{
    const std::size_t dot = FileView().rfind(EXT_SEP_CHAR);
    return dot == std::string_view::npos ? m_path.size() : m_fileStart + dot;
}

bool FileSpec::IsAbsolute(std::string_view path) noexcept
{
    if (path.empty()) {
        return false;
    }
    const bool hasDrive = path.size() >= 3 && IsLetter(path[0]) && path[1] == ':' && IsSeparator(path[2]);
    return IsSeparator(path.front()) || hasDrive || SchemeLength(path) > 0;
}

} // namespace du
