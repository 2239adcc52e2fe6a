#pragma once

#include <string>
#include <sys/stat.h>

namespace lusym
{

/// A file that is read, worked on, and written again in its place. Of two programs that do so at once, the one that comes
/// later is told, instead of undoing in silence what the other has done.
///
/// Use: make it before the file is read; Take just before the new file takes its place; let it go afterwards.
///
/// Errors: where the system has no locks, or the file cannot be opened, only what can be seen of the file counts.
class FileClaim
{
public:
    explicit FileClaim(std::string path);
    ~FileClaim();
    FileClaim(const FileClaim&) = delete;
    FileClaim& operator=(const FileClaim&) = delete;

    /// Keeps out other claims on the same file from now on. @return false when another program has changed the file since,
    /// or is about to
    bool Take();

private:
    std::string m_path;
    int m_descriptor;
    struct stat m_before {
    };
};

} // namespace lusym
