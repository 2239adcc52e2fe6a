#pragma once

#include "ExitCode.h"

#include <functional>

namespace CLI
{
class App;
}

namespace lusym
{

class Progress;

/// What the command line asked for; run once all of it has been understood.
using Invocation = std::function<ExitCode(Progress&)>;

/// Each adds one verb to its noun; when the command line names it, `invocation` becomes its work.
void AddLibraryCheck(CLI::App& library, Invocation& invocation);
void AddLibraryList(CLI::App& library, Invocation& invocation);
void AddLibraryFormat(CLI::App& library, Invocation& invocation);
void AddLibraryMerge(CLI::App& library, Invocation& invocation);
void AddLibraryGallery(CLI::App& library, Invocation& invocation);
void AddDemo(CLI::App& program, Invocation& invocation);

} // namespace lusym
