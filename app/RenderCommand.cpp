#include "DocumentDrawing.h"
#include "DocumentSource.h"
#include "Invocation.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolState.h"
#include "TextValues.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

namespace lusym
{

namespace
{

constexpr std::string_view kPageWord = "{page}";

struct RenderOptions {
    std::string name;
    std::string output;
    std::optional<PictureFormat> format;
    DrawingOptions drawing;
    bool isPageGiven = false;
};

std::optional<PictureFormat> FormatOfName(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    return FindPictureFormat(CLI::detail::to_lower(dot == name.npos ? std::string() : name.substr(dot + 1)));
}

void TellPictureProblems(const std::vector<SymbolState>& states, const std::string& name, Progress& progress)
{
    for (const SymbolState& state : states) {
        if (state.isPicture && !state.fileProblem.empty()) {
            progress.Tell(Printable(name) + ":" + Printable(state.id) + ": warning: the picture " + Quote(state.file) +
                          " cannot be shown: " + Printable(state.fileProblem) +
                          ". The symbol is drawn as a crossed box.\n");
        }
    }
}

class Renderer
{
public:
    Renderer(const RenderOptions& options, DocumentSource& source, Progress& progress)
        : m_options(options), m_document(source.GetDocument()), m_progress(progress)
    {
    }

    ExitCode Run()
    {
        const std::vector<SymbolState> states = StatesOf(m_document);
        TellPictureProblems(states, m_options.name, m_progress);
        const bool isViewEmpty = std::ranges::count(states, 0, &SymbolState::page) == 0;
        const auto pages = static_cast<int>(m_document.GetPageCount());
        if (m_options.output.find(kPageWord) != std::string::npos && !m_options.isPageGiven) {
            return RenderAll(pages);
        }
        DrawingOptions drawing = m_options.drawing;
        drawing.page = m_options.isPageGiven ? drawing.page : pages > 0 && isViewEmpty ? 1 : 0;
        if (drawing.page > pages) {
            m_progress.Tell(Printable(m_options.name) + ": error: there is no page " + std::to_string(drawing.page) +
                            "; the document has " + std::to_string(pages) + ". Name another one with --page.\n");
            return ExitCode::Failed;
        }
        return Render(drawing, m_options.output);
    }

private:
    ExitCode RenderAll(int pages)
    {
        if (pages == 0) {
            m_progress.Tell(Printable(m_options.name) +
                            ": error: the document has no page. Leave {page} out to get the view.\n");
            return ExitCode::Failed;
        }
        for (int page = 1; page <= pages; ++page) {
            DrawingOptions drawing = m_options.drawing;
            drawing.page = page;
            std::string output = m_options.output;
            output.replace(output.find(kPageWord), kPageWord.size(), std::to_string(page));
            m_progress.Step("drawing", static_cast<std::size_t>(page) - 1, static_cast<std::size_t>(pages));
            const ExitCode rendered = Render(drawing, output);
            if (rendered != ExitCode::Done) {
                return rendered;
            }
        }
        return ExitCode::Done;
    }

    ExitCode Render(const DrawingOptions& drawing, const std::string& output)
    {
        m_progress.Step("writing " + output);
        std::string bytes;
        std::string error;
        if (!DrawDocument(m_document, drawing, *m_options.format, bytes, error)) {
            m_progress.Tell(Printable(m_options.name) + ": error: " + PageText(drawing.page) +
                            " cannot be drawn: " + Printable(error) + ". Ask for another size with --size.\n");
            return ExitCode::Failed;
        }
        OutputFile file(output);
        m_progress.Clear();
        if (!file.Write(bytes) || !file.Commit()) {
            m_progress.Tell("lusym: " + file.GetError() + "\n");
            return ExitCode::OutputNotWritable;
        }
        return ExitCode::Done;
    }

