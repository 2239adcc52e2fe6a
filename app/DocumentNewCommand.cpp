#include "DocumentSource.h"
#include "Invocation.h"
#include "OutputFile.h"
#include "Printable.h"
#include "ProductSource.h"
#include "Progress.h"
#include "TextValues.h"

#include <du/FileSystem.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct NewOptions {
    DocumentOptions document;
    ProductOptions product;
    std::vector<std::string> pages;
    std::string output;
};

std::string FaultOfPaper(const std::string& text)
{
    return ParsePaperSize(text) ? std::string()
                                : Quote(text) + " is no paper. Write a4, a3-landscape, or 210x297 in millimetres";
}

/// From the front, with 400 millimetres of the scene on a screen of a usual size.
dg::Camera3D FrontCamera()
{
    constexpr double kVisibleWidth = 400.0;
    constexpr double kDistance = 1000.0;
    dg::Camera3D camera;
    camera.SetOrthographic(kVisibleWidth);
    camera.SetViewport(1280, 800);
    camera.SetLocation(dg::Location(dg::FMat33::IDENTITY, dg::DPoint3D(0.0, 0.0, kDistance)));
    return camera;
}

ExitCode RunNew(const NewOptions& options, Progress& progress)
{
    DocumentSource source(options.document, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    source.Create();
    for (const LibraryPlace& place : source.GetLibraryPlaces()) {
        if (!du::FileSystem::FileReadable(place.path)) {
            progress.Tell(Printable(place.name) + ": error: the library is missing or cannot be read. Name another "
                                                  "one with --library.\n");
            return ExitCode::InputUnreadable;
        }
    }
    source.GetDocument().SetCamera(FrontCamera());
    if (!options.product.model.empty() && !PutProduct(options.product, source)) {
        return ExitCode::InputUnreadable;
    }
    FitCamera(source);
    for (const std::string& page : options.pages) {
        const PaperSize size = *ParsePaperSize(page);
        source.GetDocument().AddPage({size.width, size.height});
    }
    return source.Save(options.output);
}

} // namespace

void AddDocumentNew(CLI::App& document, Invocation& invocation)
{
    CLI::App& verb = *document.add_subcommand("new", "Make a document with a product, a view of it, and pages");
    const auto options = std::make_shared<NewOptions>();
    CLI::Option* const model =
        verb.add_option("MODEL", options->product.model, "The product: a model as " + std::string(kModelFormats))
            ->type_name("");
    AddOutputOption(verb, options->output, "DOC.luz");
    verb.add_option("--page", options->pages,
                    "A page: a4, a3-landscape and so on, or WxH in millimetres; may be repeated")
        ->allow_extra_args(false)
        ->check(FaultOfPaper)
        ->type_name("SIZE");
    AddProductOptions(verb, options->product, model);
    AddDocumentLibraryOptions(verb, options->document, true);
    verb.footer(
        "The document has one view, in which the product and symbols stand in space, and as many pages as you\n"
        "ask for. It remembers its libraries, by paths that are relative to it, so that later verbs find them.\n\n"
        "Examples:\n"
        "  lusym document new gearbox.glb -o manual.luz\n"
        "  lusym document new -o manual.luz --page a4 --page a4-landscape\n"
        "  lusym document new -o manual.luz --page 210x297 --library SymbolsLibrary/PartSymbolLibrary.xml\n\n"
        "Exit codes: 0 written; 3 MODEL, TREE or a library is unreadable; 4 DOC.luz is not writable.\n");
    verb.callback(
        [options, &invocation] { invocation = [options](Progress& progress) { return RunNew(*options, progress); }; });
}

} // namespace lusym
