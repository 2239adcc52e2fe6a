#include "LibraryCheckCommand.h"

#include "FileText.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "LibraryWriting.h"
#include "Printable.h"
#include "Progress.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace lusym
{

namespace
{

struct CheckOptions {
    LibraryOptions library;
    std::string file;
    bool asJson = false;
    bool isStrict = false;
    bool listCodes = false;
};

std::string CodeTable(bool asJson)
{
    if (asJson) {
        nlohmann::ordered_json codes = nlohmann::ordered_json::array();
        for (const FindingKind& kind : AllFindingKinds()) {
            codes.push_back(
                {{"code", kind.name}, {"severity", NameOf(kind.severity)}, {"explanation", kind.explanation}});
        }
        return JsonText(codes);
    }
    std::string table;
    for (const FindingKind& kind : AllFindingKinds()) {
        std::string line(kind.name);
        line.resize(std::max<std::size_t>(line.size(), 22), ' ');
        line.append(NameOf(kind.severity));
        line.resize(std::max<std::size_t>(line.size(), 31), ' ');
        table.append(line).append(kind.explanation).append("\n");
    }
    return table;
}

/// Line of the first byte in which the texts differ; 0 when they are equal.
std::size_t FirstDifferentLine(std::string_view a, std::string_view b)
{
    if (a == b) {
        return 0;
    }
    const auto [inA, inB] = std::ranges::mismatch(a, b);
    return 1 + static_cast<std::size_t>(std::count(a.begin(), inA, '\n'));
}

ExitCode Judge(const LibraryReading& reading, bool isStrict)
{
    if (!reading.isReadable) {
        return ExitCode::InputUnreadable;
    }
    const FindingCounts counts = CountFindings(reading.examination.findings);
    const bool isClean = counts.errors + counts.warnings + (isStrict ? counts.notes : 0) == 0;
    return isClean ? ExitCode::Done : ExitCode::Findings;
}

ExitCode RunCheck(const CheckOptions& options, Progress& progress)
{
    if (options.listCodes) {
        return PutResult(CodeTable(options.asJson), progress);
    }
    LibrarySource source(options.library, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    LibraryReading reading = source.Read(options.file);
    std::string error;
    if (options.isStrict && !AddCanonicalFinding(source, reading, error)) {
        progress.Tell("lusym: " + error + "\n");
        return ExitCode::Failed;
    }
    std::string report;
    if (options.asJson) {
        report = JsonText(FindingsAsJson(reading));
    } else {
        for (const Finding& finding : reading.examination.findings) {
            report += FormatFinding(reading.place.name, finding);
        }
    }
    const ExitCode written = PutResult(report, progress);
    if (written != ExitCode::Done) {
        return written;
    }
    progress.Tell(SummarizeFindings(reading.examination) + "\n");
    return Judge(reading, options.isStrict);
}

} // namespace

std::string SummarizeFindings(const Examination& examination)
{
    const FindingCounts counts = CountFindings(examination.findings);
    std::string summary =
        CountOf(counts.errors, "error", "errors") + ", " + CountOf(counts.warnings, "warning", "warnings");
    if (counts.notes != 0) {
        summary += ", " + CountOf(counts.notes, "note", "notes");
    }
    return summary + " in " + CountOf(examination.entryCount, "entry", "entries");
}

bool AddCanonicalFinding(LibrarySource& source, LibraryReading& reading, std::string& error)
{
    if (!reading.isReadable || !reading.examination.isRead) {
        return true;
    }
    // Nothing of a shared library is written but by its owner.
    LibraryPlace place = reading.place;
    const bool isShared = place.origin == LibraryPlace::Origin::ORIGIN_SHARED;
    place.origin = isShared ? LibraryPlace::Origin::ORIGIN_USER : place.origin;
    const TemporaryFolder folder;
    if (folder.GetPath().empty()) {
        error = folder.GetError();
        return false;
    }
    std::string canonical;
    std::string actual;
    const LibraryContent content = ContentOf(isShared ? source.Read(place).examination : reading.examination);
    if (!WriteLibraryFile(content, false, folder.GetFilePath(), error) ||
        !ReadFileText(folder.GetFilePath(), canonical, error) || !ReadFileText(place.path, actual, error)) {
        return false;
    }
    if (const std::size_t line = FirstDifferentLine(actual, canonical)) {
        std::vector<Finding>& findings = reading.examination.findings;
        const auto next = std::ranges::upper_bound(findings, line, {}, &Finding::line);
        findings.insert(next, {FindingCode::NotCanonical, line, 0,
                               "from here on the file differs from what the writer would write",
                               "Write it anew with \"lusym library format\"."});
    }
    return true;
}

nlohmann::ordered_json FindingsAsJson(const LibraryReading& reading)
{
    nlohmann::ordered_json findings = nlohmann::ordered_json::array();
    for (const Finding& finding : reading.examination.findings) {
        const FindingKind& kind = KindOf(finding.code);
        findings.push_back({{"code", kind.name},
                            {"severity", NameOf(kind.severity)},
                            {"line", finding.line},
                            {"column", finding.column},
                            {"text", finding.text},
                            {"mend", finding.mend}});
    }
    const FindingCounts counts = CountFindings(reading.examination.findings);
    return {{"file", reading.place.name},
            {"findings", std::move(findings)},
            {"counts",
             {{"errors", counts.errors},
              {"warnings", counts.warnings},
              {"notes", counts.notes},
              {"entries", reading.examination.entryCount}}}};
}

void AddLibraryCheck(CLI::App& library, Invocation& invocation)
{
    CLI::App& verb = *library.add_subcommand("check", "Tell what is wrong with a library, where, and how to mend it");
    const auto options = std::make_shared<CheckOptions>();
    CLI::Option* const file = verb.add_option("LIB.xml", options->file, "The library");
    verb.add_flag("--json", options->asJson, "Findings as JSON");
    verb.add_flag("--strict", options->isStrict,
                  "Notes count too, and the file has to be what the writer would write, byte for byte");
    CLI::Option* const codes = verb.add_flag("--codes", options->listCodes, "List the codes of all findings, and stop");
    AddLibraryOptions(verb, options->library, true);
    verb.footer("Each finding is one line: FILE:LINE: severity: what is. What to do about it. [code]\n"
                "error: something is lost or cannot work; warning: probably not meant; note: worth knowing.\n\n"
                "Examples:\n"
                "  lusym library check SymbolsLibrary/PartSymbolLibrary.xml\n"
                "  lusym library check lib.xml --root /srv/symbols --json\n"
                "  lusym library check --codes\n\n"
                "Exit codes: 0 nothing to mend; 5 an error or a warning (with --strict any finding); 3 unreadable.\n");
    verb.callback([options, file, codes, &invocation] {
        if (file->count() == 0 && codes->count() == 0) {
            throw CLI::RequiredError("LIB.xml");
        }
        invocation = [options](Progress& progress) { return RunCheck(*options, progress); };
    });
}

} // namespace lusym
