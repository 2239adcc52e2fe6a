#include "PlacementOrder.h"

#include "Printable.h"
#include "TextValues.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace lusym
{

namespace
{

using Setter = bool (*)(PlacementOrder&, const std::string&);

constexpr double kLargest = 1e9;

bool SetNumber(double& field, const std::string& value)
{
    const std::optional<double> number = ParseNumber(value);
    field = number.value_or(field);
    return number && std::abs(*number) <= kLargest;
}

template <double dg::DPoint3D::*Coordinate>
bool SetCoordinate(PlacementOrder& order, const std::string& value)
{
    order.at = order.at.value_or(dg::DPoint3D());
    return SetNumber((*order.at).*Coordinate, value);
}

bool SetZ(PlacementOrder& order, const std::string& value)
{
    order.hasZ = true;
    return SetCoordinate<&dg::DPoint3D::z>(order, value);
}

bool SetAt(PlacementOrder& order, const std::string& value)
{
    const std::vector<double> numbers = ParseNumbers(value, ',');
    if (numbers.size() != 2 && numbers.size() != 3) {
        return false;
    }
    order.hasZ = numbers.size() == 3;
    order.at = dg::DPoint3D(numbers[0], numbers[1], order.hasZ ? numbers[2] : 0.0);
    return std::ranges::all_of(numbers, [](double number) { return std::abs(number) <= kLargest; });
}

bool SetPage(PlacementOrder& order, const std::string& value)
{
    constexpr double kLastPage = 1e6;
    double page = 0.0;
    const bool isPage = value == "view" || (SetNumber(page, value) && page >= 1.0 && page <= kLastPage);
    order.page = static_cast<int>(page);
    return isPage && std::floor(page) == page;
}

bool SetSide(double& side, const std::string& value) { return SetNumber(side, value) && side > 0.0; }

bool SetWidth(PlacementOrder& order, const std::string& value) { return SetSide(order.width, value); }

bool SetHeight(PlacementOrder& order, const std::string& value) { return SetSide(order.height, value); }

/// "20,10"; "20" and "20," for the width alone, ",10" for the height alone.
bool SetSize(PlacementOrder& order, const std::string& value)
{
    const std::size_t comma = std::min(value.find(','), value.size());
    const std::string width = value.substr(0, comma);
    const std::string height = comma == value.size() ? std::string() : value.substr(comma + 1);
    return (!width.empty() || !height.empty()) && (width.empty() || SetWidth(order, width)) &&
           (height.empty() || SetHeight(order, height));
}

bool SetRotate(PlacementOrder& order, const std::string& value)
{
    double degrees = 0.0;
    const bool isTurn = SetNumber(degrees, value) && std::abs(degrees) <= 360.0 && std::fmod(degrees, 90.0) == 0.0;
    // Symbols turn clockwise only.
    order.rotate = isTurn ? (static_cast<int>(degrees) + 360) % 360 : 0;
    return isTurn;
}

bool SetFlip(PlacementOrder& order, const std::string& value)
{
    order.flipHorizontally = value == "h" || value == "hv";
    order.flipVertically = value == "v" || value == "hv";
    return order.flipHorizontally || order.flipVertically;
}

template <class Flag>
bool SetFlag(Flag& flag, const std::string& value)
{
    flag = value == "true" || value == "1" || value == "yes";
    return flag == true || value == "false" || value == "0" || value == "no";
}

bool SetFixed(PlacementOrder& order, const std::string& value) { return SetFlag(order.isFixed, value); }

bool SetScreenSpace(PlacementOrder& order, const std::string& value) { return SetFlag(order.isScreenSpace, value); }

template <dg::Color PlacementOrder::*Field>
bool SetColor(PlacementOrder& order, const std::string& value)
{
    const std::optional<dg::Color> color = ParseColor(value);
    order.*Field = color.value_or(order.*Field);
    return color.has_value();
}

bool SetEntry(PlacementOrder& order, const std::string& value)
{
    order.entry = value;
    return true;
}

template <std::optional<std::string> PlacementOrder::*Field>
bool SetText(PlacementOrder& order, const std::string& value)
{
    order.*Field = value;
    return true;
}

struct FieldKind {
    std::string_view name;
    Setter set;
    const char* expected;
};

constexpr FieldKind kFields[] = {
    {"entry", &SetEntry, "the id of a library entry"},
    {"at", &SetAt, "X,Y or X,Y,Z"},
    {"x", &SetCoordinate<&dg::DPoint3D::x>, "a number"},
    {"y", &SetCoordinate<&dg::DPoint3D::y>, "a number"},
    {"z", &SetZ, "a number"},
    {"page", &SetPage, "the number of a page, from 1, or \"view\""},
    {"size", &SetSize, "W,H, W or ,H, over 0"},
    {"width", &SetWidth, "a number over 0"},
    {"height", &SetHeight, "a number over 0"},
    {"rotate", &SetRotate, "a multiple of 90, from -360 to 360"},
    {"flip", &SetFlip, "h, v or hv"},
    {"fixed", &SetFixed, "true or false"},
    {"screen-space", &SetScreenSpace, "true or false"},
    {"title", &SetText<&PlacementOrder::title>, "a text"},
    {"description", &SetText<&PlacementOrder::description>, "a text"},
    {"frame", &SetColor<&PlacementOrder::frame>, "#rrggbb, #rrggbbaa, none, or a colour such as red"},
    {"fill", &SetColor<&PlacementOrder::fill>, "#rrggbb, #rrggbbaa, none, or a colour such as red"},
};

const FieldKind* FindField(std::string_view name)
{
    const auto* const field = std::ranges::find(kFields, name, &FieldKind::name);
    return field == std::end(kFields) ? nullptr : field;
}

std::string FieldNames()
{
    std::string names;
    for (const FieldKind& field : kFields) {
        names.append(names.empty() ? "" : ", ").append(field.name);
    }
    return names;
}

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
        if (!FindField(column)) {
            error = "there is no column " + Quote(column) + "; there are " + FieldNames();
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
        if (line.error.empty() && !value.is_null()) {
            SetPlacement(line.order, name, OptionText(value), line.error);
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

bool SetPlacement(PlacementOrder& order, std::string_view name, const std::string& value, std::string& error)
{
    const FieldKind* const field = FindField(name);
    if (!field) {
        error = "there is no field " + Quote(name) + "; there are " + FieldNames();
    } else if (!field->set(order, value)) {
        error = std::string(name) + ": " + Quote(value) + " is not " + field->expected;
    }
    return error.empty();
}

bool IsComplete(const PlacementOrder& order, std::string& error)
{
    if (order.entry.empty()) {
        error = "entry: the id of a library entry is missing";
    } else if (!order.at) {
        error = "at: where to place it is missing";
    } else if (order.page != 0 && order.hasZ) {
        error = "at: a page has no Z";
    } else if (order.page != 0 && (order.isFixed || order.isScreenSpace)) {
        error = std::string(order.isFixed ? "fixed" : "screen-space") + ": is for symbols over the view, not on a page";
    } else if (order.isScreenSpace && order.isFixed.value_or(false)) {
        error = "fixed: a symbol on the screen has no place of its own in space";
    }
    return error.empty();
}

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
