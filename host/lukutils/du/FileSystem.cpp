#include <du/FileSystem.h>
#include <du/FoundFiles.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

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
    const std::size_t last = text.find_last_not_of('/');
    return fs::path(last == std::string::npos ? text.substr(0, 1) : text.substr(0, last + 1));
}

/// A path meant as a file keeps its separator at the end, so that "file/" is no file.
bool NamesFolder(const std::string& text) noexcept { return !text.empty() && text.back() == '/'; }

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
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        struct stat status {
        };
        if (descriptor >= 0 && (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))) {
            ::close(descriptor);
            return -1;
        }
        return descriptor;
    }

    static int ToWriteNew(const fs::path& path) noexcept
    {
        return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    }

    bool IsOpen() const noexcept { return m_descriptor >= 0; }

    /// @return bytes read, 0 at the end, negative for an error
    std::ptrdiff_t Read(char* bytes, unsigned size) noexcept
    {
        std::ptrdiff_t count = 0;
        do {
            count = ::read(m_descriptor, bytes, size);
        } while (count < 0 && errno == EINTR);
        return count;
    }

    bool WriteAll(const char* bytes, unsigned size) noexcept
    {
        while (size > 0) {
            const std::ptrdiff_t count = ::write(m_descriptor, bytes, size);
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
        const bool closed = ::close(m_descriptor) == 0;
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

bool RemoveAll(const std::string& path)
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

} // namespace

bool FileSystem::DirExists(const std::string& path)
{
    std::error_code error;
    return fs::is_directory(PathOf(path), error);
}

int FileSystem::Mkdir(const std::string& path)
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

bool FileSystem::FileExists(const std::string& path)
{
    if (FoundFiles::Has(path)) {
        return true;
    }
    struct stat status {
    };
    const bool namesFile = !path.empty() && !NamesFolder(path) && path.find('\0') == std::string::npos;
    if (!namesFile || ::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    FoundFiles::Add(path);
    return true;
}

bool FileSystem::FileReadable(const std::string& path)
{
    return !NamesFolder(path) && OpenFile(OpenFile::ToRead(PathOf(path))).IsOpen();
}

bool FileSystem::CopyFile(const std::string& source, const std::string& target)
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
    FoundFiles::Forget();
    try {
        return RemoveAll(path);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace du
