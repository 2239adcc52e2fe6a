#include "DocumentSource.h"
#include "EntryIndex.h"
#include "FileText.h"
#include "Finding.h"
#include "Invocation.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolPlacing.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <utility>

namespace lusym
{

namespace
{

struct PlaceOptions {
    DocumentOptions document;
    std::string name;
    std::string output;
    std::string from;
    bool isQuiet = false;
    PlacementLine single;
};

bool ReadOrders(const PlaceOptions& options, std::vector<PlacementLine>& lines, Progress& progress)
{
    if (options.from.empty()) {
        lines.push_back(options.single);
        return true;
    }
    std::string text;
    std::string error;
    const bool isRead = options.from == "-" ? ReadStandardInput(text, error) : ReadFileText(options.from, text, error);
    if (isRead) {
        lines = ReadPlacements(text, error);
    }
    if (!error.empty()) {
        progress.Tell(Printable(options.from) + ": error: the placements cannot be read: " + error + ".\n");
    }
    return error.empty();
}

/// Where an order stands, for a message.
std::string PlaceOfOrder(const PlaceOptions& options, const PlacementLine& line)
{
    return options.from.empty() ? Printable(options.name)
                                : Printable(options.from) + ":" + std::to_string(line.order.line);
}

ExitCode Judge(const std::vector<PlacementResult>& results)
{
    const auto hasFailed = [](const PlacementResult& result) { return !result.error.empty(); };
    if (std::ranges::none_of(results, hasFailed)) {
        return ExitCode::Done;
    }
    return std::ranges::all_of(results, hasFailed) ? ExitCode::Failed : ExitCode::PartOfBatchFailed;
}

/// The new ids; where the document itself goes to standard output they must not.
ExitCode PutIds(const std::vector<PlacementResult>& results, const PlaceOptions& options, Progress& progress)
{
    std::string ids;
    std::size_t placed = 0;
    for (const PlacementResult& result : results) {
        ids += result.error.empty() ? Printable(result.id) + "\n" : std::string();
        placed += result.error.empty() ? 1U : 0U;
    }
    if (options.isQuiet) {
        progress.Tell(Printable(options.name) + ": " + CountOf(placed, "symbol", "symbols") + " placed.\n");
        return ExitCode::Done;
    }
    if (OutputFile::IsStandardOutput(options.output)) {
        progress.Tell(ids);
        return ExitCode::Done;
    }
    return PutResult(ids, progress);
}

ExitCode PlaceInto(DocumentSource& source, const PlaceOptions& options, const std::vector<PlacementLine>& lines)
{
    Progress& progress = source.GetProgress();
    std::vector<LibraryReading> libraries;
    const ExitCode read = ReadLibraries(source, libraries);
    if (read != ExitCode::Done && source.AreLibrariesChosen()) {
        return read;
    }
    progress.Step("placing symbols");
    const std::vector<PlacementResult> results = PlaceSymbols(source, lines, libraries);
    for (std::size_t index = 0; index < results.size(); ++index) {
        if (!results[index].error.empty()) {
            progress.Tell(PlaceOfOrder(options, lines[index]) + ": error: " + results[index].error +
                          (results[index].error.ends_with('?') ? "\n" : ".\n"));
        }
    }
    const ExitCode judgement = Judge(results);
    if (judgement == ExitCode::Failed || results.empty()) {
        return judgement;
    }
    const ExitCode saved = source.Save(options.output);
    const ExitCode told = saved == ExitCode::Done ? PutIds(results, options, progress) : saved;
    return told == ExitCode::Done ? judgement : told;
}

ExitCode RunPlace(const PlaceOptions& options, Progress& progress)
{
    std::vector<PlacementLine> lines;
    if (!ReadOrders(options, lines, progress)) {
        return ExitCode::InputUnreadable;
    }
    return WorkOnDocument(options.document, options.name, progress,
                          [&](DocumentSource& source) { return PlaceInto(source, options, lines); });
}

/// The options of one symbol, each of which is a field of an order too.
class SingleOptions
{
public:
    explicit SingleOptions(CLI::App& verb)
    {
        Add(verb, "entry", "ID", "The library entry; \"lusym library list\" lists them");
        Add(verb, "at", "X,Y[,Z]",
            "Centre: on a page in millimetres from its lower left corner; over the view in its units; in pixels "
            "with --screen-space. The origin of a shape (default: the middle of the first part of --attach)");
        m_attachOption = verb.add_option("--attach", *m_attach,
                                         "Attach a shape to this part, by path, id or name; may be repeated. It moves "
                                         "and hides with the part")
                             ->allow_extra_args(false)
                             ->type_name("PART");
        Add(verb, "page", "N", "On this page, from 1 (default: over the view)");
        Add(verb, "size", "W,H",
            "Size that is seen; W or ,H alone keep the picture's shape (default: the picture's own, at 96 pixels "
            "an inch on a page and pixel by pixel over the view)");
        Add(verb, "rotate", "DEGREES",
            "Turn a picture clockwise, by a multiple of 90; a shape around an axis: z,30 or 0,0,1,30");
        Add(verb, "scale", "S", "Size of a shape, times that of its entry");
        Add(verb, "color", "COLOR", "Colour of a shape: #rrggbb, or a name such as red (default: its own)");
        Add(verb, "flip", "h|v|hv", "Flip horizontally, vertically, or both");
        Add(verb, "title", "TEXT", "A title of its own; the symbol then follows no entry");
        Add(verb, "description", "TEXT", "A description of its own; the symbol then follows no entry");
        Add(verb, "frame", "COLOR", "Colour of the frame: #rrggbb, #rrggbbaa, or a name such as red (default: none)");
        Add(verb, "fill", "COLOR", "Colour behind the picture (default: none)");
        AddFlag(verb, "fixed", "--fixed", "true", "Over the view: stand in space (default: as the entry says)");
        AddFlag(verb, "fixed", "--billboard", "false", "Over the view: keep facing the viewer");
        AddFlag(verb, "screen-space", "--screen-space", "true",
                "Over the view: stay on the screen, whatever the camera");
    }

