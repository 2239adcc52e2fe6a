#include "FileText.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "LibraryMerge.h"
#include "LibraryWriting.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <memory>
#include <system_error>

namespace lusym
{

namespace
{

struct MergeOptions {
    LibraryOptions library;
    std::vector<std::string> files;
    std::string output;
    bool isDryRun = false;
    bool asJson = false;
    bool copyFiles = false;
};

/// Reads every input as a library of the output's kind, so that the merged one names all files as its own.
std::vector<LibraryReading> ReadInputs(const MergeOptions& options, const LibraryPlace& output, LibrarySource& source,
                                       Progress& progress)
{
    std::vector<LibraryReading> readings;
    for (const std::string& file : options.files) {
        progress.Step("reading", readings.size(), options.files.size());
        LibraryPlace place = FindLibraryPlace(file, options.library);
        place.origin = output.origin;
        readings.push_back(source.Read(place));
        TellEffects(readings.back(), progress);
    }
    return readings;
}

ExitCode JudgeInputs(const std::vector<LibraryReading>& readings, Progress& progress)
{
    std::size_t failed = 0;
    for (const LibraryReading& reading : readings) {
        failed += reading.isReadable && reading.examination.isRead ? 0 : 1;
    }
    if (failed == 0) {
        return ExitCode::Done;
    }
    progress.Tell("lusym: " + std::to_string(failed) + " of " + CountOf(readings.size(), "library", "libraries") +
                  " could not be read, so nothing is written.\n");
    return JudgeReadings(readings);
}

std::string AboutFiles(const Merge& merge, const MergeOptions& options)
{
    const std::size_t count = merge.CountFiles(&MergedFile::IsToBring);
    if (count == 0) {
        return std::string();
    }
    const std::string files = CountOf(count, "file", "files");
    if (options.isDryRun || options.copyFiles) {
        return files + (options.copyFiles && !options.isDryRun ? " brought along\n" : " to bring along\n");
    }
    return files + " to bring along by hand, or with --copy-files\n";
}

ExitCode PutReport(const Merge& merge, const MergeOptions& options, Progress& progress)
{
    const std::string report =
        options.asJson ? JsonText(MergeAsJson(merge)) : MergeAsText(merge) + AboutFiles(merge, options);
    // Where the library itself goes to standard output the report must not.
    if (OutputFile::IsStandardOutput(options.output)) {
        progress.Tell(report);
        return ExitCode::Done;
    }
    return PutResult(report, progress);
}

bool CopyOne(const MergedFile& file, std::string& error)
{
    std::error_code failure;
    std::filesystem::create_directories(std::filesystem::path(file.target).parent_path(), failure);
    if (failure) {
        error = Printable(file.target) + ": its folder cannot be made: " + failure.message();
        return false;
    }
    OutputFile target(file.target);
    const bool isCopied = ReadFileBlocks(
        file.source, [&target](std::string_view block) { return target.Write(block); }, error);
    if (!error.empty()) {
        error = Printable(file.source) + " " + error;
        return false;
    }
    if (!isCopied || !target.Commit()) {
        error = target.GetError();
        return false;
    }
    return true;
}

bool CopyFiles(const Merge& merge, Progress& progress, std::string& error)
{
    std::size_t done = 0;
    for (const MergedFile& file : merge.files) {
        progress.Step("copying files", done++, merge.files.size());
        if (file.IsToBring() && !CopyOne(file, error)) {
            return false;
        }
    }
    return true;
}

ExitCode WriteMerged(const Merge& merge, const MergeOptions& options, Progress& progress)
{
    std::string error;
    if (options.copyFiles && !CopyFiles(merge, progress, error)) {
        progress.Tell("lusym: " + error + "\n");
        return ExitCode::OutputNotWritable;
    }
    return PutLibrary(merge.content, false, options.output, progress);
}

LibraryPlace PlaceOfOutput(const MergeOptions& options)
{
    LibraryOptions own;
    own.origin = options.library.origin;
    LibraryPlace place = FindLibraryPlace(options.output, own);
    if (OutputFile::IsStandardOutput(options.output)) {
        place.root.clear();
        place.origin =
            own.origin == "delivered" ? LibraryPlace::Origin::ORIGIN_OOTB : LibraryPlace::Origin::ORIGIN_USER;
    }
    return place;
}

ExitCode RunMerge(const MergeOptions& options, Progress& progress)
{
    LibrarySource source(options.library, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    const LibraryPlace place = PlaceOfOutput(options);
    const std::vector<LibraryReading> readings = ReadInputs(options, place, source, progress);
    const ExitCode judgement = JudgeInputs(readings, progress);
    if (judgement != ExitCode::Done) {
        return judgement;
    }
    const Merge merge = MergeLibraries(readings, place);
    const ExitCode reported = PutReport(merge, options, progress);
    if (reported != ExitCode::Done) {
        return reported;
    }
    if (merge.CountFiles(&MergedFile::HasRival) != 0 && options.copyFiles) {
        progress.Tell("lusym: files that differ would have one place, so nothing is written. Rename one of each.\n");
        return ExitCode::Findings;
    }
    return options.isDryRun ? ExitCode::Done : WriteMerged(merge, options, progress);
}

} // namespace

void AddLibraryMerge(CLI::App& library, Invocation& invocation)
{
    CLI::App& verb = *library.add_subcommand("merge", "Make one library of several");
    const auto options = std::make_shared<MergeOptions>();
    verb.add_option("LIB.xml", options->files, "The libraries, the most important one first")->required();
    AddOutputOption(verb, options->output, "OUT.xml");
    verb.add_flag("--dry-run", options->isDryRun, "Report only");
    verb.add_flag("--json", options->asJson, "The report as JSON");
    verb.add_flag("--copy-files", options->copyFiles,
                  "Bring pictures and shapes into the folders of OUT.xml's library");
    AddLibraryOptions(verb, options->library, false);
    verb.footer(
        "What comes from where is reported before anything is written (on stderr with -o -):\n"
        "entries whose name a library before has are dropped; entries whose id is taken get another;\n"
        "categories with one id become one; of units and information the last one stands.\n"
        "Each library's urls start at its own root. OUT.xml names all files in its own folder: that of the\n"
        "delivered library when OUT.xml lies in SymbolsLibrary/standard/ (--origin says otherwise), else that of\n"
        "the user's. --copy-files never overwrites a file that differs, and never copies a file from outside the\n"
        "root of the library that names it; that is reported.\n\n"
        "Examples:\n"
        "  lusym library merge mine.xml theirs.xml -o all.xml --dry-run\n"
        "  lusym library merge a.xml b.xml -o /srv/symbols/SymbolsLibrary/PartSymbolLibrary.xml --copy-files\n\n"
        "Exit codes: 0 done; 3 no library could be read; 4 something is not writable; 5 none is a library, or\n"
        "with --copy-files two files that differ would have one place; 6 some of the libraries could not be read.\n"
        "But for 0 OUT.xml is as it was.\n");
    verb.callback([options, &invocation] {
        if (options->copyFiles && OutputFile::IsStandardOutput(options->output)) {
            throw CLI::ValidationError("--copy-files", "needs a file as OUT.xml, to know where the library lies");
        }
        invocation = [options](Progress& progress) { return RunMerge(*options, progress); };
    });
}

} // namespace lusym
