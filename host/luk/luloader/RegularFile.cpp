#include <du/FileSystem.h>
#include <du/SystemPath.h>
#include <luloader/RegularFile.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#if defined(_WIN32)
#  include <io.h>
#  include <windows.h>
#else
#  include <unistd.h>
#endif

namespace luloader
{

namespace
{

#if defined(_WIN32)

int OpenToRead(const std::string& path) noexcept
{
    try {
        const std::filesystem::path file = du::SystemPath(path);
        return du::WindowsFiles::KindOf(file) == du::WindowsFiles::Kind::File
                   ? ::_wopen(file.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT)
                   : -1;
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

bool ExistsSomething(const std::string& path)
{
    return du::WindowsFiles::KindOf(du::SystemPath(path)) != du::WindowsFiles::Kind::Nothing;
}

void CloseFile(int descriptor) noexcept { ::_close(descriptor); }

std::ptrdiff_t ReadSome(int descriptor, char* bytes, unsigned size) noexcept
{
    return ::_read(descriptor, bytes, size);
}

std::uint64_t Join(DWORD high, DWORD low) noexcept { return (std::uint64_t{high} << 32) | low; }

bool IdentifyFile(int descriptor, FileIdentity& identity) noexcept
{
    const HANDLE file = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    BY_HANDLE_FILE_INFORMATION information{};
    if (::GetFileType(file) != FILE_TYPE_DISK || !::GetFileInformationByHandle(file, &information)) {
        return false;
    }
    constexpr std::int64_t kTicksUntil1970 = 116444736000000000;
    const auto ticks = static_cast<std::int64_t>(
        Join(information.ftLastWriteTime.dwHighDateTime, information.ftLastWriteTime.dwLowDateTime));
    identity.device = information.dwVolumeSerialNumber;
    identity.index = Join(information.nFileIndexHigh, information.nFileIndexLow);
    identity.size = Join(information.nFileSizeHigh, information.nFileSizeLow);
    identity.changedAtNanoseconds = (ticks - kTicksUntil1970) * 100;
    return true;
}

#else

int OpenToRead(const std::string& path) noexcept
{
    struct stat status {
    };
    // Asked before too, because opening a device may have effects.
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return -1;
    }
    return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
}

bool ExistsSomething(const std::string& path)
{
    struct stat status {
    };
    return ::stat(path.c_str(), &status) == 0;
}

void CloseFile(int descriptor) noexcept { ::close(descriptor); }

std::ptrdiff_t ReadSome(int descriptor, char* bytes, unsigned size) noexcept
{
    std::ptrdiff_t count = 0;
    do {
        count = ::read(descriptor, bytes, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

bool IdentifyFile(int descriptor, FileIdentity& identity) noexcept
{
    struct stat status {
    };
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    identity.device = static_cast<std::uint64_t>(status.st_dev);
    identity.index = static_cast<std::uint64_t>(status.st_ino);
    identity.size = static_cast<std::uint64_t>(status.st_size);
    identity.changedAtNanoseconds = status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec;
    return true;
}

#endif

bool HasScheme(std::string_view text) noexcept
{
    const std::size_t end = text.find("://");
    return end != std::string_view::npos && end > 1 && text.find_first_of("/\\") > end;
}

} // namespace

bool FileIdentity::IsSettled() const noexcept
{
    using namespace std::chrono;
    constexpr std::int64_t kSettlingNanoseconds = 2'000'000'000;
    const std::int64_t now = duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
    return changedAtNanoseconds < now - kSettlingNanoseconds;
}

RegularFile::RegularFile(const std::string& path) noexcept : m_descriptor(path.empty() ? -1 : OpenToRead(path))
{
    if (IsOpen() && !Identify(m_identity)) {
        CloseFile(m_descriptor);
        m_descriptor = -1;
    }
}

RegularFile::~RegularFile()
{
    if (IsOpen()) {
        CloseFile(m_descriptor);
    }
}

bool RegularFile::Identify(FileIdentity& identity) const noexcept { return IdentifyFile(m_descriptor, identity); }

bool RegularFile::Read(std::size_t maximumBytes, std::string& bytes, std::string& problem) const
{
    constexpr std::size_t kChunk = std::size_t{1} << 20;
    // One byte more than the file should have shows its end without growing the text.
    bytes.resize(std::min(static_cast<std::size_t>(m_identity.size), maximumBytes) + 1);
    std::size_t size = 0;
    std::ptrdiff_t count = 1;
    while (count > 0 && size <= maximumBytes) {
        if (size == bytes.size()) {
            bytes.resize(size + kChunk);
        }
        count =
            ReadSome(m_descriptor, bytes.data() + size, static_cast<unsigned>(std::min(bytes.size() - size, kChunk)));
        size += static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0));
    }
    bytes.resize(size);
    if (count < 0) {
        problem = "the file cannot be read";
    } else if (size > maximumBytes) {
        problem = "the file is larger than " + std::to_string(maximumBytes) + " bytes";
    }
    return problem.empty();
}

std::string RegularFile::Explain(const std::string& path)
{
    if (path.empty()) {
        return "no file of this system is named";
    }
    if (du::FileSystem::FileExists(path)) {
        return "the file cannot be opened";
    }
    return ExistsSomething(path) ? "it is no regular file" : "there is no such file";
}

std::string PathFromURL(std::string_view url)
{
    constexpr std::string_view kFileScheme = "file:///";
    if (url.find('\0') != std::string_view::npos) {
        return {};
    }
    if (!url.starts_with(kFileScheme)) {
        return HasScheme(url) ? std::string() : std::string(url);
    }
    url.remove_prefix(kFileScheme.size());
#if defined(_WIN32)
    return std::string(url);
#else
    return url.starts_with('/') || url.empty() ? std::string(url) : '/' + std::string(url);
#endif
}

} // namespace luloader
