#include <du/FileSystem.h>
#include <du/FoundFiles.h>
#include <du/SystemPath.h>

#include <cerrno>
#include <new>
#include <windows.h>
#undef CopyFile

namespace du
{

namespace
{

namespace fs = std::filesystem;
using Kind = WindowsFiles::Kind;

constexpr const char* kSeparators = "/\\";

/// An empty path for a text that names nothing. Separators at the end go, because with one a link's target would be
/// meant instead of the link.
fs::path PathOf(const std::string& text)
{
    if (text.find('\0') != std::string::npos) {
        return {};
    }
    const std::size_t last = text.find_last_not_of(kSeparators);
    std::string path = text.substr(0, last == std::string::npos ? 1 : last + 1);
    // "C:" alone would be the current folder of that drive.
    if (path.size() == 2 && path[1] == ':') {
        path += '\\';
    }
    return SystemPath(path);
}

/// A path meant as a file keeps its separator at the end, so that "file/" is no file.
bool NamesFolder(const std::string& text) noexcept
{
    return !text.empty() && std::string_view(kSeparators).find(text.back()) != std::string_view::npos;
}

bool IsFile(const std::string& path) { return !NamesFolder(path) && WindowsFiles::KindOf(PathOf(path)) == Kind::File; }

bool RemoveAll(const std::string& path)
{
    const fs::path victim = PathOf(path);
    if (victim.empty()) {
        return path.empty();
    }
    // Asked of the text, since the system leaves dots at the end of names out.
    const std::size_t end = path.find_last_not_of(kSeparators) + 1;
    const std::string_view whole = std::string_view(path).substr(0, end);
    const std::string_view name = whole.substr(whole.find_last_of("/\\:") + 1);
    return !name.empty() && name != "." && name != ".." && WindowsFiles::DeleteTree(victim);
}

} // namespace

bool FileSystem::DirExists(const std::string& path) { return WindowsFiles::KindOf(PathOf(path)) == Kind::Folder; }

int FileSystem::Mkdir(const std::string& path)
{
    const fs::path folder = PathOf(path);
    if (folder.empty()) {
        return ENOENT;
    }
    return ::CreateDirectoryW(folder.c_str(), nullptr) ? 0 : WindowsFiles::ErrorNumberOf(::GetLastError());
}

bool FileSystem::FileExists(const std::string& path)
{
    if (FoundFiles::Has(path)) {
        return true;
    }
    if (!IsFile(path)) {
        return false;
    }
    FoundFiles::Add(path);
    return true;
}

bool FileSystem::FileReadable(const std::string& path)
{
    if (!IsFile(path)) {
        return false;
    }
    const HANDLE file =
        ::CreateFileW(PathOf(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE && ::CloseHandle(file);
}

bool FileSystem::CopyFile(const std::string& source, const std::string& target)
{
    const fs::path targetPath = PathOf(target);
    if (!IsFile(source) || NamesFolder(target) || targetPath.empty() ||
        WindowsFiles::KindOf(targetPath) == Kind::Other) {
        return false;
    }
    // Asked before, since through a link that leads nowhere the system would make the file behind it.
    const bool isTaken = ::GetFileAttributesW(targetPath.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (isTaken || !::CopyFileW(PathOf(source).c_str(), targetPath.c_str(), TRUE)) {
        return false;
    }
    // The copy is a file like any new one, also where the source may not be written.
    ::SetFileAttributesW(targetPath.c_str(), FILE_ATTRIBUTE_NORMAL);
    return true;
}

bool FileSystem::DeletePath(const std::string& path) noexcept
{
    FoundFiles::Forget();
    try {
        return RemoveAll(path);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace du
