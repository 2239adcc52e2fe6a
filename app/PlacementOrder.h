#pragma once

#include "Turn.h"

#include <dg/Color.h>
#include <dg/DPoint3D.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lusym
{

/// What a user wants of one symbol, as an option, a cell of a table or a field of an object says it.
struct PlacementOrder {
    std::string entry;
    std::optional<dg::DPoint3D> at; ///< of the centre of a picture, of the origin of a shape
    bool hasZ = false;
    int page = 0;             ///< from 1; 0 for the view
    double width = 0.0;       ///< as it is seen; 0 when it follows
    double height = 0.0;      ///< as it is seen; 0 when it follows
    int rotate = 0;           ///< of a picture, clockwise, in degrees
    std::optional<Turn> turn; ///< of a shape
    std::optional<double> scale;
    std::optional<dg::Color> color;
    std::vector<std::string> attach; ///< parts, by path, id or name
    bool flipHorizontally = false;
    bool flipVertically = false;
    std::optional<bool> isFixed; ///< as the entry says when it is empty
    bool isScreenSpace = false;
    std::optional<std::string> title;
    std::optional<std::string> description;
    dg::Color frame{0.0F, 0.0F, 0.0F, 0.0F};
    dg::Color fill{0.0F, 0.0F, 0.0F, 0.0F};
    std::size_t line = 0; ///< of the file that it stands in; 0 for the command line
};

/// Sets what the word names: entry, at, x, y, z, page, size, width, height, rotate, flip, fixed, screen-space, title,
/// description, frame, fill, scale, color, attach. The last one adds a part each time. An empty value leaves the default, but for texts.
/// @param[out] error what is wrong with the value, with its name
bool SetPlacement(PlacementOrder& order, std::string_view name, const std::string& value, std::string& error);

bool IsPlacementField(std::string_view name);
/// "entry, at, x", for messages
std::string PlacementFieldNames();

/// Whether nothing is missing and nothing contradicts. @param[out] error the first thing that does
bool IsComplete(const PlacementOrder& order, std::string& error);

/// An order that could not be read, with its reason, or one to carry out.
struct PlacementLine {
    PlacementOrder order;
    std::string error;
};

/// Reads orders: a table of comma- or semicolon-separated values whose first line names the columns, an array of JSON
/// objects, or one object on each line. What is wrong with one order spoils no other.
/// @param[out] error why nothing can be read of it; empty when something could
std::vector<PlacementLine> ReadPlacements(std::string_view text, std::string& error);

} // namespace lusym
