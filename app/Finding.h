#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lusym
{

enum class Severity : std::uint8_t {
    Note,    ///< worth knowing
    Warning, ///< probably not meant
    Error,   ///< something is lost or cannot work
};

/// What reading a library and writing it again does to the thing that a finding is about.
enum class Effect : std::uint8_t {
    None,     ///< nothing
    Changed,  ///< it comes back otherwise
    Lost,     ///< it does not come back
    NoneRead, ///< nothing of the whole document is read
};

enum class FindingCode : std::uint8_t {
    Unreadable,
    NotWellFormed,
    NulByte,
    TooDeep,
    OtherEncoding,
    ByteOrderMark,
    WrongRoot,
    WrongSectionCount,
    MissingSection,
    UnknownElement,
    UnknownAttribute,
    StrayText,
    Comment,
    CarriageReturn,
    MissingId,
    MissingName,
    NameTaken,
    RepeatedId,
    RepeatedCategoryId,
    UnknownCategory,
    RepeatedChild,
    TagBeforeName,
    UnknownTagType,
    TitleFallsBack,
    MissingMessage,
    BesideKey,
    NumberReadsAsZero,
    NumberCutOff,
    NumberRounded,
    NotABoolean,
    NotALocation,
    MissingUrl,
    FileMissing,
    AbsoluteUrl,
    UrlWillChange,
    NotCanonical,
};

/// What holds for every finding with one code.
struct FindingKind {
    FindingCode code;
    std::string_view name;
    Severity severity;
    Effect effect;
    std::string_view explanation;
};

/// All kinds, in the order of the enumeration.
std::span<const FindingKind> AllFindingKinds();
const FindingKind& KindOf(FindingCode code);
std::string_view NameOf(Severity severity);

/// One thing that an examination found.
struct Finding {
    FindingCode code;
    std::size_t line = 0;   ///< from 1; 0 when it has no place
    std::size_t column = 0; ///< in bytes, from 1; 0 when it has none
    std::string text;       ///< what is, without a full stop
    std::string mend;       ///< what to do about it, one sentence
};

struct FindingCounts {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t notes = 0;
};

FindingCounts CountFindings(const std::vector<Finding>& findings);

/// `FILE:LINE: severity: text. mend [code]`
std::string FormatFinding(std::string_view file, const Finding& finding);

/// "1 error", "2 errors"
std::string CountOf(std::size_t count, std::string_view singular, std::string_view plural);

} // namespace lusym
