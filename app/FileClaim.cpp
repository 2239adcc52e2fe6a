#include "FileClaim.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace lusym
{

FileClaim::FileClaim(std::string path)
    : m_path(std::move(path)), m_descriptor(open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY))
{
    // As long as it is open, no other file gets its number.
    if (m_descriptor >= 0) {
        fstat(m_descriptor, &m_before);
    }
}

FileClaim::~FileClaim()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

bool FileClaim::Take()
{
    if (m_descriptor < 0) {
        return true;
    }
    // Waiting would not help: who holds the lock is about to replace the file.
    if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return false;
    }
    struct stat now {
    };
    return stat(m_path.c_str(), &now) == 0 && now.st_dev == m_before.st_dev && now.st_ino == m_before.st_ino &&
           now.st_size == m_before.st_size && now.st_mtim.tv_sec == m_before.st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == m_before.st_mtim.tv_nsec;
}

} // namespace lusym
