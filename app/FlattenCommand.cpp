#include "DocumentDrawing.h"
#include "DocumentFlattening.h"
#include "DocumentSource.h"
#include "Finding.h"
#include "Invocation.h"
#include "OutputFile.h"
#include "PictureSeries.h"
#include "Printable.h"
#include "Progress.h"
#include "TextValues.h"
#include "ValueOptions.h"

#include <CLI/CLI.hpp>

#include <map>
#include <memory>
#include <utility>

namespace lusym
{

namespace
{

struct FlattenOptions {
    std::string name;
    std::string output;
    std::string paper = "a4-landscape";
    std::optional<PictureFormat> format; ///< none for a document
    ViewPicture view;
};

ExitCode PutPicture(const FlattenOptions& options, DocumentSource& source)
{
    Progress& progress = source.GetProgress();
    luhost::render::Drawing drawing = DrawPageOf(source.GetDocument(), 1);
    drawing.title = DrawingTitle(source.GetDocument(), "page 1");
    std::string bytes;
    std::string error;
    if (!WriteDrawing(drawing, *options.format, 0, 0, bytes, error)) {
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
    std::string error;
    if (!view.Read(source, {paper.width, paper.height, options.view}, error)) {
        progress.Tell(Printable(options.name) + ": error: the view cannot be drawn: " + Printable(error) + ".\n");
        return ExitCode::Failed;
    }
    for (const std::string& problem : view.GetProblems()) {
        progress.Tell(Printable(options.name) + ":" + Printable(problem) + ". It is not drawn.\n");
    }
    source.Create();
    const std::size_t count = view.PutOnPage(source);
    const ExitCode written = options.format ? PutPicture(options, source) : source.Save(options.output);
    if (written == ExitCode::Done) {
        const std::size_t lines = view.CountLines();
        progress.Tell(Printable(options.name) + ": " + CountOf(count, "symbol", "symbols") +
                      (lines == 0 ? "" : " and " + CountOf(lines, "line", "lines")) + " on the page.\n");
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

void AddViewOptions(CLI::App& verb, FlattenOptions& options)
{
    using luhost::render::UpAxis;
    std::map<std::string, std::optional<luhost::render::StandardView>> views;
    const std::vector<std::string_view> names = ViewNames();
    for (const std::string_view name : names) {
        views.emplace(name, luhost::render::StandardViewOf(name));
    }
    AddChoice(verb, "--view", options.view.view,
              "The side from which the product is seen: " + CLI::detail::join(names, ", ") +
                  "; each but saved, the camera of the document, shows everything (default: saved)",
              std::move(views))
        ->type_name("NAME");
    AddChoice<UpAxis>(verb, "--up", options.view.up, "Which way is up in the product, y or z (default: y)",
                      {{"y", UpAxis::Y}, {"z", UpAxis::Z}})
        ->type_name("AXIS");
    verb.add_flag("--fit", options.view.isFitted, "Show everything with the saved camera too, as large as it fits");
    verb.add_flag("--hidden-lines", options.view.look.showsHiddenLines,
                  "Draw lines that are hidden too, dashed (default: they are left out)");
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
    AddViewOptions(verb, *options);
    verb.footer(
        "PAGE.luz is a document with one page and no product: the lines of the parts that are seen become lines on\n"
        "the page, symbols over the view become symbols on the page, which go on following their entries, and 3D\n"
        "symbols leave their lines, their words and their place. What is hidden stays behind.\n\n"
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
