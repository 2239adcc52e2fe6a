#include "Invocation.h"
#include "Progress.h"

#include <CLI/CLI.hpp>

#include <string>

// The verbs that the build for Windows has not. Each is there and says so, whatever else it is told.

namespace lusym
{

namespace
{

void AddLeftOut(CLI::App& noun, const std::string& name, Invocation& invocation)
{
    CLI::App& verb = *noun.add_subcommand(name, "Left out of this build");
    verb.set_help_flag();
    verb.fallthrough(false);
    verb.prefix_command();
    const bool isOfProgram = noun.get_parent() == nullptr;
    const std::string whole = isOfProgram ? name : noun.get_name() + " " + name;
    verb.callback([whole, &invocation] {
        invocation = [whole](Progress& progress) {
            progress.Tell("lusym: \"" + whole +
                          "\" is left out of the build for Windows, which reads and writes no "
                          "pictures, documents and models; use the build for Linux\n");
            return ExitCode::Failed;
        };
    });
}

} // namespace

void AddLibraryCheck(CLI::App& library, Invocation& invocation) { AddLeftOut(library, "check", invocation); }

void AddLibraryList(CLI::App& library, Invocation& invocation) { AddLeftOut(library, "list", invocation); }

void AddLibraryFormat(CLI::App& library, Invocation& invocation) { AddLeftOut(library, "format", invocation); }

void AddLibraryMerge(CLI::App& library, Invocation& invocation) { AddLeftOut(library, "merge", invocation); }

void AddLibraryGallery(CLI::App& library, Invocation& invocation) { AddLeftOut(library, "gallery", invocation); }

void AddLibraryThumbnails(CLI::App& library, Invocation& invocation) { AddLeftOut(library, "thumbnails", invocation); }

void AddDocumentNew(CLI::App& document, Invocation& invocation) { AddLeftOut(document, "new", invocation); }

void AddDocumentInfo(CLI::App& document, Invocation& invocation) { AddLeftOut(document, "info", invocation); }

void AddDocumentTree(CLI::App& document, Invocation& invocation) { AddLeftOut(document, "tree", invocation); }

void AddDocumentCheck(CLI::App& document, Invocation& invocation) { AddLeftOut(document, "check", invocation); }

void AddDocumentUpdate(CLI::App& document, Invocation& invocation) { AddLeftOut(document, "update", invocation); }

void AddSymbolPlace(CLI::App& symbol, Invocation& invocation) { AddLeftOut(symbol, "place", invocation); }

void AddSymbolList(CLI::App& symbol, Invocation& invocation) { AddLeftOut(symbol, "list", invocation); }

void AddSymbolRemove(CLI::App& symbol, Invocation& invocation) { AddLeftOut(symbol, "remove", invocation); }

void AddProductImport(CLI::App& product, Invocation& invocation) { AddLeftOut(product, "import", invocation); }

void AddPartList(CLI::App& part, Invocation& invocation) { AddLeftOut(part, "list", invocation); }

void AddPartMove(CLI::App& part, Invocation& invocation) { AddLeftOut(part, "move", invocation); }

void AddPartShow(CLI::App& part, Invocation& invocation)
{
    AddLeftOut(part, "show", invocation);
    AddLeftOut(part, "hide", invocation);
}

void AddRender(CLI::App& program, Invocation& invocation) { AddLeftOut(program, "render", invocation); }

void AddFlatten(CLI::App& program, Invocation& invocation) { AddLeftOut(program, "flatten", invocation); }

void AddDemo(CLI::App& program, Invocation& invocation) { AddLeftOut(program, "demo", invocation); }

} // namespace lusym
