#pragma once

#include "ExitCode.h"

#include <string>
#include <string_view>

namespace lusym
{

class Progress;

/// Reads a whole regular file.
/// @param[out] error why it could not be read, such as "is a folder"; never waits for a pipe
/// @return false when it could not
bool ReadFileText(const std::string& path, std::string& text, std::string& error);

/// Writes everything to standard output.
/// @return false with the reason when not all of it arrived
bool WriteStandardOutput(std::string_view text, std::string& error);

/// The same for the result of a verb: failure is told on stderr.
ExitCode PutResult(std::string_view text, Progress& progress);

} // namespace lusym
