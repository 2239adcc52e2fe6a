#include "DocumentDrawing.h"
#include "DocumentFlattening.h"
#include "DocumentSource.h"
#include "Finding.h"
#include "Invocation.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "TextValues.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct FlattenOptions {
    std::string name;
    std::string output;
    std::string paper = "a4-landscape";
    std::optional<PictureFormat> format; ///< none for a document
};

ExitCode PutPicture(const FlattenOptions& options, DocumentSource& source)
{
    Progress& progress = source.GetProgress();
    DrawingOptions drawing;
    drawing.page = 1;
    std::string bytes;
    std::string error;
    if (!DrawDocument(source.GetDocument(), drawing, *options.format, bytes, error)) {
        progress.Tell(Printable(options.name) + ": error: the page cannot be drawn: " + Printable(error) +
                      ". Ask for another size with --page.\n");
        return ExitCode::Failed;
    }
    OutputFile file(options.output);
    progress.Clear();
    if (!file.Write(bytes) || !file.Commit()) {
        progress.Tell("lusym: " + file.GetError() + "\n");
        return ExitCode::OutputNotWritable;
    }
    return ExitCode::Done;
}

ExitCode Flatten(const FlattenOptions& options, DocumentSource& source)
{
    Progress& progress = source.GetProgress();
    const PaperSize paper = *ParsePaperSize(options.paper);
    progress.Step("flattening " + options.name);
    FlattenedView view;
    if (!view.Read(source, {paper.width, paper.height})) {
        progress.Tell(Printable(options.name) + ": error: the view has no pixels to be drawn on. Make the document "
                                                "anew with \"lusym document new\".\n");
        return ExitCode::Failed;
    }
    source.Create();
    const std::size_t count = view.PutOnPage(source);
    const ExitCode written = options.format ? PutPicture(options, source) : source.Save(options.output);
    if (written == ExitCode::Done) {
        progress.Tell(Printable(options.name) + ": " + CountOf(count, "symbol", "symbols") + " on the page.\n");
    }
    return written;
}

ExitCode RunFlatten(const FlattenOptions& options, Progress& progress)
{
    if (OutputFile::IsFile(options.output, options.name)) {
        progress.Tell("lusym: " + Printable(options.output) +
                      " is the document, which the page would replace. Name another file with -o.\n");
        return ExitCode::Usage;
    }
    return WorkOnDocument({}, options.name, progress, [&](DocumentSource& source) { return Flatten(options, source); });
}

std::string FaultOfPaper(const std::string& text)
{
    return ParsePaperSize(text) ? std::string()
                                : Quote(text) + " is no paper. Write a4, a3-landscape, or 210x297 in millimetres";
}

} // namespace

void AddFlatten(CLI::App& program, Invocation& invocation)
{
    CLI::App& verb = *program.add_subcommand("flatten", "Bake the view of a document into a 2D drawing");
    const auto options = std::make_shared<FlattenOptions>();
    AddDocumentArgument(verb, options->name);
    AddOutputOption(verb, options->output, "PAGE");
    const auto format = std::make_shared<std::string>();
    CLI::Option* const formatOption =
        verb.add_option("--format", *format, "luz, svg, pdf or png (default: by the ending of PAGE)")
            ->check(CLI::IsMember({"luz", "svg", "pdf", "png"}).description(""))
            ->type_name("FORMAT");
    verb.add_option("--page", options->paper,
                    "The sheet, on which the view is as large as it fits: a4, a3-landscape and so on, or WxH in "
                    "millimetres (default: a4-landscape)")
        ->check(FaultOfPaper)
        ->type_name("SIZE");
    verb.footer(
        "PAGE.luz is a document with one page and no product: symbols over the view become symbols on the page,\n"
        "which go on following their entries, and 3D symbols leave their words and their place. What is hidden stays\n"
        "behind.\n\n"
        "Examples:\n"
        "  lusym flatten manual.luz -o page.luz\n"
        "  lusym flatten manual.luz -o page.svg --page a3-landscape\n\n"
        "Exit codes: 0 done; 1 it cannot be drawn; 2 PAGE is DOC, or its ending is no format; 3 DOC is unreadable;\n"
        "4 PAGE is not writable.\n");
    verb.callback([options, format, formatOption, &invocation] {
        const std::size_t dot = options->output.rfind('.');
        const std::string ending = dot == options->output.npos ? std::string() : options->output.substr(dot + 1);
        const std::string word = formatOption->count() != 0 ? *format : CLI::detail::to_lower(ending);
        options->format = FindPictureFormat(word);
        if (!options->format && word != "luz") {
            throw CLI::ValidationError("--format", "say luz, svg, pdf or png, since the ending of " +
                                                       Quote(options->output) + " is none of them");
        }
        invocation = [options](Progress& progress) { return RunFlatten(*options, progress); };
    });
}

} // namespace lusym
