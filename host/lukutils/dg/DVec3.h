#pragma once

#include <du/Export.h>

#include <limits>

namespace dg
{

/// Vector: a direction or a difference of points, in the unit of its frame. Starts as (0, 0, 0).
///
/// Errors: a value is bad when any component is NaN; arithmetic with a bad value stays bad, and a bad value equals
/// nothing, not even itself.
struct DVec3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    /// A quiet NaN in every component.
    static const DVec3 BAD;

    constexpr DVec3() noexcept = default;
    constexpr DVec3(double xValue, double yValue, double zValue) noexcept : x(xValue), y(yValue), z(zValue) {}

    /// @param axis 0, 1 or 2
    constexpr double Get(int axis) const noexcept { return axis == 0 ? x : axis == 1 ? y : z; }
    constexpr void Get(double& xValue, double& yValue, double& zValue) const noexcept
    {
        xValue = x;
        yValue = y;
        zValue = z;
    }

    constexpr bool IsBad() const noexcept { return x != x || y != y || z != z; }

    constexpr double Dot(const DVec3& other) const noexcept { return x * other.x + y * other.y + z * other.z; }
    constexpr DVec3 Cross(const DVec3& other) const noexcept
    {
        return {y * other.z - z * other.y, z * other.x - x * other.z, x * other.y - y * other.x};
    }

    LUHOST_API double Length() const noexcept;

    /// The same direction with length 1; BAD for a vector without a direction (zero, infinite or bad).
    LUHOST_API DVec3 Normalized() const noexcept;

    friend constexpr bool operator==(const DVec3&, const DVec3&) noexcept = default;
    friend constexpr DVec3 operator+(const DVec3& a, const DVec3& b) noexcept
    {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend constexpr DVec3 operator-(const DVec3& a, const DVec3& b) noexcept
    {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend constexpr DVec3 operator-(const DVec3& a) noexcept { return {-a.x, -a.y, -a.z}; }
    friend constexpr DVec3 operator*(const DVec3& a, double factor) noexcept
    {
        return {a.x * factor, a.y * factor, a.z * factor};
    }
    friend constexpr DVec3 operator*(double factor, const DVec3& a) noexcept { return a * factor; }
};

inline constexpr DVec3 DVec3::BAD{std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN(),
                                  std::numeric_limits<double>::quiet_NaN()};

/// True when no component differs by more than the tolerance; false when any is bad or infinite.
LUHOST_API bool ApproximateEquality(const DVec3& a, const DVec3& b, double tolerance) noexcept;

} // namespace dg
