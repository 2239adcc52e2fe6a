#include <luhost/render/Box.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace luhost::render
{

namespace
{

/// Sheets from the sheet that a corner may lie before its box is cut down to what is seen.
constexpr double kNearSheets = 16.0;
/// Units beyond which double precision no longer tells where on the sheet anything lies.
constexpr double kFarthest = 1e9;
/// Of the thin line: what a corner may be off and its box is still a parallelogram.
constexpr double kParallelogramTolerance = 0.05;

struct Bounds {
    double left;
    double top;
    double right;
    double bottom;
};

double Cross(const dg::DPoint2D& a, const dg::DPoint2D& b, const dg::DPoint2D& c) noexcept
{
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

bool IsInReach(const Corners& corners, double reach) noexcept
{
    return std::all_of(corners.begin(), corners.end(), [reach](const dg::DPoint2D& corner) {
        return std::fabs(corner.x) <= reach && std::fabs(corner.y) <= reach;
    });
}

Bounds BoundsOf(const Corners& corners) noexcept
{
    Bounds bounds{corners[0].x, corners[0].y, corners[0].x, corners[0].y};
    for (const dg::DPoint2D& corner : corners) {
        bounds = {std::min(bounds.left, corner.x), std::min(bounds.top, corner.y), std::max(bounds.right, corner.x),
                  std::max(bounds.bottom, corner.y)};
    }
    return bounds;
}

/// The largest triangle of three corners, twice: 0 when all lie on one line.
double LargestCross(const Corners& corners) noexcept
{
    double largest = 0.0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        largest = std::max(largest, std::fabs(Cross(corners[i], corners[(i + 1) % 4], corners[(i + 2) % 4])));
    }
    return largest;
}

Box::Fit FitOf(const Corners& corners, double smallestCross, double tolerance) noexcept
{
    int left = 0;
    int right = 0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const double cross = Cross(corners[i], corners[(i + 1) % 4], corners[(i + 2) % 4]);
        left += cross > smallestCross ? 1 : 0;
        right += cross < -smallestCross ? 1 : 0;
    }
    if (left != 4 && right != 4) {
        return Box::Fit::Crooked;
    }
    const double gapX = corners[0].x + corners[2].x - corners[1].x - corners[3].x;
    const double gapY = corners[0].y + corners[2].y - corners[1].y - corners[3].y;
    return std::hypot(gapX, gapY) <= tolerance ? Box::Fit::Parallelogram : Box::Fit::Perspective;
}

/// Keeps the side of a straight line on which `distance` is not negative.
template <class Distance>
Polygon CutBy(const Polygon& polygon, const Distance& distance)
{
    Polygon cut;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const dg::DPoint2D& from = polygon[i];
        const dg::DPoint2D& to = polygon[(i + 1) % polygon.size()];
        const double fromDistance = distance(from);
        const double toDistance = distance(to);
        if (fromDistance >= 0.0) {
            cut.push_back(from);
        }
        if ((fromDistance >= 0.0) != (toDistance >= 0.0)) {
            const double part = fromDistance / (fromDistance - toDistance);
            cut.push_back({from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part});
        }
    }
    return cut;
}

Polygon CutByBounds(const Polygon& polygon, const Bounds& bounds)
{
    Polygon cut = CutBy(polygon, [&](const dg::DPoint2D& point) { return point.x - bounds.left; });
    cut = CutBy(cut, [&](const dg::DPoint2D& point) { return bounds.right - point.x; });
    cut = CutBy(cut, [&](const dg::DPoint2D& point) { return point.y - bounds.top; });
    return CutBy(cut, [&](const dg::DPoint2D& point) { return bounds.bottom - point.y; });
}

/// Appends what of a stretch lies within the bounds, if anything.
void AppendCutLine(std::vector<Line>& lines, const dg::DPoint2D& from, const dg::DPoint2D& to, const Bounds& bounds)
{
    // As a polygon of two corners the stretch is cut at both its ends, once on the way there and once on the way back.
    Polygon cut = CutByBounds({from, to}, bounds);
    if (cut.size() >= 2) {
        cut.resize(2);
        lines.push_back({std::move(cut), false});
    }
}

