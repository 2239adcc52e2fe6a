#pragma once

#include <du/Export.h>
#include <du/TextHash.h>

#include <functional>
#include <string>
#include <unordered_set>

namespace du
{

/// While one lives, FileSystem::FileExists asks the system once for a file that is there, and answers by itself from then
/// on.
///
/// *Rationale:* the annotations of a document share their files, and each question makes the system walk the whole path.
///
/// Threads: holds for the thread that made it, and ends there; within another it does nothing. What this thread deletes by
/// FileSystem::DeletePath is asked for again. What others delete meanwhile may go unseen until it ends, as it may when a
/// question comes just before the deletion.
class LUHOST_API FoundFiles
{
public:
    FoundFiles() noexcept;
    ~FoundFiles();
    FoundFiles(const FoundFiles&) = delete;
    FoundFiles& operator=(const FoundFiles&) = delete;

    /// [FileSystem] @return whether it was found before
    static bool Has(const std::string& path);
    /// [FileSystem]
    static void Add(const std::string& path);
    /// [FileSystem] All of them.
    static void Forget() noexcept;

private:
    const bool m_isOutermost;
    std::unordered_set<std::string, TextHash, std::equal_to<>> m_paths;
};

} // namespace du
