#pragma once

#include <du/Export.h>

#include <string>

namespace du
{

/// The few file operations of catalogs and annotations. Paths are UTF-8; both platforms accept a trailing separator where
/// a folder is named.
///
/// Threads: every call is safe on any thread; what other programs do meanwhile is up to the operating system.
///
/// Errors: told by the result. Only a lack of memory is thrown, as std::bad_alloc, since "there is no such file" would be a
/// wrong answer. A path that is empty or holds a NUL names nothing. No call waits for the
/// other end of a pipe.
class LUHOST_API FileSystem
{
public:
    static bool DirExists(const std::string& path);

    /// Makes one folder, not its parents.
    /// @return 0 when this call made it, else an error number of the system (so also for a folder that exists)
    static int Mkdir(const std::string& path);

    /// True for a regular file, also behind a link; false for folders, pipes and devices.
    static bool FileExists(const std::string& path);

    /// True for a regular file that this process may open for reading.
    static bool FileReadable(const std::string& path);

    /// Copies the bytes of a regular file into a new file.
    ///
    /// Errors: false when the source is no readable regular file, when anything is at the target already (a link counts,
    /// wherever it leads), or when the bytes could not all be written; no half-written target stays.
    ///
    /// *Rationale:* the target's folder may be known to others, and a link laid there must not turn a copy into a write
    /// to a file of somebody's choosing.
    static bool CopyFile(const std::string& source, const std::string& target);

    /// Deletes a file, a link itself (never what it leads to), or a folder with all that it holds.
    /// @return true when nothing is left at the path, which includes a path that was missing; false also for a root or
    ///         for a path that ends in "." or "..", which are refused
    ///
    /// Errors: throws nothing, so that the end of an object may clean up; false when memory runs out.
    static bool DeletePath(const std::string& path) noexcept;

    FileSystem() = delete;
};

} // namespace du
