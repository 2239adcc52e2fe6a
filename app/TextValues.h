#pragma once

#include <dg/Color.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lusym
{

/// A finite number, the whole of the text; a dot for fractions in every locale.
std::optional<double> ParseNumber(std::string_view text);

/// Numbers between separators; empty when one of them is none.
/// @param emptyCounts an empty place reads as NaN instead of spoiling all
std::vector<double> ParseNumbers(std::string_view text, char separator, bool emptyCounts = false);

/// "#rgb", "#rrggbb", "#rrggbbaa", a name such as "red", or "none".
std::optional<dg::Color> ParseColor(std::string_view text);
/// The names that ParseColor knows, for messages.
std::string ColorNames();

/// A size in millimetres: "210x297", or a paper such as "a4" and "a3-landscape".
struct PaperSize {
    double width = 0.0;
    double height = 0.0;
};
std::optional<PaperSize> ParsePaperSize(std::string_view text);

/// The first address of the web or of mail in a text, such as "https://example.org/bolt"; empty when there is none.
std::string FindLink(std::string_view text);

/// The shortest text of a number that single precision tells from others: "12.5".
std::string NumberText(double number);

/// "#rrggbbaa", and "none" where nothing is seen.
std::string ColorText(const dg::Color& color);

} // namespace lusym
