#include "TextTable.h"

#include <algorithm>
#include <string_view>

namespace lusym
{

namespace
{

/// Columns that a terminal needs for a text, one for each character.
std::size_t WidthOf(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

} // namespace

std::string TableText(const std::vector<std::vector<std::string>>& rows)
{
    constexpr std::size_t kWidestColumn = 40;
    std::vector<std::size_t> widths(rows.empty() ? 0 : rows.front().size());
    for (const std::vector<std::string>& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], std::min(WidthOf(row[column]), kWidestColumn));
        }
    }
    std::string table;
    for (const std::vector<std::string>& row : rows) {
        for (std::size_t column = 0; column + 1 < row.size(); ++column) {
            const std::size_t width = WidthOf(row[column]);
            table.append(row[column]).append(2 + widths[column] - std::min(width, widths[column]), ' ');
        }
        table.append(row.back()).append("\n");
    }
    return table;
}

} // namespace lusym
