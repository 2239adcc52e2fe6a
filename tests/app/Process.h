#pragma once

#include <string>
#include <vector>

namespace test
{

/// How a program is run and what it meets.
struct ProcessOptions {
    /// "NAME=value"; the environment is that of the test but for these.
    std::vector<std::string> environment;
    /// Sends this signal when this file, or one whose name begins so, is there; 0 for none.
    int signalNumber = 0;
    std::string signalWhenExists;
};

struct ProcessResult {
    int exitCode = -1; ///< -1 when a signal ended it
    int signalNumber = 0;
    std::string out;
    std::string err;
};

/// Runs a program to its end, or for a minute, with standard input empty.
ProcessResult RunProcess(std::vector<std::string> command, const ProcessOptions& options = {});

/// Runs `lusym`, in English and without what the environment of the test may hold, and expects its exit code.
ProcessResult RunLusym(std::vector<std::string> arguments, int exitCode = 0, ProcessOptions options = {});

} // namespace test
