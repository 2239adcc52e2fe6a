#pragma once

namespace lusym
{

/// Runs the program: `lusym NOUN VERB ...`.
/// @return the exit code
int RunCommandLine(int argc, char** argv);

} // namespace lusym
