#include "Finding.h"

#include "Printable.h"

#include <cassert>

namespace lusym
{

namespace
{

constexpr FindingKind kKinds[] = {
    {FindingCode::Unreadable, "unreadable", Severity::Error, Effect::NoneRead,
     "The file is missing, is no regular file, or may not be read."},
    {FindingCode::NotWellFormed, "not-well-formed", Severity::Error, Effect::NoneRead,
     "The text is no XML document; nothing of it is read."},
    {FindingCode::NulByte, "nul-byte", Severity::Error, Effect::NoneRead,
     "A NUL byte stands in the document; nothing of it is read."},
    {FindingCode::TooDeep, "too-deep", Severity::Error, Effect::NoneRead,
     "Elements are nested deeper than the reader goes; nothing of the document is read."},
    {FindingCode::OtherEncoding, "other-encoding", Severity::Error, Effect::None,
     "The declaration names an encoding other than UTF-8, or bytes are not UTF-8; the loader reads UTF-8 always."},
    {FindingCode::ByteOrderMark, "byte-order-mark", Severity::Note, Effect::Changed,
     "The file begins with a byte order mark, which the loader skips and the writer leaves out."},
    {FindingCode::WrongRoot, "wrong-root", Severity::Error, Effect::NoneRead,
     "The top-level element is not \"drellin-library\"; nothing of the document is read."},
    {FindingCode::WrongSectionCount, "wrong-section-count", Severity::Error, Effect::NoneRead,
     "The root has not exactly five children; nothing of the document is read."},
    {FindingCode::MissingSection, "missing-section", Severity::Warning, Effect::None,
     "One of the five sections is missing although the root has five children."},
    {FindingCode::UnknownElement, "unknown-element", Severity::Error, Effect::Lost,
     "An element is none of the format; the loader skips it with all that it holds."},
    {FindingCode::UnknownAttribute, "unknown-attribute", Severity::Error, Effect::Lost,
     "An attribute is none of its element, or stands there a second time; the loader skips it."},
    {FindingCode::StrayText, "stray-text", Severity::Error, Effect::Lost,
     "Text stands where the format has none; the loader skips it."},
    {FindingCode::Comment, "comment", Severity::Note, Effect::Changed,
     "A comment, an instruction or a document type; the writer does not write it back."},
    {FindingCode::CarriageReturn, "carriage-return", Severity::Warning, Effect::Changed,
     "A text or an attribute holds a carriage return; before a line feed it does not come back."},
    {FindingCode::MissingId, "missing-id", Severity::Error, Effect::None,
     "An entry or a category has no id, so nothing can refer to it."},
    {FindingCode::MissingName, "missing-name", Severity::Warning, Effect::None,
     "An entry or a category has no name; only one entry without a name is kept."},
    {FindingCode::NameTaken, "name-taken", Severity::Error, Effect::Lost,
     "An entry before it has the same name; the loader drops the later one."},
    {FindingCode::RepeatedId, "repeated-id", Severity::Error, Effect::Changed,
     "An entry before it has the same id; the loader gives the later one another."},
    {FindingCode::RepeatedCategoryId, "repeated-category-id", Severity::Warning, Effect::None,
     "A category before it has the same id; the gallery shows the entries in both."},
    {FindingCode::UnknownCategory, "unknown-category", Severity::Warning, Effect::None,
     "No category of the document has the id that the entry names; alone it is in no group of the gallery."},
    {FindingCode::RepeatedChild, "repeated-child", Severity::Error, Effect::Lost,
     "An element stands twice in one entry; the later one overwrites what both of them give."},
    {FindingCode::TagBeforeName, "tag-before-name", Severity::Warning, Effect::Changed,
     "Tags stand before the entry's name, so that they carry an empty name."},
    {FindingCode::UnknownTagType, "unknown-tag-type", Severity::Note, Effect::None,
     "The type of a tag is no keyword of this host; it is kept as it is."},
    {FindingCode::TitleFallsBack, "title-falls-back", Severity::Note, Effect::Changed,
     "The title is empty or missing; the entry's name takes its place."},
    {FindingCode::MissingMessage, "missing-message", Severity::Warning, Effect::None,
     "The message table has no text for a key, in some or in all of its languages."},
    {FindingCode::BesideKey, "beside-key", Severity::Warning, Effect::Lost,
     "A text or a unit stands beside a message key; the key wins and the text is not used."},
    {FindingCode::NumberReadsAsZero, "number-reads-as-zero", Severity::Warning, Effect::Lost,
     "A text that should be a number is none; it reads as 0."},
    {FindingCode::NumberCutOff, "number-cut-off", Severity::Warning, Effect::Lost,
     "Only a part of a number counts: something stands behind it, it has a fraction where none is read, or it is out "
     "of "
     "range."},
    {FindingCode::NumberRounded, "number-rounded", Severity::Note, Effect::Changed,
     "A number has more digits than the six that the writer writes."},
    {FindingCode::NotABoolean, "not-a-boolean", Severity::Warning, Effect::Lost,
     "A text that should be \"true\" or \"false\" is neither; the default stands."},
    {FindingCode::NotALocation, "not-a-location", Severity::Warning, Effect::Lost,
     "A text that should be the twelve numbers of a location is not; the identity stands."},
    {FindingCode::MissingUrl, "missing-url", Severity::Warning, Effect::None,
     "An entry names no picture, no shape or no thumbnail."},
    {FindingCode::FileMissing, "file-missing", Severity::Error, Effect::None,
     "A file that an entry names cannot be read; for thumbnails the large one beside the small one counts too."},
    {FindingCode::AbsoluteUrl, "absolute-url", Severity::Warning, Effect::None,
     "A url is absolute, so that the library works at one place only."},
    {FindingCode::UrlWillChange, "url-will-change", Severity::Warning, Effect::Changed,
     "The file lies elsewhere than in the library's own folder; the writer would write another url."},
    {FindingCode::NotCanonical, "not-canonical", Severity::Note, Effect::None,
     "The file differs from what the writer would write (asked for with --strict)."},
};

} // namespace

std::span<const FindingKind> AllFindingKinds() { return kKinds; }

const FindingKind& KindOf(FindingCode code)
{
    const FindingKind& kind = kKinds[static_cast<std::size_t>(code)];
    assert(kind.code == code);
    return kind;
}

std::string_view NameOf(Severity severity)
{
    switch (severity) {
    case Severity::Note:
        return "note";
    case Severity::Warning:
        return "warning";
    case Severity::Error:
        break;
    }
    return "error";
}

FindingCounts CountFindings(const std::vector<Finding>& findings)
{
    FindingCounts counts;
    for (const Finding& finding : findings) {
        const Severity severity = KindOf(finding.code).severity;
        ++(severity == Severity::Error     ? counts.errors
           : severity == Severity::Warning ? counts.warnings
                                           : counts.notes);
    }
    return counts;
}

std::string FormatFinding(std::string_view file, const Finding& finding)
{
    const FindingKind& kind = KindOf(finding.code);
    std::string line = Printable(file);
    if (finding.line != 0) {
        line.append(":").append(std::to_string(finding.line));
    }
    line.append(": ").append(NameOf(kind.severity)).append(": ").append(finding.text).append(". ");
    line.append(finding.mend).append(" [").append(kind.name).append("]\n");
    return line;
}

std::string CountOf(std::size_t count, std::string_view singular, std::string_view plural)
{
    return std::to_string(count).append(" ").append(count == 1 ? singular : plural);
}

} // namespace lusym
