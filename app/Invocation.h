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
void AddLibraryThumbnails(CLI::App& library, Invocation& invocation);
void AddDocumentNew(CLI::App& document, Invocation& invocation);
void AddDocumentInfo(CLI::App& document, Invocation& invocation);
void AddDocumentTree(CLI::App& document, Invocation& invocation);
void AddDocumentCheck(CLI::App& document, Invocation& invocation);
void AddDocumentUpdate(CLI::App& document, Invocation& invocation);
void AddSymbolPlace(CLI::App& symbol, Invocation& invocation);
void AddSymbolList(CLI::App& symbol, Invocation& invocation);
void AddSymbolRemove(CLI::App& symbol, Invocation& invocation);
void AddProductImport(CLI::App& product, Invocation& invocation);
void AddPartList(CLI::App& part, Invocation& invocation);
void AddPartMove(CLI::App& part, Invocation& invocation);
/// And the verb that hides.
void AddPartShow(CLI::App& part, Invocation& invocation);
void AddPluginCheck(CLI::App& plugin, Invocation& invocation);
void AddRender(CLI::App& program, Invocation& invocation);
void AddFlatten(CLI::App& program, Invocation& invocation);
void AddDemo(CLI::App& program, Invocation& invocation);

} // namespace lusym
