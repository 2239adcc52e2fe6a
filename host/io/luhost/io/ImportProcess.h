#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace luhost::io
{

/// Runs a program and reads what it writes to its standard output. It has no other stream.
///
/// Threads: every operation may be called on any thread.
class ImportProcess
{
public:
    struct Limits {
        unsigned int seconds = 0; ///< by the clock
        std::uint64_t outputBytes = 0;
    };

    /// Exit code by which the program says that it found no memory.
    static constexpr int kOutOfMemory = 3;

    /// @param arguments without the program itself
    /// @param[out] problem why there is no output: it could not be started, took too long, wrote too much, or ended badly
    static bool Run(const std::string& program, const std::vector<std::string>& arguments, const Limits& limits,
                    std::string& output, std::string& problem);

    ImportProcess() = delete;
};

} // namespace luhost::io
