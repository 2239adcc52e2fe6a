#include <du/SystemPath.h>
#include <du/UuidGen.h>
#include <luhost/AtomicFile.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <utility>
#if defined(_WIN32)
#  include <io.h>
#  include <windows.h>
#else
#  include <unistd.h>
#endif

namespace luhost
{

namespace
{

namespace fs = std::filesystem;

#if defined(_WIN32)

using du::WindowsFiles;

/// Of a link that leads nowhere the system does not tell where that is.
fs::path FollowLinks(fs::path path, std::error_code& error)
{
    if (const int number = WindowsFiles::FollowLink(path); number != 0) {
        error.assign(number, std::generic_category());
    }
    return path;
}

int WhyNotReplaceable(const fs::path& target)
{
    const WindowsFiles::Kind kind = WindowsFiles::KindOf(target);
    return kind == WindowsFiles::Kind::Folder ? EISDIR : kind == WindowsFiles::Kind::Other ? EINVAL : 0;
}

/// A new file that nobody has made before us.
std::FILE* CreateExclusively(const fs::path& path, const fs::path&)
{
    const int descriptor =
        ::_wopen(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    return descriptor < 0 ? nullptr : ::_fdopen(descriptor, "wb");
}

/// A new file has the rights that its folder gives.
bool TakePermissions(const fs::path&, const fs::path&) { return true; }

bool FlushToMedium(std::FILE* file) { return ::_commit(::_fileno(file)) == 0; }

int Rename(const fs::path& from, const fs::path& to, bool isToLast)
{
    const DWORD flags = MOVEFILE_REPLACE_EXISTING | (isToLast ? MOVEFILE_WRITE_THROUGH : 0UL);
    return ::MoveFileExW(from.c_str(), to.c_str(), flags) ? 0 : WindowsFiles::ErrorNumberOf(::GetLastError());
}

void Remove(const fs::path& path) { ::DeleteFileW(path.c_str()); }

#else

/// Where a chain of links leads, also when there is nothing there yet.
fs::path FollowLinks(fs::path path, std::error_code& error)
{
    constexpr int kMaxLinks = 40;
    std::error_code missing;
    for (int links = 0; fs::is_symlink(fs::symlink_status(path, missing)); ++links) {
        if (links == kMaxLinks) {
            error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
            return path;
        }
        const fs::path next = fs::read_symlink(path, error);
        if (error) {
            return path;
        }
        path = path.parent_path() / next;
    }
    return path;
}

int WhyNotReplaceable(const fs::path& target)
{
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (!fs::exists(status) || fs::is_regular_file(status)) {
        return 0;
    }
    return fs::is_directory(status) ? EISDIR : EINVAL;
}

/// A new file that nobody has made before us. One that is to take the permissions of an old file can be read by its owner
/// alone until it gets them.
std::FILE* CreateExclusively(const fs::path& path, const fs::path& target)
{
    std::error_code ignored;
    const bool replacesAFile = fs::exists(target, ignored);
    constexpr mode_t kOwner = S_IRUSR | S_IWUSR;
    constexpr mode_t kAll = kOwner | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    const int descriptor = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, replacesAFile ? kOwner : kAll);
    std::FILE* const file = descriptor < 0 ? nullptr : ::fdopen(descriptor, "wb");
    if (descriptor >= 0 && !file) {
        const int reason = errno;
        ::close(descriptor);
        ::unlink(path.c_str());
        errno = reason;
    }
    return file;
}

/// Those of the old file where there is one. By name, since another writer may have put a file of its own in the place of
/// the temporary one.
bool TakePermissions(const fs::path& temporary, const fs::path& target)
{
    struct stat old {
    };
    return ::stat(target.c_str(), &old) != 0 ||
           ::chmod(temporary.c_str(), old.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO)) == 0;
}

bool FlushToMedium(std::FILE* file) { return ::fsync(::fileno(file)) == 0; }

/// Makes the rename itself last. Some file systems refuse this for folders, and then there is nothing more to do.
void FlushFolder(const fs::path& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

int Rename(const fs::path& from, const fs::path& to, bool isToLast)
{
    // Before the rename, behind which nothing may fail any more.
    const fs::path folder = to.has_parent_path() ? to.parent_path() : fs::path(".");
    std::error_code error;
    fs::rename(from, to, error);
    if (!error && isToLast) {
        FlushFolder(folder);
    }
    return error.value();
}

void Remove(const fs::path& path)
{
    std::error_code ignored;
    fs::remove(path, ignored);
}

#endif

} // namespace

/// Made once, so that what is begun can be ended without memory.
struct AtomicFile::Paths {
    fs::path target;
    fs::path temporary;
};

AtomicFile::AtomicFile(const std::string& target, Durability durability) : m_target(target), m_durability(durability)
{
    ResolveTarget();
    if (!HasFailed()) {
        OpenTemporary();
    }
}

AtomicFile::~AtomicFile() { Discard(); }

void AtomicFile::ResolveTarget()
{
    if (m_target.empty() || m_target.find('\0') != std::string::npos) {
        Fail("open", EINVAL);
        return;
    }
    std::error_code error;
    const fs::path behind = FollowLinks(du::SystemPath(m_target), error);
    if (error) {
        Fail("follow", error.value());
        return;
    }
    m_target = du::TextOfPath(behind);
    if (const int reason = WhyNotReplaceable(behind); reason != 0) {
        Fail("replace", reason);
    }
}

bool AtomicFile::OpenTemporary()
{
    std::string uuid;
    du::UuidGen::GetUuidString(uuid);
    const fs::path target = du::SystemPath(m_target);
    m_temporary = du::TextOfPath(target.parent_path() / ("." + uuid + ".tmp"));
    m_paths = std::make_unique<Paths>(Paths{target, du::SystemPath(m_temporary)});
    m_file = CreateExclusively(m_paths->temporary, m_paths->target);
    if (!m_file) {
        const int reason = errno;
        // Whatever is there is not ours.
        m_temporary.clear();
        return Fail("create a file beside", reason);
    }
    return true;
}

bool AtomicFile::Write(std::string_view bytes)
{
    if (!m_file) {
        return false;
    }
    errno = 0;
    return std::fwrite(bytes.data(), 1, bytes.size(), m_file) == bytes.size() || Fail("write", errno);
}

bool AtomicFile::Commit()
{
    if (!m_file || !FlushAndClose()) {
        return false;
    }
    const bool isToLast = m_durability == Durability::Flushed;
    if (const int reason = Rename(m_paths->temporary, m_paths->target, isToLast); reason != 0) {
        return Fail("replace", reason);
    }
    m_temporary.clear();
    return true;
}

bool AtomicFile::FlushAndClose()
{
    errno = 0;
    const bool isToFlush = m_durability == Durability::Flushed;
    if (std::fflush(m_file) != 0 || (isToFlush && !FlushToMedium(m_file)) ||
        !TakePermissions(m_paths->temporary, m_paths->target)) {
        return Fail("write", errno);
    }
    return std::fclose(std::exchange(m_file, nullptr)) == 0 || Fail("close", errno);
}

void AtomicFile::Discard()
{
    if (m_file) {
        std::fclose(std::exchange(m_file, nullptr));
    }
    if (!m_temporary.empty()) {
        m_temporary.clear();
        Remove(m_paths->temporary);
    }
}

bool AtomicFile::Fail(const std::string& what, int errorNumber)
{
    if (m_error.empty()) {
        m_error = "cannot " + what + " " + m_target + ": " + std::generic_category().message(errorNumber);
    }
    Discard();
    return false;
}

} // namespace luhost