    const RenderOptions& m_options;
    const luhost::Document& m_document;
    Progress& m_progress;
};

ExitCode RunRender(const RenderOptions& options, Progress& progress)
{
    if (OutputFile::IsFile(options.output, options.name)) {
        progress.Tell("lusym: " + Printable(options.output) +
                      " is the document, which the picture would replace. Name another file with -o.\n");
        return ExitCode::Usage;
    }
    return WorkOnDocument({}, options.name, progress,
                          [&](DocumentSource& source) { return Renderer(options, source, progress).Run(); });
}

/// "800x600", "800" or "x600"
std::string TakeSize(const std::string& text, DrawingOptions& drawing)
{
    constexpr double kLargest = 65536.0;
    const std::vector<double> sides = ParseNumbers(text, 'x', true);
    const auto isSide = [](double side) { return !(side < 1.0) && !(side > kLargest) && !(std::floor(side) < side); };
    const bool isSize = !sides.empty() && sides.size() <= 2 && std::ranges::all_of(sides, isSide) &&
                        std::ranges::any_of(sides, [](double side) { return side >= 1.0; });
    if (!isSize) {
        return Quote(text) + " is no size. Write WxH, W or xH, in pixels";
    }
    drawing.pixelWidth = sides[0] >= 1.0 ? static_cast<int>(sides[0]) : 0;
    drawing.pixelHeight = sides.size() == 2 && sides[1] >= 1.0 ? static_cast<int>(sides[1]) : 0;
    return {};
}

std::string TakeBackground(const std::string& text, DrawingOptions& drawing)
{
    const std::optional<dg::Color> color = ParseColor(text);
    drawing.background = color.value_or(drawing.background);
    return color ? std::string() : Quote(text) + " is no colour. Write #rrggbb, #rrggbbaa, or one of " + ColorNames();
}

void AddDrawingOptions(CLI::App& verb, const std::shared_ptr<RenderOptions>& options)
{
    verb.add_option_function<std::string>(
            "--size",
            [options](const std::string& text) {
                const std::string fault = TakeSize(text, options->drawing);
                if (!fault.empty()) {
                    throw CLI::ValidationError("--size", fault);
                }
            },
            "Size in pixels, of a PNG picture and of the view; W or xH alone keep the shape (default: the view's own, "
            "96 pixels an inch for a page)")
        ->type_name("WxH");
    verb.add_option_function<std::string>(
            "--background",
            [options](const std::string& text) {
                const std::string fault = TakeBackground(text, options->drawing);
                if (!fault.empty()) {
                    throw CLI::ValidationError("--background", fault);
                }
            },
            "Colour behind everything, such as white (default: none)")
        ->type_name("COLOR");
}

} // namespace

void AddRender(CLI::App& program, Invocation& invocation)
{
    CLI::App& verb = *program.add_subcommand("render", "Draw a page or the view of a document as SVG, PDF or PNG");
    const auto options = std::make_shared<RenderOptions>();
    AddDocumentArgument(verb, options->name);
    AddOutputOption(verb, options->output, "PICTURE");
    const auto format = std::make_shared<PictureFormat>();
    const CLI::Option* const formatOption =
        verb.add_option("--format", *format, "svg, pdf or png (default: by the ending of PICTURE)")
            ->transform(CLI::CheckedTransformer(PictureFormats(), CLI::ignore_case).description(""))
            ->type_name("FORMAT");
    const CLI::Option* const page =
        verb.add_option("--page", options->drawing.page,
                        "This page, from 1 (default: the view, or page 1 when nothing stands over the view)")
            ->check(CLI::Range(1, 1000000).description(""))
            ->type_name("N");
    AddDrawingOptions(verb, options);
    verb.footer(
        "With {page} in the name of PICTURE all pages are drawn, each into a file of its own. SVG and PDF keep\n"
        "vector pictures as vectors; in SVG titles and descriptions are tooltips, and data-annotation tells the\n"
        "symbol's id. A symbol whose picture cannot be shown is drawn as a crossed box and told on stderr.\n\n"
        "Examples:\n"
        "  lusym render manual.luz -o page.svg --page 1\n"
        "  lusym render manual.luz -o 'page-{page}.pdf'\n"
        "  lusym render manual.luz -o view.png --size 1920x1080 --background white\n"
        "  lusym render manual.luz -o - --format png --page 2 | display\n\n"
        "Exit codes: 0 drawn; 1 there is no such page, or it cannot be drawn; 2 PICTURE is DOC, or its ending is\n"
        "no format; 3 DOC is unreadable; 4 PICTURE is not writable.\n");
    verb.callback([options, format, formatOption, page, &invocation] {
        options->isPageGiven = page->count() != 0;
        options->format = formatOption->count() != 0 ? std::optional(*format) : FormatOfName(options->output);
        if (!options->format) {
            throw CLI::ValidationError("--format", "say svg, pdf or png, since the ending of " +
                                                       Quote(options->output) + " is none of them");
        }
        invocation = [options](Progress& progress) { return RunRender(*options, progress); };
    });
}

} // namespace lusym
