#include "DocumentSource.h"
#include "DocumentUpdate.h"
#include "EntryIndex.h"
#include "FileText.h"
#include "Finding.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "Reattachment.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace lusym
{

namespace
{

struct UpdateOptions {
    DocumentOptions document;
    std::string name;
    std::string output;
    bool isDryRun = false;
    bool isToReattach = false;
    bool asJson = false;
};

/// What the verb has done to the open document.
struct Work {
    DocumentUpdate update;
    std::vector<Reattachment> reattached;
    bool isMoved = false; ///< other libraries are recorded than before

    bool IsEmpty() const
    {
        return update.IsEmpty() && !isMoved &&
               std::ranges::all_of(reattached, &std::string::empty, &Reattachment::heir);
    }
};

ExitCode PutReport(const UpdateOptions& options, const Work& work, bool isWritten, Progress& progress)
{
    std::string report;
    if (options.asJson) {
        nlohmann::ordered_json json = {{"file", options.name}, {"written", isWritten}};
        json.update(UpdateAsJson(work.update));
        json["reattached"] = ReattachmentsAsJson(work.reattached);
        report = JsonText(json);
    } else {
        report = UpdateAsText(work.update, options.name) + ReattachmentsAsText(work.reattached, options.name);
    }
    // Where the document itself goes to standard output the report must not.
    if (isWritten && OutputFile::IsStandardOutput(options.output)) {
        progress.Tell(report);
        return ExitCode::Done;
    }
    return PutResult(report, progress);
}

std::string Summary(const DocumentUpdate& update, bool isWritten)
{
    if (!update.conflicts.empty()) {
        return "nothing is taken over and nothing written";
    }
    if (update.IsEmpty()) {
        return std::string("no entry has changed") + (isWritten ? "" : "; nothing is written");
    }
    return CountOf(update.symbols.size(), "symbol follows ", "symbols follow ") +
           CountOf(update.entries.size(), "changed entry", "changed entries") +
           (isWritten ? "" : "; nothing is written");
}

ExitCode UpdateOpened(const UpdateOptions& options, DocumentSource& source, Progress& progress)
{
    if (source.GetLibraryPlaces().empty() && !options.isToReattach) {
        progress.Tell(Printable(options.name) + ": error: the document records no library. Name one with --library.\n");
        return ExitCode::Usage;
    }
    std::vector<LibraryReading> libraries;
    const ExitCode read = ReadLibraries(source, libraries);
    if (read != ExitCode::Done) {
        return read;
    }
    progress.Step("updating symbols");
    Work work;
    if (!libraries.empty()) {
        work.update = UpdateDocument(source, libraries);
        work.isMoved = source.RecordOnly(source.GetLibraryPlaces());
    }
    const DocumentUpdate& update = work.update;
    for (const std::string& conflict : update.conflicts) {
        progress.Tell(Printable(options.name) + ": error: " + conflict + ".\n");
    }
    if (options.isToReattach && update.conflicts.empty()) {
        work.reattached = ReattachSymbols(source.GetDocument(), source.GetLostAttachments());
    }
    const bool isToWrite = !options.isDryRun && update.conflicts.empty() && !work.IsEmpty();
    const ExitCode reported = PutReport(options, work, isToWrite, progress);
    if (reported != ExitCode::Done) {
        return reported;
    }
    progress.Tell(Printable(options.name) + ": " + Summary(update, isToWrite) + ".\n");
    if (!update.conflicts.empty()) {
        return ExitCode::Findings;
    }
    return isToWrite ? source.Save(options.output) : ExitCode::Done;
}

ExitCode RunUpdate(const UpdateOptions& options, Progress& progress)
{
    return WorkOnDocument(options.document, options.name, progress,
                          [&](DocumentSource& source) { return UpdateOpened(options, source, progress); });
}

} // namespace

void AddDocumentUpdate(CLI::App& document, Invocation& invocation)
{
    CLI::App& verb = *document.add_subcommand("update", "Let placed symbols follow changed library entries");
    const auto options = std::make_shared<UpdateOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_flag("--dry-run", options->isDryRun, "Report only");
    verb.add_flag("--json", options->asJson, "The report as JSON");
    verb.add_flag("--reattach", options->isToReattach,
                  "Put 3D symbols whose part is not there on the part that is called alike and is nearest");
    AddDocumentLibraryOptions(verb, options->document);
    AddDocumentOutputOption(verb, options->output);
    verb.footer(
        "Each symbol takes over its entry's name, title, description, tooltip flags, tags, and picture or shape. A "
        "new\n"
        "picture keeps the symbol's width; the height follows. A new shape stands where the old one did. Place, turns, "
        "flips and colours stay, and so do symbols whose\n"
        "entry is gone or that follow none. What was taken over is told on stdout, symbol by symbol. When nothing has\n"
        "changed nothing is written. The libraries of --library are those that the document records from then on.\n\n"
        "Examples:\n"
        "  lusym document update manual.luz --dry-run\n"
        "  lusym document update manual.luz --library SymbolsLibrary/PartSymbolLibrary.xml --lang de -o "
        "manual-de.luz\n\n"
        "Exit codes: 0 done; 2 the document records no library and none is named; 3 DOC or a library is unreadable;\n"
        "4 not writable; 5 names or pictures get into each other's way, or a library is none; 6 some of the libraries\n"
        "could not be read. But for 0, DOC is as it was.\n");
    verb.callback([options, &invocation] {
        invocation = [options](Progress& progress) { return RunUpdate(*options, progress); };
    });
}

} // namespace lusym
