#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace test
{

/// How a program is run and what it meets.
struct ProcessOptions {
    /// "NAME=value"; the environment is that of the test but for these.
    std::vector<std::string> environment;
    /// No file that it writes may become larger; 0 for no limit.
    std::size_t largestFile = 0;
    /// Sends this signal when this file, or one whose name begins so, is there; 0 for none.
    int signalNumber = 0;
    std::string signalWhenExists;
    std::chrono::seconds timeout{60};
};

struct ProcessResult {
    int exitCode = -1; ///< -1 when a signal ended it
    int signalNumber = 0;
    bool hasTimedOut = false;
    std::string out;
    std::string err;
};

/// Runs a program to its end, or to the time-out, with standard input closed.
ProcessResult RunProcess(const std::vector<std::string>& command, const ProcessOptions& options = {});

/// Runs `lusym`, in English and without what the environment of the test may hold.
ProcessResult RunLusym(std::vector<std::string> arguments, ProcessOptions options = {});

} // namespace test