void CutDown(Box& box, const Corners& corners, const Bounds& bounds)
{
    box.outline = CutByBounds(box.outline, bounds);
    box.frame.clear();
    box.cross.clear();
    for (std::size_t i = 0; i < corners.size(); ++i) {
        AppendCutLine(box.frame, corners[i], corners[(i + 1) % 4], bounds);
    }
    AppendCutLine(box.cross, corners[0], corners[2], bounds);
    AppendCutLine(box.cross, corners[1], corners[3], bounds);
    if (box.fit == Box::Fit::Parallelogram) {
        box.fit = Box::Fit::Perspective;
    }
}

} // namespace

std::optional<Box> MakeBox(const Corners& corners, double lineWidth, const Sheet& sheet)
{
    const double smallestCross = 1e-6 * sheet.thinLine * sheet.thinLine;
    if (!IsInReach(corners, kFarthest) || !(LargestCross(corners) > smallestCross)) {
        return std::nullopt;
    }
    const Bounds bounds = BoundsOf(corners);
    if (bounds.left - lineWidth >= sheet.width || bounds.right + lineWidth <= 0.0 ||
        bounds.top - lineWidth >= sheet.height || bounds.bottom + lineWidth <= 0.0) {
        return std::nullopt;
    }
    Box box;
    box.fit = FitOf(corners, smallestCross, kParallelogramTolerance * sheet.thinLine);
    box.outline.assign(corners.begin(), corners.end());
    box.frame.push_back({box.outline, true});
    box.cross.push_back({{corners[0], corners[2]}, false});
    box.cross.push_back({{corners[1], corners[3]}, false});
    if (!IsInReach(corners, kNearSheets * std::max(sheet.width, sheet.height))) {
        const double margin = lineWidth + sheet.thinLine;
        CutDown(box, corners, {-margin, -margin, sheet.width + margin, sheet.height + margin});
    }
    return box;
}

Homography Homography::ToUnitSquare(const Corners& corners)
{
    const auto& [p0, p1, p2, p3] = corners;
    const double sumX = p0.x - p1.x + p2.x - p3.x;
    const double sumY = p0.y - p1.y + p2.y - p3.y;
    const double determinant = (p1.x - p2.x) * (p3.y - p2.y) - (p3.x - p2.x) * (p1.y - p2.y);
    const double g = (sumX * (p3.y - p2.y) - (p3.x - p2.x) * sumY) / determinant;
    const double h = ((p1.x - p2.x) * sumY - sumX * (p1.y - p2.y)) / determinant;
    const double a = p1.x - p0.x + g * p1.x;
    const double b = p3.x - p0.x + h * p3.x;
    const double d = p1.y - p0.y + g * p1.y;
    const double e = p3.y - p0.y + h * p3.y;
    const double c = p0.x;
    const double f = p0.y;

    // The inverse up to a factor, which falls out in the division; its sign is chosen so that the inside is in front.
    Homography result;
    result.m_rows = {e - f * h,     c * h - b,     b * f - c * e, f * g - d,    a - c * g,
                     c * d - a * f, d * h - e * g, b * g - a * h, a * e - b * d};
    if (result.m_rows[6] * p0.x + result.m_rows[7] * p0.y + result.m_rows[8] < 0.0) {
        for (double& entry : result.m_rows) {
            entry = -entry;
        }
    }
    return result;
}

bool Homography::Map(double x, double y, dg::DPoint2D& mapped) const noexcept
{
    const double depth = m_rows[6] * x + m_rows[7] * y + m_rows[8];
    if (!(depth > 0.0)) {
        return false;
    }
    mapped = {(m_rows[0] * x + m_rows[1] * y + m_rows[2]) / depth, (m_rows[3] * x + m_rows[4] * y + m_rows[5]) / depth};
    return std::isfinite(mapped.x) && std::isfinite(mapped.y);
}

} // namespace luhost::render
