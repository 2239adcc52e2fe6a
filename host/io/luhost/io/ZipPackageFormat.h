#pragma once

#include <luhost/Package.h>

#include <cstddef>
#include <cstdint>

namespace luhost::io
{

struct PackageLimits {
    /// A mesh for each part of the largest product, and all else.
    std::size_t maximumEntries = 2'100'000;
    std::uint64_t maximumEntryBytes = std::uint64_t{1} << 30;
    std::uint64_t maximumTotalBytes = std::uint64_t{4} << 30;
    /// Unpacked to packed bytes, beyond the first megabyte of an entry.
    std::uint64_t maximumRatio = 1000;
};

/// Packages as zip archives: deflated, with fixed times and attributes, entries sorted by name.
class ZipPackageFormat : public PackageFormat
{
public:
    explicit ZipPackageFormat(const PackageLimits& limits = {}) : m_limits(limits) {}

    bool Read(const std::string& path, std::vector<PackageEntry>& entries, std::string& error) const override;
    bool Write(const std::string& path, std::vector<PackageEntry> entries, std::string& error) const override;

private:
    PackageLimits m_limits;
};

} // namespace luhost::io
