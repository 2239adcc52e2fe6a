#include "FileText.h"

#include "Progress.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lusym
{

namespace
{

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor()
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_descriptor; }

private:
    int m_descriptor;
};

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

bool FailWithSystemError(std::string& error)
{
    error = errno == ENOENT ? "does not exist" : std::string("cannot be read: ") + std::strerror(errno);
    return false;
}

bool ReadToEnd(int descriptor, std::string& text, std::string& error)
{
    std::size_t filled = 0;
    for (;;) {
        if (filled == text.size()) {
            text.resize(std::max<std::size_t>(2 * text.size(), 4096));
        }
        const ssize_t count = read(descriptor, text.data() + filled, text.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return FailWithSystemError(error);
        }
        if (count == 0) {
            text.resize(filled);
            return true;
        }
        filled += static_cast<std::size_t>(count);
    }
}

} // namespace

bool ReadFileText(const std::string& path, std::string& text, std::string& error)
{
    text.clear();
    // Without waiting, so that a pipe is told from a file before anybody has to write into it.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status {
    };
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0) {
        return FailWithSystemError(error);
    }
    if (!S_ISREG(status.st_mode)) {
        error = KindOfFile(status.st_mode);
        return false;
    }
    // One byte more shows the end without growing.
    text.resize(static_cast<std::size_t>(status.st_size) + 1);
    return ReadToEnd(file.Get(), text, error);
}

bool WriteStandardOutput(std::string_view text, std::string& error)
{
    while (!text.empty()) {
        const ssize_t count = write(STDOUT_FILENO, text.data(), text.size());
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
