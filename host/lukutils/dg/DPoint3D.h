#pragma once

#include <dg/DVec3.h>

namespace dg
{

/// Point, in the unit of its frame. Starts at the origin.
///
/// Errors: a point is bad when any component is NaN ("no position given"); arithmetic with a bad point or vector stays
/// bad, and a bad point equals nothing, not even itself: ask IsBad().
struct DPoint3D {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    static const DPoint3D ORIGIN;
    /// A quiet NaN in every component.
    static const DPoint3D BAD;

    constexpr DPoint3D() noexcept = default;
    constexpr DPoint3D(double xValue, double yValue, double zValue) noexcept : x(xValue), y(yValue), z(zValue) {}

    /// @param axis 0, 1 or 2
    constexpr double Get(int axis) const noexcept { return axis == 0 ? x : axis == 1 ? y : z; }
    constexpr void Get(double& xValue, double& yValue, double& zValue) const noexcept
    {
        xValue = x;
        yValue = y;
        zValue = z;
    }

    constexpr bool IsBad() const noexcept { return x != x || y != y || z != z; }

    friend constexpr bool operator==(const DPoint3D&, const DPoint3D&) noexcept = default;
    friend constexpr DVec3 operator-(const DPoint3D& a, const DPoint3D& b) noexcept
    {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend constexpr DPoint3D operator+(const DPoint3D& a, const DVec3& b) noexcept
    {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend constexpr DPoint3D operator-(const DPoint3D& a, const DVec3& b) noexcept
    {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
};

inline constexpr DPoint3D DPoint3D::ORIGIN{0.0, 0.0, 0.0};
inline constexpr DPoint3D DPoint3D::BAD{std::numeric_limits<double>::quiet_NaN(),
                                        std::numeric_limits<double>::quiet_NaN(),
                                        std::numeric_limits<double>::quiet_NaN()};

/// True when no component differs by more than the tolerance; false when any is bad or infinite.
inline bool ApproximateEquality(const DPoint3D& a, const DPoint3D& b, double tolerance) noexcept
{
    return ApproximateEquality(a - DPoint3D::ORIGIN, b - DPoint3D::ORIGIN, tolerance);
}

} // namespace dg
