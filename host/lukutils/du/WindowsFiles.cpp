#include <du/SystemPath.h>
#include <du/Utf8.h>

#include <cerrno>
#include <iterator>
#include <system_error>
#include <windows.h>

namespace du
{

namespace
{

namespace fs = std::filesystem;
using Kind = WindowsFiles::Kind;

constexpr std::wstring_view kExtended = L"\\\\?\\";
constexpr std::wstring_view kExtendedShare = L"\\\\?\\UNC\\";
constexpr std::wstring_view kDevice = L"\\\\.\\";
/// A folder has to leave room for a short name within the old limit.
constexpr std::size_t kLongestPlain = 247;

class Handle
{
public:
    explicit Handle(HANDLE handle) noexcept : m_handle(handle) {}
    ~Handle()
    {
        if (IsOpen()) {
            ::CloseHandle(m_handle);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool IsOpen() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const noexcept { return m_handle; }

private:
    HANDLE m_handle;
};

/// What a text means at the moment: with the drive, the working folder, and no dots. Itself where the system cannot tell.
std::wstring FullPath(const std::wstring& path)
{
    std::wstring full(path.size() + MAX_PATH, L'\0');
    DWORD size = ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (size > full.size()) {
        full.resize(size);
        size = ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    }
    if (size == 0 || size > full.size()) {
        return path;
    }
    full.resize(size);
    return full;
}

/// A full path in the form that has no limit.
std::wstring ExtendedPath(const std::wstring& full)
{
    if (full.starts_with(kExtended) || full.starts_with(kDevice)) {
        return full;
    }
    if (full.starts_with(L"\\\\")) {
        return std::wstring(kExtendedShare) + full.substr(2);
    }
    return std::wstring(kExtended) + full;
}

/// "\\.\NUL" for "NUL", in any folder where the system takes it so; "\\server\pipe\name".
bool IsDeviceName(const std::wstring& full)
{
    if (full.starts_with(kDevice)) {
        return true;
    }
    if (!full.starts_with(L"\\\\") || full.starts_with(kExtended)) {
        return false;
    }
    const std::size_t share = full.find(L'\\', 2);
    return share != std::wstring::npos && ::_wcsnicmp(full.c_str() + share, L"\\pipe\\", 6) == 0;
}

Kind KindOfAttributes(DWORD attributes)
{
    return (attributes & FILE_ATTRIBUTE_DEVICE) != 0      ? Kind::Other
           : (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Kind::Folder
                                                          : Kind::File;
}

/// Clouds and disks that store equal files once mark these as links too, which they are not.
bool IsLinkTag(DWORD attributes, DWORD reparseTag)
{
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(reparseTag);
}

/// Of a link the link itself, otherwise what it leads to; to ask about it and nothing else.
HANDLE OpenToAsk(const std::wstring& path, bool follow)
{
    return ::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                         nullptr, OPEN_EXISTING,
                         FILE_FLAG_BACKUP_SEMANTICS | (follow ? 0UL : FILE_FLAG_OPEN_REPARSE_POINT), nullptr);
}

bool IsLinkAt(const std::wstring& path, DWORD attributes)
{
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return false;
    }
    const Handle link(OpenToAsk(path, false));
    FILE_ATTRIBUTE_TAG_INFO information{};
    // What cannot be asked is not gone into.
    return !link.IsOpen() ||
           !::GetFileInformationByHandleEx(link.Get(), FileAttributeTagInfo, &information, sizeof information) ||
           IsLinkTag(attributes, information.ReparseTag);
}

/// A file that may not be written may be deleted where its folder may be written, as on other systems.
void DeleteOne(const std::wstring& path, DWORD attributes)
{
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        ::SetFileAttributesW(path.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        ::RemoveDirectoryW(path.c_str());
    } else {
        ::DeleteFileW(path.c_str());
    }
}

void DeleteAllBelow(const std::wstring& top)
{
    std::vector<std::wstring> folders{top};
    for (std::size_t i = 0; i < folders.size(); ++i) {
        for (const WindowsFiles::Entry& entry : WindowsFiles::ListFolder(folders[i])) {
            std::wstring path = folders[i] + L'\\' + entry.name;
            if (entry.kind == Kind::Folder) {
                folders.push_back(std::move(path));
            } else {
                DeleteOne(path, ::GetFileAttributesW(path.c_str()));
            }
        }
    }
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
        DeleteOne(*folder, ::GetFileAttributesW(folder->c_str()));
    }
}

} // namespace

fs::path SystemPath(std::string_view utf8)
{
    std::wstring path = Utf8ToWideStr(utf8);
    if (path.empty() || path.starts_with(kExtended)) {
        return path;
    }
    const std::wstring full = FullPath(path);
    return full.size() > kLongestPlain ? ExtendedPath(full) : path;
}

std::string TextOfPath(const fs::path& path)
{
    const std::wstring_view text = path.native();
    if (text.starts_with(kExtendedShare)) {
        return "\\\\" + WideStrToUtf8(text.substr(kExtendedShare.size()));
    }
    return WideStrToUtf8(text.substr(text.starts_with(kExtended) ? kExtended.size() : 0));
}

Kind WindowsFiles::KindOf(const fs::path& path)
{
    if (path.empty()) {
        return Kind::Nothing;
    }
    if (NamesDevice(path)) {
        return Kind::Other;
    }
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return ErrorNumberOf(::GetLastError()) == ENOENT ? Kind::Nothing : Kind::Other;
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return KindOfAttributes(attributes);
    }
    const Handle target(OpenToAsk(path.native(), true));
    BY_HANDLE_FILE_INFORMATION information{};
    return target.IsOpen() && ::GetFileInformationByHandle(target.Get(), &information)
               ? KindOfAttributes(information.dwFileAttributes)
               : Kind::Nothing;
}

