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
#else
#  include <unistd.h>
#endif

namespace luhost
{

namespace
{

namespace fs = std::filesystem;

fs::path ToPath(const std::string& text) { return fs::path(std::u8string(text.begin(), text.end())); }

std::string ToText(const fs::path& path)
{
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

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

/// A new file that nobody has made before us. One that is to take the permissions of an old file can be read by its owner
/// alone until it gets them.
std::FILE* CreateExclusively(const fs::path& path, [[maybe_unused]] bool replacesAFile)
{
#if defined(_WIN32)
    const int descriptor = ::_wopen(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY, _S_IREAD | _S_IWRITE);
    return descriptor < 0 ? nullptr : ::_fdopen(descriptor, "wb");
#else
    constexpr mode_t kOwner = S_IRUSR | S_IWUSR;
    constexpr mode_t kAll = kOwner | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    const int descriptor = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, replacesAFile ? kOwner : kAll);
    return descriptor < 0 ? nullptr : ::fdopen(descriptor, "wb");
#endif
}

#if defined(_WIN32)

bool TakePermissions(const fs::path&, const fs::path&) { return true; }

bool FlushToMedium(std::FILE* file) { return ::_commit(::_fileno(file)) == 0; }

void FlushFolder(const fs::path&) {}

#else

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
void FlushFolder(const fs::path& target)
{
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

#endif

} // namespace

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
    const fs::path behind = FollowLinks(ToPath(m_target), error);
    if (error) {
        Fail("follow", error.value());
        return;
    }
    m_target = ToText(behind);
    const fs::file_status status = fs::status(behind, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        Fail("replace", fs::is_directory(status) ? EISDIR : EINVAL);
    }
}

bool AtomicFile::OpenTemporary()
{
    std::string uuid;
    du::UuidGen::GetUuidString(uuid);
    const fs::path target = ToPath(m_target);
    fs::path temporary = target.parent_path() / ("." + uuid + ".tmp");
    std::error_code ignored;
    m_file = CreateExclusively(temporary, fs::exists(target, ignored));
    if (!m_file) {
        return Fail("create a file beside", errno);
    }
    m_temporary = ToText(temporary);
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
    std::error_code error;
    fs::rename(ToPath(m_temporary), ToPath(m_target), error);
    if (error) {
        return Fail("replace", error.value());
    }
    m_temporary.clear();
    if (m_durability == Durability::Flushed) {
        FlushFolder(ToPath(m_target));
    }
    return true;
}

bool AtomicFile::FlushAndClose()
{
    errno = 0;
    const bool isToFlush = m_durability == Durability::Flushed;
    if (std::fflush(m_file) != 0 || (isToFlush && !FlushToMedium(m_file)) ||
        !TakePermissions(ToPath(m_temporary), ToPath(m_target))) {
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
        std::error_code ignored;
        fs::remove(ToPath(std::exchange(m_temporary, {})), ignored);
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
