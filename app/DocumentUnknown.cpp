#include "DocumentUnknown.h"

#include "DocumentSource.h"
#include "Finding.h"
#include "Printable.h"

namespace lusym
{

namespace
{

using Unknown = luhost::Document::Unknown;

/// ", 3 times, the first in page 2"
std::string PlaceText(const Unknown& unknown)
{
    const std::string where = Printable(unknown.where);
    if (unknown.count == 1) {
        return where.empty() ? where : ", in " + where;
    }
    return ", " + CountOf(unknown.count, "time", "times") + (where.empty() ? where : ", the first in " + where);
}

DocumentFinding FindingOf(const Unknown& unknown)
{
    DocumentFinding finding{DocumentFindingCode::NotUnderstood, unknown.annotation, {}, {}};
    const std::string what = "the " + Printable(unknown.kind) + " " + Quote(unknown.name);
    finding.mend = "Look at it with the program that wrote it; it stays.";
    if (!unknown.isKept) {
        finding.text = Printable(unknown.name) + PlaceText(unknown);
        finding.mend = "Correct it with the program that wrote it; whatever saves the document leaves it out.";
    } else if (unknown.kind == "annotation") {
        finding.text = CountOf(unknown.count, "annotation is", "annotations are") + " of the kind " +
                       Quote(unknown.name) + ", which this program does not know, the first with the id " +
                       Quote(unknown.where);
    } else if (unknown.kind == "entry") {
        finding.text = CountOf(unknown.count, "entry", "entries") + " of the package, the first " +
                       Quote(unknown.where) + ", is not known";
    } else if (!unknown.expected.empty()) {
        finding.text = what + " should be of the type " + unknown.expected + PlaceText(unknown);
        finding.mend = "Correct its type with the program that wrote it; it stays, and has no effect.";
    } else {
        const std::string holder = unknown.holder.empty() ? std::string() : " of " + Quote(unknown.holder);
        finding.text = what + holder + " is not known" + PlaceText(unknown);
    }
    return finding;
}

} // namespace

std::vector<std::string> ProblemsOf(DocumentSource& source)
{
    std::vector<std::string> problems = source.GetEntryProblems();
    const luhost::Document& document = source.GetDocument();
    problems.insert(problems.end(), document.GetProblems().begin(), document.GetProblems().end());
    for (const Unknown& unknown : document.GetUnknown()) {
        if (!unknown.isKept) {
            problems.push_back(unknown.annotation + ": " + unknown.name);
        }
    }
    return problems;
}

std::vector<DocumentFinding> FindUnknown(const luhost::Document& document)
{
    std::vector<DocumentFinding> findings;
    for (const Unknown& unknown : document.GetUnknown()) {
        findings.push_back(FindingOf(unknown));
    }
    if (const std::size_t more = document.GetUnlistedUnknownCount(); more != 0) {
        findings.push_back(
            {DocumentFindingCode::NotUnderstood,
             {},
             CountOf(more, "more thing is", "more things are") + " not known, beside those that are listed",
             "Look at them with the program that wrote them; they stay."});
    }
    return findings;
}

} // namespace lusym