bool WindowsFiles::NamesDevice(const fs::path& path) { return IsDeviceName(FullPath(path.native())); }

std::vector<WindowsFiles::Entry> WindowsFiles::ListFolder(const fs::path& folder)
{
    std::vector<Entry> entries;
    WIN32_FIND_DATAW found{};
    const HANDLE search = ::FindFirstFileW((ExtendedPath(FullPath(folder.native())) + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return entries;
    }
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") {
            const bool isLink = IsLinkTag(found.dwFileAttributes, found.dwReserved0);
            entries.push_back({std::wstring(name), isLink ? Kind::Other : KindOfAttributes(found.dwFileAttributes)});
        }
    } while (::FindNextFileW(search, &found));
    ::FindClose(search);
    return entries;
}

bool WindowsFiles::IsLink(const fs::path& path) { return IsLinkAt(path.native(), ::GetFileAttributesW(path.c_str())); }

bool WindowsFiles::DeleteTree(const fs::path& path)
{
    const std::wstring top = ExtendedPath(FullPath(path.native()));
    const DWORD attributes = ::GetFileAttributesW(top.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        if (KindOfAttributes(attributes) == Kind::Folder && !IsLinkAt(top, attributes)) {
            DeleteAllBelow(top);
        } else {
            DeleteOne(top, attributes);
        }
    }
    return ::GetFileAttributesW(top.c_str()) == INVALID_FILE_ATTRIBUTES && ErrorNumberOf(::GetLastError()) == ENOENT;
}

int WindowsFiles::FollowLink(fs::path& path)
{
    if (!IsLink(path)) {
        return 0;
    }
    const Handle target(OpenToAsk(path.native(), true));
    if (!target.IsOpen()) {
        return ErrorNumberOf(::GetLastError());
    }
    std::wstring real(::GetFinalPathNameByHandleW(target.Get(), nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    const DWORD size =
        ::GetFinalPathNameByHandleW(target.Get(), real.data(), static_cast<DWORD>(real.size()), FILE_NAME_NORMALIZED);
    if (size == 0 || size >= real.size()) {
        return EIO;
    }
    real.resize(size);
    path = real;
    return 0;
}

std::string WindowsFiles::MessageOf(unsigned long systemError)
{
    wchar_t text[512];
    constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    DWORD size = ::FormatMessageW(kFlags, nullptr, systemError, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (size > 0 && (text[size - 1] == L' ' || text[size - 1] == L'.')) {
        --size;
    }
    return size > 0 ? WideStrToUtf8(std::wstring_view(text, size)) : "error " + std::to_string(systemError);
}

int WindowsFiles::ErrorNumberOf(unsigned long systemError)
{
    switch (systemError) {
    case ERROR_SUCCESS:
        return 0;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_DIRECTORY:
        return ENOENT;
    case ERROR_ALREADY_EXISTS:
    case ERROR_FILE_EXISTS:
        return EEXIST;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT:
        return EACCES;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return ENOSPC;
    case ERROR_FILENAME_EXCED_RANGE:
        return ENAMETOOLONG;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
        return ENOMEM;
    default:
        return EIO;
    }
}

} // namespace du
