#pragma once

namespace dg
{

/// Point of a page or of the screen.
struct DPoint2D {
    double x = 0.0;
    double y = 0.0;

    friend constexpr bool operator==(const DPoint2D&, const DPoint2D&) noexcept = default;
};

} // namespace dg
