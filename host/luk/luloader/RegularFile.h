#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace luloader
{

/// What tells one state of a file from another without reading it.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t index = 0; ///< of the file on its device
    std::uint64_t size = 0;
    std::int64_t changedAtNanoseconds = 0; ///< since 1970

    bool operator==(const FileIdentity&) const = default;

    /// Whether the file was left alone for a while, so that its next change is sure to get another time.
    ///
    /// *Rationale:* file systems count time in steps, of two seconds in the worst case, and two changes within one step
    /// look alike.
    bool IsSettled() const noexcept;
};

/// A regular file that is open for reading. Pipes and devices are refused, and never waited for.
///
/// Threads: each object belongs to one thread.
class RegularFile
{
public:
    explicit RegularFile(const std::string& path) noexcept;
    ~RegularFile();
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    bool IsOpen() const noexcept { return m_descriptor >= 0; }

    /// As it was when it was opened.
    const FileIdentity& GetIdentity() const noexcept { return m_identity; }

    /// As it is now.
    bool Identify(FileIdentity& identity) const noexcept;

    /// All bytes up to the end, wherever that is by now.
    /// @param[out] problem why there are none
    bool Read(std::size_t maximumBytes, std::string& bytes, std::string& problem) const;

    /// Why the path cannot be read, in words.
    static std::string Explain(const std::string& path);

private:
    int m_descriptor = -1;
    FileIdentity m_identity;
};

/// The path that a URL or a plain path stands for. Nothing is percent-decoded, since URLs here are put together from paths
/// as they are.
/// @return empty for what names no file of this system
std::string PathFromURL(std::string_view url);

} // namespace luloader