    bool IsAnyGiven() const
    {
        return m_attachOption->count() != 0 ||
               std::ranges::any_of(m_fields, [](const Field& field) { return field.option->count() != 0; });
    }

    PlacementOrder Parse() const
    {
        PlacementOrder order;
        std::string error;
        for (const Field& field : m_fields) {
            if (field.option->count() != 0 && !SetPlacement(order, field.name, *field.value, error)) {
                break;
            }
        }
        for (const std::string& part : *m_attach) {
            if (error.empty()) {
                SetPlacement(order, "attach", part, error);
            }
        }
        if (!error.empty() || !IsComplete(order, error)) {
            throw CLI::ValidationError("--" + error);
        }
        return order;
    }

private:
    struct Field {
        std::string name;
        std::shared_ptr<std::string> value;
        CLI::Option* option;
    };

    void Add(CLI::App& verb, const std::string& name, const std::string& typeName, const std::string& help)
    {
        const auto value = std::make_shared<std::string>();
        m_fields.push_back({name, value, verb.add_option("--" + name, *value, help)->type_name(typeName)});
    }

    void AddFlag(CLI::App& verb, const std::string& name, const std::string& flag, const std::string& value,
                 const std::string& help)
    {
        m_fields.push_back({name, std::make_shared<std::string>(value), verb.add_flag(flag, help)});
    }

    std::vector<Field> m_fields;
    std::shared_ptr<std::vector<std::string>> m_attach = std::make_shared<std::vector<std::string>>();
    CLI::Option* m_attachOption = nullptr;
};

} // namespace

void AddSymbolPlace(CLI::App& symbol, Invocation& invocation)
{
    CLI::App& verb = *symbol.add_subcommand("place", "Place symbols of a library on pages and over the view");
    const auto options = std::make_shared<PlaceOptions>();
    AddDocumentArgument(verb, options->name);
    const auto single = std::make_shared<SingleOptions>(verb);
    const CLI::Option* const from =
        verb.add_option("--from", options->from, "Several symbols, one on each line of a file; - for standard input")
            ->type_name("FILE");
    verb.add_flag("-q,--quiet", options->isQuiet, "Tell how many were placed instead of their ids");
    AddDocumentLibraryOptions(verb, options->document);
    AddDocumentOutputOption(verb, options->output);
    verb.footer(
        "The picture or the shape is copied into DOC, and so is the entry, so that DOC needs nothing beside it. A\n"
        "shape stands in the view, by its own origin, and follows the parts that it is attached to. The symbol\n"
        "follows its entry (see \"lusym document update\") unless it has a title or a description of its own.\n"
        "The new ids go to stdout, one on each line.\n\n"
        "FILE is a table whose first line names the columns, or JSON: an array of objects, or one on each line.\n"
        "Columns and fields are called as the options are, without \"--\"; x, y, z, width and height are known too.\n\n"
        "Examples:\n"
        "  lusym symbol place manual.luz --entry img-warning-hot --page 1 --at 40,250 --size 25\n"
        "  lusym symbol place manual.luz --entry img-arrow-straight --at -10,5,120 --rotate 90 --library lib.xml\n"
        "  lusym symbol place manual.luz --entry shp-arrow --attach /housing/cover --rotate y,90 --color red\n"
        "  printf 'entry,page,x,y,width\\nimg-step-1,1,20,270,12\\nimg-step-2,1,20,240,12\\n' |\n"
        "      lusym symbol place manual.luz --from -\n\n"
        "Exit codes: 0 placed; 1 nothing was placed; 3 DOC, FILE or a library is unreadable; 4 not writable; 5 a\n"
        "library is none; 6 some symbols were placed, others not. But for 0 and 6, DOC is as it was.\n");
    verb.callback([options, single, from, &invocation] {
        if (from->count() != 0 && single->IsAnyGiven()) {
            throw CLI::ValidationError("--from: takes the place of --entry, --at and all that belongs to one symbol");
        }
        if (from->count() == 0) {
            options->single.order = single->Parse();
        }
        invocation = [options](Progress& progress) { return RunPlace(*options, progress); };
    });
}

} // namespace lusym
