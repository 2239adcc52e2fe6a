#pragma once

#include <luhost/render/Box.h>

#include <vector>

namespace luhost::render
{

/// How lines of a drawing are put down, the same for every output: numbers that are some, near the sheet.
struct PlacedStrokes {
    /// Whether others differ in their lines alone.
    bool LooksLike(const PlacedStrokes& other) const
    {
        return !(width < other.width) && !(other.width < width) && dashes == other.dashes && color == other.color;
    }

    std::vector<Line> lines; ///< none where nothing is seen
    double width = 0.0;
    std::vector<double> dashes;
    dg::Color color;
};

/// @param scaleX,scaleY from the drawing to the sheet
PlacedStrokes PlaceStrokes(const DrawnStrokes& strokes, const Sheet& sheet, double scaleX, double scaleY);

} // namespace luhost::render
