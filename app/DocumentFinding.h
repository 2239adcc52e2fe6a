#pragma once

#include "Finding.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lusym
{

enum class DocumentFindingCode : std::uint8_t {
    PictureMissing,
    PictureUnreadable,
    ShapeMissing,
    ShapeUnreadable,
    PartGone,
    EntryGone,
    EntryDiffers,
    EntryNotInLibrary,
    LibraryDiffers,
    LibraryUnreadable,
    OffPage,
    OverPageEdge,
    NoSize,
    NotUnderstood,
};

/// What holds for every finding with one code.
struct DocumentFindingKind {
    DocumentFindingCode code;
    std::string_view name;
    Severity severity;
    std::string_view explanation;
};

/// All kinds, in the order of the enumeration.
std::span<const DocumentFindingKind> AllDocumentFindingKinds();
const DocumentFindingKind& KindOf(DocumentFindingCode code);

/// One thing that an examination of a document found.
struct DocumentFinding {
    DocumentFindingCode code;
    std::string symbol; ///< id; empty when it is about no symbol
    std::string text;   ///< what is, without a full stop
    std::string mend;   ///< what to do about it, one sentence
};

/// `DOC:ID: severity: text. mend [code]`
std::string FormatFinding(std::string_view document, const DocumentFinding& finding);

FindingCounts CountFindings(const std::vector<DocumentFinding>& findings);

} // namespace lusym
