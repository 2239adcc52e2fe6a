#include <dg/ParseNumber.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <system_error>

namespace dg
{

namespace
{

bool IsBlank(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

std::string_view SkipBlanks(std::string_view text) noexcept
{
    std::size_t at = 0;
    while (at < text.size() && IsBlank(text[at])) {
        ++at;
    }
    return text.substr(at);
}

/// Takes one sign off the front; true for a minus.
bool TakeSign(std::string_view& text) noexcept
{
    if (text.empty() || (text.front() != '-' && text.front() != '+')) {
        return false;
    }
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

/// Decimal exponent of an unsigned number that is known to be out of range: positive for one that is too large,
/// negative for one that is too small. `number` holds the number and nothing else.
std::int64_t ExponentOf(std::string_view number) noexcept
{
    constexpr std::int64_t kHuge = std::int64_t{1} << 56;
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    std::int64_t written = 0;
    if (mark < number.size()) {
        std::string_view digits = number.substr(mark + 1);
        const bool negative = TakeSign(digits);
        for (const char digit : digits) {
            written = std::min(written * 10 + (digit - '0'), kHuge);
        }
        written = negative ? -written : written;
    }
    const std::string_view mantissa = number.substr(0, mark);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t leading = mantissa.find_first_of("123456789");
    return written + static_cast<std::int64_t>(point) - static_cast<std::int64_t>(leading);
}

/// A run of at most nine digits that is the whole text, as nearly every number of a library is.
bool ParseShortDigits(std::string_view text, std::int32_t& value) noexcept
{
    if (text.empty() || text.size() > 9) {
        return false;
    }
    value = 0;
    for (const char c : text) {
        if (!IsDigit(c)) {
            return false;
        }
        value = value * 10 + (c - '0');
    }
    return true;
}

/// A number without its sign, from the front of a text; false when there is none.
template <class Real>
bool ParseUnsignedReal(std::string_view text, Real& value) noexcept
{
    std::int32_t digits = 0;
    if (ParseShortDigits(text, digits)) {
        value = static_cast<Real>(digits);
        return true;
    }
    // from_chars would take "inf", "nan" and a second sign.
    if (text.empty() || !(IsDigit(text.front()) || text.front() == '.')) {
        return false;
    }
    const char* const end = text.data() + text.size();
    const auto [stop, status] = std::from_chars(text.data(), end, value);
    if (status == std::errc::invalid_argument) {
        return false;
    }
    // A stream takes the 'e' of "1e" for part of the number and then finds the number malformed.
    const std::string_view number = text.substr(0, static_cast<std::size_t>(stop - text.data()));
    if (stop != end && (*stop == 'e' || *stop == 'E') && number.find_first_of("eE") == std::string_view::npos) {
        return false;
    }
    if (status == std::errc::result_out_of_range) {
        value = ExponentOf(number) > 0 ? std::numeric_limits<Real>::max() : Real(0);
    }
    return true;
}

template <class Real>
Real ParseReal(std::string_view text) noexcept
{
    text = SkipBlanks(text);
    const bool negative = TakeSign(text);
    Real value = Real(0);
    if (!ParseUnsignedReal(text, value)) {
        return Real(0);
    }
    return negative ? -value : value;
}

} // namespace

int ParseInt(std::string_view text) noexcept
{
    text = SkipBlanks(text);
    const bool negative = TakeSign(text);
    if (text.empty() || !IsDigit(text.front())) {
        return 0;
    }
    std::int64_t magnitude = 0;
    const auto [stop, status] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    if (status == std::errc::result_out_of_range) {
        magnitude = std::numeric_limits<std::int64_t>::max();
    }
    const std::int64_t value = negative ? -magnitude : magnitude;
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

float ParseFloat(std::string_view text) noexcept { return ParseReal<float>(text); }

double ParseDouble(std::string_view text) noexcept { return ParseReal<double>(text); }

bool ParseBool(std::string_view text, bool fallback) noexcept
{
    if (text == "true" || text == "1") {
        return true;
    }
    if (text == "false" || text == "0") {
        return false;
    }
    return fallback;
}

} // namespace dg
