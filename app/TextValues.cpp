#include "TextValues.h"

#include <dg/FormatNumber.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <utility>

namespace lusym
{

namespace
{

constexpr std::pair<std::string_view, std::uint32_t> kColors[] = {
    {"none", 0x00000000U}, {"black", 0x000000FFU},  {"white", 0xFFFFFFFFU},
    {"gray", 0x808080FFU}, {"red", 0xFF0000FFU},    {"green", 0x008000FFU},
    {"blue", 0x0000FFFFU}, {"yellow", 0xFFFF00FFU}, {"orange", 0xFFA500FFU}};

dg::Color ColorOf(std::uint32_t rgba)
{
    const auto part = [&](unsigned shift) { return static_cast<float>(rgba >> shift & 0xFFU) / 255.0F; };
    return {part(24), part(16), part(8), part(0)};
}

/// "#f80" as "#ff8800", and an opaque alpha where there is none.
std::string WholeDigits(std::string_view digits)
{
    std::string whole;
    for (const char digit : digits) {
        whole.append(digits.size() == 3 ? 2 : 1, digit);
    }
    return whole.size() == 6 ? whole + "ff" : whole;
}

std::optional<PaperSize> ParseIsoPaper(std::string_view text)
{
    constexpr double kSides[] = {1189.0, 841.0, 594.0, 420.0, 297.0, 210.0, 148.0, 105.0};
    if (text.size() < 2 || (text[0] != 'a' && text[0] != 'A') || text[1] < '0' || text[1] > '6') {
        return std::nullopt;
    }
    const auto format = static_cast<std::size_t>(text[1] - '0');
    const std::string_view turn = text.substr(2);
    if (turn == "-landscape") {
        return PaperSize{kSides[format], kSides[format + 1]};
    }
    return turn.empty() || turn == "-portrait" ? std::optional(PaperSize{kSides[format + 1], kSides[format]})
                                               : std::nullopt;
}

} // namespace

std::optional<double> ParseNumber(std::string_view text)
{
    double number = 0.0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = fault == std::errc() && end == text.data() + text.size();
    return isWhole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::vector<double> ParseNumbers(std::string_view text, char separator, bool emptyCounts)
{
    std::vector<double> numbers;
    for (std::size_t end = 0; end != text.npos; text.remove_prefix(end == text.npos ? 0 : end + 1)) {
        end = text.find(separator);
        const std::string_view part = text.substr(0, end);
        const std::optional<double> number = ParseNumber(part);
        if (!number && !(part.empty() && emptyCounts)) {
            return {};
        }
        numbers.push_back(number.value_or(std::numeric_limits<double>::quiet_NaN()));
    }
    return numbers;
}

std::optional<dg::Color> ParseColor(std::string_view text)
{
    const auto* const named = std::ranges::find(kColors, text, &std::pair<std::string_view, std::uint32_t>::first);
    if (named != std::end(kColors)) {
        return ColorOf(named->second);
    }
    if (!text.starts_with('#') || (text.size() != 4 && text.size() != 7 && text.size() != 9)) {
        return std::nullopt;
    }
    const std::string digits = WholeDigits(text.substr(1));
    std::uint32_t rgba = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), rgba, 16);
    const bool isWhole = fault == std::errc() && end == digits.data() + digits.size();
    return isWhole ? std::optional(ColorOf(rgba)) : std::nullopt;
}

std::string ColorNames()
{
    std::string names;
    for (const auto& [name, rgba] : kColors) {
        names.append(names.empty() ? "" : ", ").append(name);
    }
    return names;
}

std::optional<PaperSize> ParsePaperSize(std::string_view text)
{
    if (const std::optional<PaperSize> paper = ParseIsoPaper(text)) {
        return paper;
    }
    constexpr double kLargestMm = 100000.0;
    const std::vector<double> sides = ParseNumbers(text, 'x');
    const auto isSide = [](double side) { return side > 0.0 && side <= kLargestMm; };
    return sides.size() == 2 && std::ranges::all_of(sides, isSide) ? std::optional(PaperSize{sides[0], sides[1]})
                                                                   : std::nullopt;
}

std::string FindLink(std::string_view text)
{
    std::size_t first = text.npos;
    for (const std::string_view scheme : {"http://", "https://", "mailto:"}) {
        first = std::min(first, text.find(scheme));
    }
    if (first == text.npos) {
        return {};
    }
    std::string_view link = text.substr(first);
    const auto* const end = std::ranges::find_if(link, [](char c) {
        return static_cast<unsigned char>(c) <= ' ' ||
               std::string_view("\"'<>\\`{}|^\x7f").find(c) != std::string_view::npos;
    });
    link = link.substr(0, static_cast<std::size_t>(end - link.begin()));
    // What ends a sentence is no part of it.
    while (!link.empty() && std::string_view(".,;:!?)").find(link.back()) != std::string_view::npos) {
        link.remove_suffix(1);
    }
    return link.ends_with('/') && link.find("//") + 2 == link.size() ? std::string() : std::string(link);
}

std::string NumberText(double number)
{
    std::string text;
    dg::AppendShortest(text, static_cast<float>(number));
    return text;
}

std::string ColorText(const dg::Color& color)
{
    if (color.alpha <= 0.0F) {
        return "none";
    }
    std::string text = "#";
    for (const float part : {color.red, color.green, color.blue, color.alpha}) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x",
                      static_cast<unsigned>(std::lround(std::clamp(part, 0.0F, 1.0F) * 255.0F)));
        text += digits;
    }
    return text;
}

} // namespace lusym
