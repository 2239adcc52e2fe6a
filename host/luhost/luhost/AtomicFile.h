#pragma once

#include <du/Export.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace luhost
{

/// Writes a file that is either the whole new one or the untouched old one, whatever happens meanwhile.
///
/// Use: `AtomicFile file(path); file.Write(text); if (!file.Commit()) { report(file.GetError()); }`. Another writer that
/// needs a name gets GetTemporaryPath, writes and closes it, and Commit does the rest.
///
/// The bytes go to a file of an exclusive name beside the target; Commit flushes them to the medium and renames that
/// file over the target. An old file's permission bits go over to the new one. A target that is a link is followed, so
/// that the file behind it is replaced and the link stays.
///
/// Errors: the first one stands, with the system's words; later calls do nothing and answer false. Without Commit, and
/// after an error, the temporary file is deleted and the target is as it was; so too when memory runs out, which is thrown as
/// std::bad_alloc.
///
/// Threads: one thread at a time.
class LUHOST_API AtomicFile
{
public:
    enum class Durability {
        Flushed, ///< on the medium when Commit returns
        Cached   ///< some seconds later: for files that can be made anew, of which there may be thousands
    };

    explicit AtomicFile(const std::string& target, Durability durability = Durability::Flushed);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    bool Write(std::string_view bytes);
    bool Commit();
    /// Gives up; without effect after Commit.
    void Discard();

    /// Exists from construction on; empty after an error, Commit or Discard.
    const std::string& GetTemporaryPath() const noexcept { return m_temporary; }

    bool HasFailed() const noexcept { return !m_error.empty(); }
    const std::string& GetError() const noexcept { return m_error; }

private:
    bool Fail(const std::string& what, int errorNumber);
    void ResolveTarget();
    bool OpenTemporary();
    bool FlushAndClose();

    struct Paths;

    std::string m_target;
    std::string m_temporary;
    std::unique_ptr<Paths> m_paths;
    std::string m_error;
    std::FILE* m_file = nullptr;
    Durability m_durability;
};

} // namespace luhost
