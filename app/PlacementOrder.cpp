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

/// A size that a document, in its single precision, can tell from none.
bool SetSide(double& side, const std::string& value) { return SetNumber(side, value) && side >= 1.0 / kLargest; }

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
    order.turn = ParseTurn(value);
    if (order.turn) {
        return true;
    }
    double degrees = 0.0;
    const bool isTurn = SetNumber(degrees, value) && std::abs(degrees) <= 360.0 && std::fmod(degrees, 90.0) == 0.0;
    // Symbols turn clockwise only.
    order.rotate = isTurn ? (static_cast<int>(degrees) + 360) % 360 : 0;
    return isTurn;
}

bool SetScale(PlacementOrder& order, const std::string& value)
{
    double scale = 0.0;
    const bool isScale = SetSide(scale, value);
    order.scale = scale;
    return isScale && static_cast<float>(scale) > 0.0F;
}

bool SetSymbolColor(PlacementOrder& order, const std::string& value)
{
    order.color = ParseColor(value);
    // A shape without a colour would be none.
    return order.color && order.color->alpha > 0.0F;
}

bool SetAttach(PlacementOrder& order, const std::string& value)
{
    order.attach.push_back(value);
    return !value.empty();
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
    {"rotate", &SetRotate, "a multiple of 90 from -360 to 360, nor an axis with degrees such as z,30"},
    {"flip", &SetFlip, "h, v or hv"},
    {"fixed", &SetFixed, "true or false"},
    {"screen-space", &SetScreenSpace, "true or false"},
    {"title", &SetText<&PlacementOrder::title>, "a text"},
    {"description", &SetText<&PlacementOrder::description>, "a text"},
    {"frame", &SetColor<&PlacementOrder::frame>, "#rrggbb, #rrggbbaa, none, or a colour such as red"},
    {"scale", &SetScale, "a number over 0"},
    {"color", &SetSymbolColor, "#rrggbb or a colour such as red"},
    {"attach", &SetAttach, "a part"},
    {"fill", &SetColor<&PlacementOrder::fill>, "#rrggbb, #rrggbbaa, none, or a colour such as red"},
};

const FieldKind* FindField(std::string_view name)
{
    const auto* const field = std::ranges::find(kFields, name, &FieldKind::name);
    return field == std::end(kFields) ? nullptr : field;
}

} // namespace

bool IsPlacementField(std::string_view name) { return FindField(name) != nullptr; }

std::string PlacementFieldNames()
{
    std::string names;
    for (const FieldKind& field : kFields) {
        names.append(names.empty() ? "" : ", ").append(field.name);
    }
    return names;
}

bool SetPlacement(PlacementOrder& order, std::string_view name, const std::string& value, std::string& error)
{
    const FieldKind* const field = FindField(name);
    if (!field) {
        error = "there is no field " + Quote(name) + "; there are " + PlacementFieldNames();
    } else if (!field->set(order, value)) {
        error = std::string(name) + ": " + Quote(value) + " is not " + field->expected;
    }
    return error.empty();
}

bool IsComplete(const PlacementOrder& order, std::string& error)
{
    if (order.entry.empty()) {
        error = "entry: the id of a library entry is missing";
    } else if (!order.at && order.attach.empty()) {
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

} // namespace lusym
