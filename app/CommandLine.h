#pragma once

#include "ExitCode.h"

#include <string>
#include <vector>

namespace lusym
{

class Progress;

/// Runs the program: `lusym NOUN VERB ...`.
/// @return the exit code
int RunCommandLine(int argc, char** argv);

/// Runs a verb within another one.
/// @param arguments what follows the name of the program
ExitCode RunVerb(std::vector<std::string> arguments, Progress& progress);

} // namespace lusym
