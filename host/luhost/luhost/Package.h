#pragma once

#include <du/Export.h>

#include <string>
#include <vector>

namespace luhost
{

/// One file inside a package. Names use '/', are relative and never lead out of the package.
struct PackageEntry {
    std::string name;
    std::string bytes;
};

/// How packages are kept in files.
///
/// Threads: every operation may be called on any thread.
///
/// Errors: a false result comes with the reason in words, without the name of the file.
class LUHOST_API PackageFormat
{
public:
    virtual ~PackageFormat();

    /// Reads all entries in the order of their names. Trusts nothing: count, sizes, ratio of compression and names are
    /// bounded and checked before memory is asked for.
    virtual bool Read(const std::string& path, std::vector<PackageEntry>& entries, std::string& error) const = 0;

    /// Writes the entries, sorted by name, so that the same entries always give the same bytes. The old file or the new
    /// one is there at any moment, whole.
    virtual bool Write(const std::string& path, std::vector<PackageEntry> entries, std::string& error) const = 0;

protected:
    PackageFormat() = default;
    PackageFormat(const PackageFormat&) = default;
    PackageFormat& operator=(const PackageFormat&) = default;
};

} // namespace luhost
