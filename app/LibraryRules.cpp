#include "LibraryRules.h"

#include "xml/LibraryFormat.h"

#include <dg/FormatNumber.h>
#include <dg/ParseNumber.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

namespace lusym
{

namespace
{

namespace format = lusymbols::format;

constexpr std::string_view kSections[] = {format::kUnits, format::kInformation, format::kCategories, format::kShapes,
                                          format::kSymbols};

constexpr ChildRule kCategoryChildren[] = {
    {format::kName, ValueKind::Keyed},
    {format::kTooltip, ValueKind::Text},
    {format::kDescription, ValueKind::Text},
};

constexpr ChildRule kShapeChildren[] = {
    {format::kName, ValueKind::Keyed},
    {format::kTitle, ValueKind::Keyed},
    {format::kShowTooltipTitle, ValueKind::Boolean},
    {format::kDescription, ValueKind::Keyed},
    {format::kShowTooltipDescription, ValueKind::Boolean},
    {format::kTooltip, ValueKind::Text},
    {format::kGalleryThumbnail, ValueKind::Url},
    {format::kGraphic, ValueKind::Url},
    {format::kScale, ValueKind::Real},
    {format::kOrientation, ValueKind::Integer},
    {format::kShapeCsys, ValueKind::Csys},
    {format::kAxisName, ValueKind::Text},
    {format::kDistanceFromCsys, ValueKind::Real},
    {format::kAxisId, ValueKind::Integer},
    {format::kOrientationName, ValueKind::Text},
    {format::kAnnotationToSymbol, ValueKind::Boolean},
    {format::kUseCurrentOrientation, ValueKind::Boolean},
    {format::kEditCsysMethod, ValueKind::Integer},
    {format::kTags, ValueKind::Tags},
    {format::kCamera, ValueKind::Camera},
};

constexpr ChildRule kSymbolChildren[] = {
    {format::kName, ValueKind::Keyed},
    {format::kTitle, ValueKind::Keyed},
    {format::kShowTooltipTitle, ValueKind::Boolean},
    {format::kDescription, ValueKind::Keyed},
    {format::kShowTooltipDescription, ValueKind::Boolean},
    {format::kTooltip, ValueKind::Text},
    {format::kGalleryThumbnail, ValueKind::Url},
    {format::kImage, ValueKind::Url},
    {format::kScale, ValueKind::Integer},
    {format::kFlip, ValueKind::Flip},
    {format::kRotate, ValueKind::Rotate},
    {format::kTags, ValueKind::Tags},
};

constexpr ChildRule kTagChildren[] = {
    {format::kDescription, ValueKind::Keyed},
    {format::kQuantity, ValueKind::Quantity},
};

constexpr AttributeRule kCategoryAttributes[] = {{format::kId, AttributeKind::Text}};
constexpr AttributeRule kShapeAttributes[] = {{format::kId, AttributeKind::Text},
                                              {format::kCategoryId, AttributeKind::Text}};
constexpr AttributeRule kSymbolAttributes[] = {{format::kId, AttributeKind::Text},
                                               {format::kCategoryId, AttributeKind::Text},
                                               {format::kBillboard, AttributeKind::Boolean}};
constexpr AttributeRule kTagAttributes[] = {{format::kType, AttributeKind::Text}};
constexpr AttributeRule kKeyedAttributes[] = {{format::kLocId, AttributeKind::Text}};
constexpr AttributeRule kUrlAttributes[] = {{format::kUrl, AttributeKind::Text}};
constexpr AttributeRule kFlipAttributes[] = {{format::kHorizontal, AttributeKind::Boolean},
                                             {format::kVertical, AttributeKind::Boolean}};
constexpr AttributeRule kRotateAttributes[] = {{format::kRight, AttributeKind::Integer},
                                               {format::kLeft, AttributeKind::Integer}};
constexpr AttributeRule kCameraAttributes[] = {{format::kOrtho, AttributeKind::Boolean},
                                               {format::kValue, AttributeKind::ExactReal},
                                               {format::kLocation, AttributeKind::Location}};
constexpr AttributeRule kQuantityAttributes[] = {{format::kUnit, AttributeKind::Text},
                                                 {format::kLocId, AttributeKind::Text}};

constexpr auto kCsysAttributes = [] {
    std::array<AttributeRule, 12> rules{};
    for (std::size_t entry = 0; entry < 9; ++entry) {
        rules[entry] = {format::kCsysMatrix[entry / 3][entry % 3], AttributeKind::Float};
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        rules[9 + axis] = {format::kCsysPosition[axis], AttributeKind::Real};
    }
    return rules;
}();

/// Longer names are no slips of the keyboard.
constexpr std::size_t kLongestName = 40;

char LowerLetter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Letters to insert, drop, replace or swap with their neighbour to make one name of the other, upper and lower case being
/// one.
std::size_t EditDistance(std::string_view a, std::string_view b)
{
    using Row = std::array<std::size_t, kLongestName + 1>;
    const auto isSame = [&](std::size_t line, std::size_t column) {
        return LowerLetter(a[line - 1]) == LowerLetter(b[column - 1]);
    };
    Row beforeLast{};
    Row last{};
    Row row{};
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t line = 1; line <= a.size(); ++line) {
        beforeLast = last;
        last = row;
        row[0] = line;
        for (std::size_t column = 1; column <= b.size(); ++column) {
            const std::size_t replaced = last[column - 1] + (isSame(line, column) ? 0 : 1);
            row[column] = std::min({last[column] + 1, row[column - 1] + 1, replaced});
            if (line > 1 && column > 1 && isSame(line, column - 1) && isSame(line - 1, column)) {
                row[column] = std::min(row[column], beforeLast[column - 2] + 1);
            }
        }
    }
    return row[b.size()];
}

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view TrimBlanks(std::string_view text)
{
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::size_t CountDigits(std::string_view text)
{
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
}

/// The parts of a text that begins with a real number.
struct RealText {
    bool isNumber = false;
    bool isZero = true; ///< no digit but 0 before the exponent
    std::string_view rest;
};

RealText SplitReal(std::string_view text)
{
    RealText result;
    const std::size_t whole = CountDigits(text);
    std::size_t end = whole;
    std::size_t fraction = 0;
    if (end < text.size() && text[end] == '.') {
        fraction = CountDigits(text.substr(end + 1));
        end += 1 + fraction;
    }
    result.isNumber = whole + fraction > 0;
    result.isZero = text.substr(0, end).find_first_of("123456789") == std::string_view::npos;
    if (result.isNumber && end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        std::size_t exponent = end + 1;
        if (exponent < text.size() && (text[exponent] == '-' || text[exponent] == '+')) {
            ++exponent;
        }
        const std::size_t digits = CountDigits(text.substr(std::min(exponent, text.size())));
        // A stream takes the "e" for part of the number, and finds no number then.
        result.isNumber = digits > 0;
        end = exponent + digits;
    }
    result.rest = text.substr(std::min(end, text.size()));
    return result;
}

template <class Real>
NumberFault ExamineReal(std::string_view unsignedText, Real value, bool isWrittenShort)
{
    const RealText parts = SplitReal(unsignedText);
    if (!parts.isNumber || (value == Real(0) && !parts.isZero)) {
        return NumberFault::NoNumber;
    }
    if (!parts.rest.empty() || std::abs(value) == std::numeric_limits<Real>::max()) {
        return NumberFault::CutOff;
    }
    if (!isWrittenShort) {
        return NumberFault::None;
    }
    std::string written;
    dg::AppendNumber(written, value);
    const Real again = static_cast<Real>(sizeof(Real) == sizeof(float) ? static_cast<double>(dg::ParseFloat(written))
                                                                       : dg::ParseDouble(written));
    return std::not_equal_to<Real>()(again, value) ? NumberFault::Rounded : NumberFault::None;
}

NumberFault ExamineInteger(std::string_view text, std::string_view unsignedText)
{
    const std::size_t digits = CountDigits(unsignedText);
    if (digits == 0) {
        return NumberFault::NoNumber;
    }
    if (digits < unsignedText.size()) {
        return NumberFault::CutOff;
    }
    text.remove_prefix(text.starts_with('+') ? 1 : 0);
    int value = 0;
    return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc() ? NumberFault::None
                                                                                            : NumberFault::CutOff;
}

} // namespace

std::span<const std::string_view> SectionNames() { return kSections; }
std::span<const ChildRule> CategoryChildren() { return kCategoryChildren; }
std::span<const ChildRule> ShapeChildren() { return kShapeChildren; }
std::span<const ChildRule> SymbolChildren() { return kSymbolChildren; }
std::span<const ChildRule> TagChildren() { return kTagChildren; }
std::span<const AttributeRule> CategoryAttributes() { return kCategoryAttributes; }
std::span<const AttributeRule> ShapeAttributes() { return kShapeAttributes; }
std::span<const AttributeRule> SymbolAttributes() { return kSymbolAttributes; }
std::span<const AttributeRule> TagAttributes() { return kTagAttributes; }

std::span<const AttributeRule> AttributesOf(ValueKind kind)
{
    switch (kind) {
    case ValueKind::Keyed:
        return kKeyedAttributes;
    case ValueKind::Url:
        return kUrlAttributes;
    case ValueKind::Csys:
        return kCsysAttributes;
    case ValueKind::Flip:
        return kFlipAttributes;
    case ValueKind::Rotate:
        return kRotateAttributes;
    case ValueKind::Camera:
        return kCameraAttributes;
    case ValueKind::Quantity:
        return kQuantityAttributes;
    default:
        return {};
    }
}

bool HasText(ValueKind kind)
{
    return kind == ValueKind::Text || kind == ValueKind::Keyed || kind == ValueKind::Boolean ||
           kind == ValueKind::Integer || kind == ValueKind::Real || kind == ValueKind::Quantity;
}

std::string_view NearestName(std::string_view name, std::span<const std::string_view> known)
{
    std::string_view nearest;
    // A third of the letters, and never more than three of them, may be wrong.
    std::size_t best = std::clamp<std::size_t>(name.size() / 3, 1, 3) + 1;
    if (name.size() > kLongestName) {
        return nearest;
    }
    for (const std::string_view candidate : known) {
        const std::size_t distance = EditDistance(name, candidate);
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

NumberFault ExamineNumber(std::string_view text, AttributeKind kind)
{
    text = TrimBlanks(text);
    if (!text.empty() && text.size() <= 6 && CountDigits(text) == text.size()) {
        return NumberFault::None;
    }
    const bool isSigned = text.starts_with('-') || text.starts_with('+');
    const std::string_view unsignedText = text.substr(isSigned ? 1 : 0);
    if (kind == AttributeKind::Integer) {
        return ExamineInteger(text, unsignedText);
    }
    if (kind == AttributeKind::Float) {
        return ExamineReal(unsignedText, dg::ParseFloat(text), true);
    }
    return ExamineReal(unsignedText, dg::ParseDouble(text), kind == AttributeKind::Real);
}

std::string ReadNumber(std::string_view text, AttributeKind kind)
{
    std::string number;
    if (kind == AttributeKind::Integer) {
        dg::AppendNumber(number, dg::ParseInt(text));
    } else if (kind == AttributeKind::Float) {
        dg::AppendNumber(number, dg::ParseFloat(text));
    } else {
        dg::AppendNumber(number, dg::ParseDouble(text));
    }
    return number;
}

} // namespace lusym
