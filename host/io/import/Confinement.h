#pragma once

#include <cstdint>
#include <filesystem>

namespace luhost::io
{

/// What the process that reads a model allows itself.
struct Confinement {
    std::uint64_t seconds = 0; ///< of processor time
    std::uint64_t memoryBytes = 0;
    std::filesystem::path folder; ///< the only one from which files can be read; none can be written

    /// For the rest of the process. What the system cannot confine stays open: an older kernel has no limits of files, and
    /// sanitizers need more addresses than they use.
    void Enter() const;
};

} // namespace luhost::io
