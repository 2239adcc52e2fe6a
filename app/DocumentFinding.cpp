#include "DocumentFinding.h"

#include "Printable.h"

#include <cassert>

namespace lusym
{

namespace
{

using Code = DocumentFindingCode;

constexpr DocumentFindingKind kKinds[] = {
    {Code::PictureMissing, "picture-missing", Severity::Error,
     "The document does not hold the picture that a symbol names; the symbol is shown as a crossed box."},
    {Code::PictureUnreadable, "picture-unreadable", Severity::Error,
     "The picture of a symbol is damaged, or of no format that can be read; the symbol is shown as a crossed box."},
    {Code::ShapeMissing, "shape-missing", Severity::Error,
     "The document does not hold the shape that a symbol names; nothing is shown of the symbol."},
    {Code::ShapeUnreadable, "shape-unreadable", Severity::Error,
     "The shape of a symbol is damaged, or of no format that can be read; nothing is shown of the symbol."},
    {Code::PartGone, "part-gone", Severity::Warning,
     "A symbol is attached to a part that the product does not have; it stays where it is."},
    {Code::EntryGone, "entry-gone", Severity::Warning,
     "The document has not got the entry that a symbol follows; the symbol stays as it is."},
    {Code::EntryDiffers, "entry-differs", Severity::Warning,
     "The document's own entry says something else than the symbol; opening the document lets the symbol follow."},
    {Code::EntryNotInLibrary, "entry-not-in-library", Severity::Note,
     "No library has an entry of the document any more; its symbols stay as they are."},
    {Code::LibraryDiffers, "library-differs", Severity::Warning,
     "An entry has changed in its library since the document took it over."},
    {Code::LibraryUnreadable, "library-unreadable", Severity::Warning,
     "A library that the document records cannot be read, so that nothing can be compared with it."},
    {Code::OffPage, "off-page", Severity::Warning, "A symbol lies outside its page, so that nobody sees it."},
    {Code::OverPageEdge, "over-page-edge", Severity::Note, "A symbol reaches over the edge of its page."},
    {Code::NoSize, "no-size", Severity::Warning, "A symbol has no size or no place, so that nobody sees it."},
    {Code::NotUnderstood, "not-understood", Severity::Warning,
     "Something in the document is not understood; it is kept and written again, unless the finding says otherwise."},
};

} // namespace

std::span<const DocumentFindingKind> AllDocumentFindingKinds() { return kKinds; }

const DocumentFindingKind& KindOf(DocumentFindingCode code)
{
    const DocumentFindingKind& kind = kKinds[static_cast<std::size_t>(code)];
    assert(kind.code == code);
    return kind;
}

std::string FormatFinding(std::string_view document, const DocumentFinding& finding)
{
    const DocumentFindingKind& kind = KindOf(finding.code);
    std::string line = Printable(document);
    if (!finding.symbol.empty()) {
        line.append(":").append(Printable(finding.symbol));
    }
    line.append(": ").append(NameOf(kind.severity)).append(": ").append(finding.text).append(". ");
    return line.append(finding.mend).append(" [").append(kind.name).append("]\n");
}

FindingCounts CountFindings(const std::vector<DocumentFinding>& findings)
{
    FindingCounts counts;
    for (const DocumentFinding& finding : findings) {
        const Severity severity = KindOf(finding.code).severity;
        ++(severity == Severity::Error     ? counts.errors
           : severity == Severity::Warning ? counts.warnings
                                           : counts.notes);
    }
    return counts;
}

} // namespace lusym
