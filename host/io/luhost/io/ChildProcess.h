#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace luhost::io
{

/// Runs a program that may do anything, and reads what it writes to its standard output. It has no other stream.
///
/// Threads: every operation may be called on any thread.
///
/// Errors: whatever the program does, the call comes back soon after the time is over, and the program is gone by then.
class ChildProcess
{
public:
    struct Limits {
        std::chrono::milliseconds time{0}; ///< by the clock
        std::uint64_t outputBytes = 0;
    };

    enum class Ending {
        NotStarted,    ///< code: an error number of the system
        Unreadable,    ///< code: an error number of the system, told by its output
        Exited,        ///< code: its exit code
        Signalled,     ///< code: the signal that ended it
        TooSlow,       ///< it was ended
        TooMuchOutput, ///< it was ended
    };

    struct Result {
        Ending ending = Ending::NotStarted;
        int code = 0;
    };

    /// @param arguments without the program itself
    /// @param[out] output what it wrote, also when it did not end well
    static Result Run(const std::string& program, const std::vector<std::string>& arguments, const Limits& limits,
                      std::string& output);

    ChildProcess() = delete;
};

} // namespace luhost::io
