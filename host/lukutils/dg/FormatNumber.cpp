#include <dg/FormatNumber.h>

#include <array>
#include <charconv>
#include <cmath>

namespace dg
{

namespace
{

/// Room for every form written here: the shortest form of a double has at most 24 characters.
using Buffer = std::array<char, 32>;

template <class... Format>
void AppendChars(std::string& out, Format... valueAndFormat)
{
    Buffer buffer;
    const auto [end, status] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), valueAndFormat...);
    out.append(buffer.data(), end);
}

} // namespace

void AppendNumber(std::string& out, int value)
{
    if (value >= 0 && value <= 9) {
        out.push_back(static_cast<char>('0' + value));
        return;
    }
    AppendChars(out, value);
}

void AppendNumber(std::string& out, float value) { AppendNumber(out, static_cast<double>(value)); }

void AppendNumber(std::string& out, double value)
{
    constexpr double kFirstWithExponent = 1e6;
    if (std::fabs(value) < kFirstWithExponent) {
        const int integral = static_cast<int>(value);
        if (static_cast<double>(integral) == value && !(integral == 0 && std::signbit(value))) {
            AppendNumber(out, integral);
            return;
        }
    }
    constexpr int kSignificantDigits = 6;
    AppendChars(out, value, std::chars_format::general, kSignificantDigits);
}

void AppendShortest(std::string& out, float value) { AppendChars(out, value); }

void AppendShortest(std::string& out, double value) { AppendChars(out, value); }

} // namespace dg
