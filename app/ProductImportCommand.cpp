#include "DocumentSource.h"
#include "Finding.h"
#include "Invocation.h"
#include "PartState.h"
#include "Printable.h"
#include "ProductSource.h"
#include "Progress.h"
#include "SymbolAttachment.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct ImportOptions {
    ProductOptions product;
    std::string name;
    std::string output;
};

ExitCode RunImport(const ImportOptions& options, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress, [&](DocumentSource& source) {
        if (!PutProduct(options.product, source)) {
            return ExitCode::InputUnreadable;
        }
        const ExitCode saved = source.Save(options.output);
        if (saved == ExitCode::Done) {
            TellLost(FindLostAttachmentsOfLiving(source.GetDocument()), options.name, progress);
            progress.Tell(Printable(options.product.model) + ": " +
                          CountOf(PartsOf(source.GetDocument()).size(), "part", "parts") + ", " +
                          CountOf(TrianglesOf(source.GetDocument()), "triangle", "triangles") + ".\n");
        }
        return saved;
    });
}

} // namespace

void AddProductImport(CLI::App& product, Invocation& invocation)
{
    CLI::App& verb = *product.add_subcommand("import", "Put a model into a document, as its product");
    const auto options = std::make_shared<ImportOptions>();
    CLI::Option* const model =
        verb.add_option("MODEL", options->product.model, "The model: " + std::string(kModelFormats))
            ->required()
            ->type_name("");
    AddDocumentArgument(verb, options->name);
    AddProductOptions(verb, options->product, model);
    AddDocumentOutputOption(verb, options->output);
    verb.footer(
        "The hierarchy of the model is kept, and what it uses several times is kept once. A product that is there\n"
        "is replaced; parts that have the same ids as before stay hidden or moved, and symbols stay on them. The\n"
        "model is read by a program of its own, with bounds of time and memory.\n\n"
        "Examples:\n"
        "  lusym product import gearbox.glb manual.luz\n"
        "  lusym product import housing.stl manual.luz --unit in --service service.xml -o new.luz\n\n"
        "Exit codes: 0 done; 3 MODEL, TREE or DOC is unreadable, and DOC is as it was; 4 not writable.\n");
    verb.callback([options, &invocation] {
        invocation = [options](Progress& progress) { return RunImport(*options, progress); };
    });
}

} // namespace lusym
