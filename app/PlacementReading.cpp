#include "PlacementOrder.h"
#include "Printable.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace lusym
{

namespace
{

/// One row of a table, and the line on which it begins.
struct TableLine {
    std::vector<std::string> cells;
    std::size_t line = 0;
};

/// Comma-separated values as spreadsheets write them: cells in double quotes may hold separators, line feeds, and quotes
/// that stand twice.
class TableReader
{
public:
    TableReader(std::string_view text, char separator) : m_text(text), m_separator(separator) {}

    /// Blank lines are passed over. @return false at the end
    bool Next(TableLine& row)
    {
        do {
            if (m_at == m_text.size()) {
                return false;
            }
            row = {{}, m_line};
            ReadRow(row.cells);
        } while (row.cells.size() == 1 && row.cells[0].empty());
        return true;
    }

private:
    void ReadRow(std::vector<std::string>& cells)
    {
        std::string cell;
        bool isQuoted = false;
        for (; m_at < m_text.size(); ++m_at) {
            const char letter = m_text[m_at];
            m_line += letter == '\n' ? 1 : 0;
            if (letter == '"' && isQuoted && m_text.substr(m_at + 1, 1) == "\"") {
                cell += letter;
                ++m_at;
            } else if (letter == '"' && (isQuoted || cell.empty())) {
                isQuoted = !isQuoted;
            } else if (letter == m_separator && !isQuoted) {
                cells.push_back(std::exchange(cell, {}));
            } else if (letter == '\n' && !isQuoted) {
                ++m_at;
                break;
            } else if (letter != '\r' || isQuoted) {
                cell += letter;
            }
        }
        cells.push_back(std::move(cell));
    }

    std::string_view m_text;
    char m_separator;
    std::size_t m_at = 0;
    std::size_t m_line = 1;
};

void CheckComplete(PlacementLine& line)
{
    if (line.error.empty()) {
        IsComplete(line.order, line.error);
    }
}

PlacementLine ReadTableLine(const TableLine& row, const std::vector<std::string>& columns)
{
    PlacementLine line;
    line.order.line = row.line;
    if (row.cells.size() > columns.size()) {
        line.error = "the line has " + std::to_string(row.cells.size()) + " cells, and there are " +
                     std::to_string(columns.size()) +
                     " columns; put a cell that holds the separator into double quotes";
    }
    for (std::size_t index = 0; index < row.cells.size() && line.error.empty(); ++index) {
        if (!row.cells[index].empty()) {
            SetPlacement(line.order, columns[index], row.cells[index], line.error);
        }
    }
    CheckComplete(line);
    return line;
}

std::vector<PlacementLine> ReadTable(std::string_view text, std::string& error)
{
    const std::string_view heading = text.substr(0, text.find('\n'));
    const bool hasSemicolons = heading.find(';') != heading.npos && heading.find(',') == heading.npos;
    TableReader reader(text, hasSemicolons ? ';' : ',');
    TableLine row;
    std::vector<PlacementLine> lines;
    if (!reader.Next(row)) {
        error = "it is empty; begin with a line that names the columns, such as entry,x,y";
        return lines;
    }
    const std::vector<std::string> columns = row.cells;
    for (const std::string& column : columns) {
        if (!IsPlacementField(column)) {
            error = "there is no column " + Quote(column) + "; there are " + PlacementFieldNames();
            return lines;
        }
    }
    while (reader.Next(row)) {
        lines.push_back(ReadTableLine(row, columns));
    }
    return lines;
}

/// The text that an option would have: "20,30" of an array, "true", "12.5".
std::string OptionText(const nlohmann::json& value)
{
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (value.is_object()) {
        return "{...}";
    }
    if (!value.is_array()) {
        return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }
    std::string text;
    for (const nlohmann::json& part : value) {
        const bool isNumber = part.is_number();
        text.append(text.empty() ? "" : ",").append(isNumber ? part.dump() : "?");
    }
    return text;
}

PlacementLine ReadObject(const nlohmann::json& object, std::size_t number)
{
    PlacementLine line;
    line.order.line = number;
    if (!object.is_object()) {
        line.error = "it is no JSON object; write {\"entry\": \"...\", \"at\": [X, Y]}";
        return line;
    }
    for (const auto& [name, value] : object.items()) {
        const bool isList = name == "attach" && value.is_array();
        for (const nlohmann::json& each : isList ? value : nlohmann::json::array({value})) {
            if (line.error.empty() && !each.is_null()) {
                SetPlacement(line.order, name, OptionText(each), line.error);
            }
        }
    }
    CheckComplete(line);
    return line;
}

std::vector<PlacementLine> ReadJsonLines(std::string_view text)
{
    std::vector<PlacementLine> lines;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        if (line.find_first_not_of(" \t\r") != line.npos) {
            lines.push_back(ReadObject(nlohmann::json::parse(line, nullptr, false), number));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::vector<PlacementLine> ReadJsonArray(std::string_view text, std::string& error)
{
    std::vector<PlacementLine> lines;
    const nlohmann::json array = nlohmann::json::parse(text, nullptr, false);
    if (array.is_discarded()) {
        error = "it is no JSON document; write an array of objects, or an object on each line";
        return lines;
    }
    for (const nlohmann::json& object : array) {
        // Elements have no lines of their own; their number is what a reader can count.
        lines.push_back(ReadObject(object, lines.size() + 1));
    }
    return lines;
}

} // namespace

std::vector<PlacementLine> ReadPlacements(std::string_view text, std::string& error)
{
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    const std::size_t start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    const std::string_view first = text.substr(start, 1);
    return first == "[" ? ReadJsonArray(text, error) : first == "{" ? ReadJsonLines(text) : ReadTable(text, error);
}

} // namespace lusym
