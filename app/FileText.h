#pragma once

#include "ExitCode.h"

#include <functional>
#include <string>
#include <string_view>

namespace lusym
{

class Progress;

/// Reads a whole regular file.
/// @param[out] error why it could not be read, such as "is a folder"; never waits for a pipe
/// @return false when it could not
bool ReadFileText(const std::string& path, std::string& text, std::string& error);

/// Reads standard input to its end.
bool ReadStandardInput(std::string& text, std::string& error);

/// Reads a regular file of any size in blocks, the last of which may be empty.
/// @param[out] error why it could not be read; empty when `take` answered false, which stops
/// @return false when not all of it was taken
bool ReadFileBlocks(const std::string& path, const std::function<bool(std::string_view)>& take, std::string& error);

/// Whether both are regular files that can be read and hold the same bytes. Reads no more of them than it has to.
bool HasSameContent(const std::string& a, const std::string& b);

/// Writes everything to standard output.
/// @return false with the reason when not all of it arrived
bool WriteStandardOutput(std::string_view text, std::string& error);

/// The same for the result of a verb: failure is told on stderr.
ExitCode PutResult(std::string_view text, Progress& progress);

} // namespace lusym
