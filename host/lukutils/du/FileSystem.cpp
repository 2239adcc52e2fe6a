#include <du/FileSystem.h>
#include <du/Utf8.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#if defined(_WIN32)
#  include <io.h>
#else
#  include <unistd.h>
#endif

namespace du
{

namespace
{

namespace fs = std::filesystem;

/// An empty path for a text that names nothing. Separators at the end go, because with one a link's target would be
/// meant instead of the link.
fs::path PathOf(const std::string& text)
{
    if (text.find('\0') != std::string::npos) {
        return {};
    }
#if defined(_WIN32)
    const char* const separators = "/\\";
#else
    const char* const separators = "/";
#endif
    const std::size_t last = text.find_last_not_of(separators);
    const std::string path = last == std::string::npos ? text.substr(0, 1) : text.substr(0, last + 1);
#if defined(_WIN32)
    // "C:" alone would be the current folder of that drive.
    return fs::path(Utf8ToWideStr(path.size() == 2 && path[1] == ':' ? path + '\\' : path));
#else
    return fs::path(path);
#endif
}

/// A path meant as a file keeps its separator at the end, so that "file/" is no file.
bool NamesFolder(const std::string& text) noexcept
{
    return !text.empty() && (text.back() == '/' || (fs::path::preferred_separator == '\\' && text.back() == '\\'));
}

bool IsRegularFile(const fs::path& path) noexcept
{
    std::error_code error;
    return !path.empty() && fs::is_regular_file(path, error);
}

/// An open file of the operating system; -1 for none.
class OpenFile
{
public:
    explicit OpenFile(int descriptor) noexcept : m_descriptor(descriptor) {}
    ~OpenFile() { Close(); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    /// The kind is asked twice: before, because opening a device may have effects; after, because another program may
    /// have changed what is there.
    static int ToRead(const fs::path& path) noexcept
    {
        if (!IsRegularFile(path)) {
            return -1;
        }
#if defined(_WIN32)
        return ::_wopen(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
#else
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        struct stat status {
        };
        if (descriptor >= 0 && (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))) {
            ::close(descriptor);
            return -1;
        }
        return descriptor;
#endif
    }

    static int ToWriteNew(const fs::path& path) noexcept
    {
#if defined(_WIN32)
        return ::_wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
#else
        return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
#endif
    }

    bool IsOpen() const noexcept { return m_descriptor >= 0; }

    /// @return bytes read, 0 at the end, negative for an error
    std::ptrdiff_t Read(char* bytes, unsigned size) noexcept
    {
        std::ptrdiff_t count = 0;
        do {
#if defined(_WIN32)
            count = ::_read(m_descriptor, bytes, size);
#else
            count = ::read(m_descriptor, bytes, size);
#endif
        } while (count < 0 && errno == EINTR);
        return count;
    }

    bool WriteAll(const char* bytes, unsigned size) noexcept
    {
        while (size > 0) {
#if defined(_WIN32)
            const std::ptrdiff_t count = ::_write(m_descriptor, bytes, size);
#else
            const std::ptrdiff_t count = ::write(m_descriptor, bytes, size);
#endif
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return false;
            }
            bytes += count;
            size -= static_cast<unsigned>(count);
        }
        return true;
    }

    bool Close() noexcept
    {
        if (m_descriptor < 0) {
            return true;
        }
#if defined(_WIN32)
        const bool closed = ::_close(m_descriptor) == 0;
#else
        const bool closed = ::close(m_descriptor) == 0;
#endif
        m_descriptor = -1;
        return closed;
    }

private:
    int m_descriptor;
};

bool CopyAllBytes(OpenFile& source, OpenFile& target) noexcept
{
    std::array<char, std::size_t{64} * 1024> buffer;
    for (;;) {
        const std::ptrdiff_t count = source.Read(buffer.data(), static_cast<unsigned>(buffer.size()));
        if (count <= 0) {
            return count == 0;
        }
        if (!target.WriteAll(buffer.data(), static_cast<unsigned>(count))) {
            return false;
        }
    }
}

} // namespace

bool FileSystem::DirExists(const std::string& path) noexcept
{
    std::error_code error;
    return fs::is_directory(PathOf(path), error);
}

int FileSystem::Mkdir(const std::string& path) noexcept
{
    const fs::path folder = PathOf(path);
    if (folder.empty()) {
        return ENOENT;
    }
    std::error_code error;
    const bool isMade = fs::create_directory(folder, error);
    if (error) {
        return error.value();
    }
    return isMade ? 0 : EEXIST;
}

bool FileSystem::FileExists(const std::string& path) noexcept
{
    return !NamesFolder(path) && IsRegularFile(PathOf(path));
}

bool FileSystem::FileReadable(const std::string& path) noexcept
{
    return !NamesFolder(path) && OpenFile(OpenFile::ToRead(PathOf(path))).IsOpen();
}

bool FileSystem::CopyFile(const std::string& source, const std::string& target) noexcept
{
    const fs::path targetPath = PathOf(target);
    if (NamesFolder(source) || NamesFolder(target) || targetPath.empty()) {
        return false;
    }
    OpenFile from(OpenFile::ToRead(PathOf(source)));
    if (!from.IsOpen()) {
        return false;
    }
    OpenFile to(OpenFile::ToWriteNew(targetPath));
    if (!to.IsOpen()) {
        return false;
    }
    const bool isCopied = CopyAllBytes(from, to);
    if (to.Close() && isCopied) {
        return true;
    }
    std::error_code error;
    fs::remove(targetPath, error);
    return false;
}

bool FileSystem::DeletePath(const std::string& path) noexcept
{
    const fs::path victim = PathOf(path);
    if (victim.empty()) {
        return path.empty();
    }
    const fs::path name = victim.filename();
    if (name.empty() || name == "." || name == "..") {
        return false;
    }
    std::error_code error;
    fs::remove_all(victim, error);
    return fs::symlink_status(victim, error).type() == fs::file_type::not_found;
}

} // namespace du
