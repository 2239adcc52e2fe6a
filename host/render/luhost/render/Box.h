#pragma once

#include <luhost/render/Drawing.h>

#include <array>
#include <optional>
#include <vector>

namespace luhost::render
{

using Corners = std::array<dg::DPoint2D, 4>;
using Polygon = std::vector<dg::DPoint2D>;

struct Line {
    Polygon points;
    bool closed = false;
};

/// Of a drawing, or of the pixels that it is drawn onto.
struct Sheet {
    double width;
    double height;
    double thinLine; ///< 1/96 inch
};

/// What of the box of a picture is drawn, the same for every output.
///
/// Lines and outline stay near the sheet wherever the corners lie, so that no output meets coordinates that it cannot
/// hold or dashes without end.
struct Box {
    enum class Fit {
        Crooked,       ///< concave or crossing itself: no picture fits into it
        Parallelogram, ///< the picture is moved, turned, scaled and slanted
        Perspective    ///< or a part of something far larger than the sheet
    };
    Fit fit = Fit::Crooked;
    Polygon outline;
    std::vector<Line> frame;
    std::vector<Line> cross; ///< the diagonals
};

/// Nothing for corners that are not numbers or too far away, for a box without an area, and for one off the sheet.
/// @param lineWidth of the frame
std::optional<Box> MakeBox(const Corners& corners, double lineWidth, const Sheet& sheet);

/// Maps a plane with perspective; `Map` divides.
class Homography
{
public:
    /// From where the corners lie to the unit square: upper left, upper right, lower right, lower left go to (0, 0), (1, 0),
    /// (1, 1), (0, 1).
    /// @param corners of a convex quadrilateral
    static Homography ToUnitSquare(const Corners& corners);

    /// @return false on and beyond the horizon
    bool Map(double x, double y, dg::DPoint2D& mapped) const noexcept;

private:
    std::array<double, 9> m_rows{};
};

} // namespace luhost::render
