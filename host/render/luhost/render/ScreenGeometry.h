#pragma once

#include <dg/DPoint2D.h>

#include <algorithm>
#include <cmath>

namespace luhost::render
{

inline double Distance(const dg::DPoint2D& a, const dg::DPoint2D& b) noexcept
{
    return std::hypot(b.x - a.x, b.y - a.y);
}

/// From a point to the nearest one between two others.
inline double DistanceToSegment(const dg::DPoint2D& point, const dg::DPoint2D& a, const dg::DPoint2D& b) noexcept
{
    const double x = b.x - a.x;
    const double y = b.y - a.y;
    const double square = x * x + y * y;
    const double share = square > 0.0 ? ((point.x - a.x) * x + (point.y - a.y) * y) / square : 0.0;
    const double within = std::clamp(share, 0.0, 1.0);
    return Distance(point, {a.x + x * within, a.y + y * within});
}

/// To thousandths, so that files are short and do not tell how machines round.
inline dg::DPoint2D RoundedPoint(const dg::DPoint2D& point) noexcept
{
    constexpr double kSteps = 1000.0;
    return {std::round(point.x * kSteps) / kSteps + 0.0, std::round(point.y * kSteps) / kSteps + 0.0};
}

} // namespace luhost::render
