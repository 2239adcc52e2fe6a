#include "FileText.h"

#include "Progress.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#if defined(_WIN32)
#  include <du/FileSystem.h>
#  include <du/Utf8.h>
#endif

namespace lusym
{

namespace
{

#if defined(_WIN32)

using FileStatus = struct _stat64;

int OpenToRead(const std::string& path)
{
    return ::_wopen(du::Utf8ToWideStr(path).c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}

bool AskStatus(int descriptor, FileStatus& status) { return ::_fstat64(descriptor, &status) == 0; }

/// The numbers by which files are told apart are not told here.
bool IsSameFile(const FileStatus&, const FileStatus&) { return false; }

std::ptrdiff_t ReadSome(int descriptor, char* bytes, std::size_t size)
{
    constexpr std::size_t kMost = std::size_t{1} << 30;
    return ::_read(descriptor, bytes, static_cast<unsigned int>(std::min(size, kMost)));
}

std::ptrdiff_t WriteSome(int descriptor, const char* bytes, std::size_t size)
{
    constexpr std::size_t kMost = std::size_t{1} << 16;
    return ::_write(descriptor, bytes, static_cast<unsigned int>(std::min(size, kMost)));
}

std::string KindOfFile(unsigned int mode)
{
    return S_ISFIFO(mode) ? "is a pipe" : S_ISCHR(mode) ? "is a device" : "is no regular file";
}

#else

using FileStatus = struct stat;

/// Without waiting, so that a pipe is told from a file before anybody has to write into it.
int OpenToRead(const std::string& path) { return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY); }

bool AskStatus(int descriptor, FileStatus& status) { return fstat(descriptor, &status) == 0; }

bool IsSameFile(const FileStatus& a, const FileStatus& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

std::ptrdiff_t ReadSome(int descriptor, char* bytes, std::size_t size) { return read(descriptor, bytes, size); }

std::ptrdiff_t WriteSome(int descriptor, const char* bytes, std::size_t size) { return write(descriptor, bytes, size); }

std::string KindOfFile(mode_t mode)
{
    if (S_ISDIR(mode)) {
        return "is a folder";
    }
    if (S_ISFIFO(mode)) {
        return "is a pipe";
    }
    if (S_ISCHR(mode) || S_ISBLK(mode)) {
        return "is a device";
    }
    return S_ISSOCK(mode) ? "is a socket" : "is no regular file";
}

#endif

bool FailWithSystemError(std::string& error)
{
    error = errno == ENOENT ? "does not exist" : std::string("cannot be read: ") + std::strerror(errno);
    return false;
}

/// A regular file that is read from its beginning to its end.
class InputFile
{
public:
    InputFile() = default;
    ~InputFile()
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    bool Open(const std::string& path, std::string& error)
    {
        m_descriptor = OpenToRead(path);
        if (m_descriptor < 0 || !AskStatus(m_descriptor, m_status)) {
#if defined(_WIN32)
            if (du::FileSystem::DirExists(path)) {
                error = "is a folder";
                return false;
            }
#endif
            return FailWithSystemError(error);
        }
        if (!S_ISREG(m_status.st_mode)) {
            error = KindOfFile(m_status.st_mode);
            return false;
        }
        return true;
    }

    std::size_t GetSize() const { return static_cast<std::size_t>(m_status.st_size); }

    bool IsSameAs(const InputFile& other) const { return IsSameFile(m_status, other.m_status); }

    /// Fills the buffer unless the file ends before.
    /// @param[out] count the bytes that were read
    bool Read(std::span<char> buffer, std::size_t& count, std::string& error)
    {
        count = 0;
        while (count < buffer.size()) {
            const std::ptrdiff_t more = ReadSome(m_descriptor, buffer.data() + count, buffer.size() - count);
            if (more < 0 && errno == EINTR) {
                continue;
            }
            if (more < 0) {
                return FailWithSystemError(error);
            }
            if (more == 0) {
                break;
            }
            count += static_cast<std::size_t>(more);
        }
        return true;
    }

private:
    int m_descriptor = -1;
    FileStatus m_status{};
};

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

} // namespace

bool ReadFileText(const std::string& path, std::string& text, std::string& error)
{
    text.clear();
    InputFile file;
    if (!file.Open(path, error)) {
        return false;
    }
    // One byte more shows the end without growing.
    text.resize(file.GetSize() + 1);
    std::size_t filled = 0;
    std::size_t count = 0;
    while (file.Read(std::span(text).subspan(filled), count, error)) {
        filled += count;
        if (filled < text.size()) {
            text.resize(filled);
            return true;
        }
        text.resize(std::max<std::size_t>(2 * text.size(), 4096));
    }
    return false;
}

bool ReadStandardInput(std::string& text, std::string& error)
{
    text.clear();
    std::vector<char> block(kBlockSize);
    for (std::ptrdiff_t count = 1; count != 0;) {
        count = ReadSome(STDIN_FILENO, block.data(), block.size());
        if (count < 0 && errno != EINTR) {
            return FailWithSystemError(error);
        }
        text.append(block.data(), static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
    }
    return true;
}

bool ReadFileBlocks(const std::string& path, const std::function<bool(std::string_view)>& take, std::string& error)
{
    InputFile file;
    if (!file.Open(path, error)) {
        return false;
    }
    std::vector<char> block(kBlockSize);
    std::size_t count = 0;
    do {
        if (!file.Read(block, count, error) || !take(std::string_view(block.data(), count))) {
            return false;
        }
    } while (count == block.size());
    return true;
}

bool HasSameContent(const std::string& a, const std::string& b)
{
    InputFile fileA;
    InputFile fileB;
    std::string error;
    if (!fileA.Open(a, error) || !fileB.Open(b, error) || fileA.GetSize() != fileB.GetSize()) {
        return false;
    }
    if (fileA.IsSameAs(fileB)) {
        return true;
    }
    std::vector<char> blockA(kBlockSize);
    std::vector<char> blockB(kBlockSize);
    std::size_t countA = 0;
    std::size_t countB = 0;
    do {
        if (!fileA.Read(blockA, countA, error) || !fileB.Read(blockB, countB, error) ||
            !std::ranges::equal(std::span(blockA).first(countA), std::span(blockB).first(countB))) {
            return false;
        }
    } while (countA == blockA.size());
    return true;
}

bool WriteStandardOutput(std::string_view text, std::string& error)
{
    while (!text.empty()) {
        const std::ptrdiff_t count = WriteSome(STDOUT_FILENO, text.data(), text.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            error = std::string("cannot write to standard output: ") + std::strerror(errno);
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

ExitCode PutResult(std::string_view text, Progress& progress)
{
    progress.Clear();
    std::string error;
    if (WriteStandardOutput(text, error)) {
        return ExitCode::Done;
    }
    progress.Tell("lusym: " + error + "\n");
    return ExitCode::OutputNotWritable;
}

} // namespace lusym
