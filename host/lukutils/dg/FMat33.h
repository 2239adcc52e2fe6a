#pragma once

#include <dg/DVec3.h>

#include <array>
#include <cstddef>

namespace dg
{

/// Rotation and scale, single precision, row-major. Starts as the identity.
///
/// Use: matrix times column vector transforms from the inner frame to the outer one, so column i is where axis i of the
/// inner frame goes, its length is the scale along that axis, and `a * b` applies b first.
class FMat33
{
public:
    static const FMat33 IDENTITY;

    constexpr FMat33() noexcept = default;

    /// Nine entries, row by row.
    constexpr explicit FMat33(const std::array<float, 9>& rowMajor) noexcept : m_entries(rowMajor) {}
    constexpr FMat33(float m00, float m01, float m02, float m10, float m11, float m12, float m20, float m21,
                     float m22) noexcept
        : m_entries{m00, m01, m02, m10, m11, m12, m20, m21, m22}
    {
    }

    /// A diagonal matrix.
    static FMat33 Scaling(double x, double y, double z) noexcept
    {
        return {static_cast<float>(x), 0.0F, 0.0F, 0.0F, static_cast<float>(y), 0.0F, 0.0F, 0.0F,
                static_cast<float>(z)};
    }

    constexpr float Get(int row, int column) const noexcept { return m_entries[Index(row, column)]; }
    constexpr void Set(int row, int column, float value) noexcept { m_entries[Index(row, column)] = value; }

    /// Row by row.
    constexpr const std::array<float, 9>& GetEntries() const noexcept { return m_entries; }

    constexpr DVec3 GetColumn(int column) const noexcept { return {Get(0, column), Get(1, column), Get(2, column)}; }

    /// Lengths of the three columns: `m * Scaling(1 / s.x, 1 / s.y, 1 / s.z)` is the matrix without its scale.
    LUHOST_API DVec3 GetScale() const noexcept;

    /// Positive for rotations, negative for mirrors, 0 for a matrix that flattens.
    LUHOST_API double GetDeterminant() const noexcept;

    friend constexpr bool operator==(const FMat33&, const FMat33&) noexcept = default;

    /// Entries are summed in double precision and rounded once.
    LUHOST_API friend FMat33 operator*(const FMat33& a, const FMat33& b) noexcept;

    friend constexpr DVec3 operator*(const FMat33& m, const DVec3& v) noexcept
    {
        return {m.Get(0, 0) * v.x + m.Get(0, 1) * v.y + m.Get(0, 2) * v.z,
                m.Get(1, 0) * v.x + m.Get(1, 1) * v.y + m.Get(1, 2) * v.z,
                m.Get(2, 0) * v.x + m.Get(2, 1) * v.y + m.Get(2, 2) * v.z};
    }

private:
    static constexpr std::size_t Index(int row, int column) noexcept
    {
        return static_cast<std::size_t>(row) * 3 + static_cast<std::size_t>(column);
    }

    std::array<float, 9> m_entries{1.0F, 0.0F, 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F};
};

inline constexpr FMat33 FMat33::IDENTITY{};

/// True when no entry differs by more than the tolerance; false when any is NaN or infinite.
LUHOST_API bool ApproximateEquality(const FMat33& a, const FMat33& b, double tolerance) noexcept;

} // namespace dg
