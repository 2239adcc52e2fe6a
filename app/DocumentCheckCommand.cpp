#include "DocumentExamination.h"
#include "DocumentSource.h"
#include "FileText.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "Progress.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace lusym
{

namespace
{

using nlohmann::ordered_json;

struct CheckOptions {
    DocumentOptions document;
    std::string name;
    bool asJson = false;
    bool listCodes = false;
};

std::string CodeTable(bool asJson)
{
    ordered_json codes = ordered_json::array();
    std::string table;
    for (const DocumentFindingKind& kind : AllDocumentFindingKinds()) {
        codes.push_back({{"code", kind.name}, {"severity", NameOf(kind.severity)}, {"explanation", kind.explanation}});
        std::string line(kind.name);
        line.resize(std::max<std::size_t>(line.size(), 22), ' ');
        line.append(NameOf(kind.severity));
        line.resize(std::max<std::size_t>(line.size(), 31), ' ');
        table.append(line).append(kind.explanation).append("\n");
    }
    return asJson ? JsonText(codes) : table;
}

ordered_json ExaminationAsJson(const DocumentExamination& examination, const std::string& name)
{
    ordered_json findings = ordered_json::array();
    for (const DocumentFinding& finding : examination.findings) {
        const DocumentFindingKind& kind = KindOf(finding.code);
        findings.push_back({{"code", kind.name},
                            {"severity", NameOf(kind.severity)},
                            {"symbol", finding.symbol.empty() ? ordered_json() : ordered_json(finding.symbol)},
                            {"text", finding.text},
                            {"mend", finding.mend}});
    }
    const FindingCounts counts = CountFindings(examination.findings);
    return {{"file", name},
            {"findings", std::move(findings)},
            {"counts",
             {{"errors", counts.errors},
              {"warnings", counts.warnings},
              {"notes", counts.notes},
              {"symbols", examination.symbolCount}}}};
}

std::string ExaminationAsText(const DocumentExamination& examination, const std::string& name)
{
    std::string text;
    for (const DocumentFinding& finding : examination.findings) {
        text += FormatFinding(name, finding);
    }
    return text;
}

ExitCode RunDocumentCheck(const CheckOptions& options, Progress& progress)
{
    if (options.listCodes) {
        return PutResult(CodeTable(options.asJson), progress);
    }
    DocumentSource source(options.document, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    DocumentExamination examination;
    const ExitCode examined = ExamineDocument(source, options.name, examination);
    if (examined != ExitCode::Done) {
        return examined;
    }
    const ExitCode written = PutResult(options.asJson ? JsonText(ExaminationAsJson(examination, options.name))
                                                      : ExaminationAsText(examination, options.name),
                                       progress);
    if (written != ExitCode::Done) {
        return written;
    }
    const FindingCounts counts = CountFindings(examination.findings);
    progress.Tell(CountOf(counts.errors, "error", "errors") + ", " + CountOf(counts.warnings, "warning", "warnings") +
                  (counts.notes == 0 ? "" : ", " + CountOf(counts.notes, "note", "notes")) + " in " +
                  CountOf(examination.symbolCount, "symbol", "symbols") + "\n");
    return counts.errors + counts.warnings == 0 ? ExitCode::Done : ExitCode::Findings;
}

} // namespace

void AddDocumentCheck(CLI::App& document, Invocation& invocation)
{
    CLI::App& verb = *document.add_subcommand("check", "Tell what is wrong with a document, and how to mend it");
    const auto options = std::make_shared<CheckOptions>();
    CLI::Option* const file = verb.add_option("DOC", options->name, "The document")->type_name("");
    verb.add_flag("--json", options->asJson, "Findings as JSON");
    CLI::Option* const codes = verb.add_flag("--codes", options->listCodes, "List the codes of all findings, and stop");
    AddDocumentLibraryOptions(verb, options->document);
    verb.footer(
        "Each finding is one line: DOC:ID: severity: what is. What to do about it. [code]\n"
        "ID is that of a symbol, as \"lusym symbol list\" tells it.\n\n"
        "Examples:\n"
        "  lusym document check manual.luz\n"
        "  lusym document check manual.luz --library SymbolsLibrary/PartSymbolLibrary.xml --json\n"
        "  lusym document check --codes\n\n"
        "Exit codes: 0 nothing to mend; 3 DOC or a library of --library is unreadable; 5 an error or a warning.\n");
    verb.callback([options, file, codes, &invocation] {
        if (file->count() == 0 && codes->count() == 0) {
            throw CLI::RequiredError("DOC");
        }
        invocation = [options](Progress& progress) { return RunDocumentCheck(*options, progress); };
    });
}

} // namespace lusym
