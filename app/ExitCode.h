#pragma once

namespace lusym
{

/// How the program ends. The numbers are part of its interface.
enum class ExitCode : int {
    Done = 0,
    Failed = 1,
    Usage = 2,
    InputUnreadable = 3,
    OutputNotWritable = 4,
    Findings = 5,
    PartOfBatchFailed = 6,
};

} // namespace lusym
