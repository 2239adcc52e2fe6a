#pragma once

#include <dg/DPoint3D.h>

#include <array>
#include <cstddef>

namespace dg
{

/// 4x4 transform, double precision, row-major, for column vectors (`a * b` applies b first). The translation stands in
/// the last column. Starts as the identity.
class DMat44
{
public:
    static const DMat44 IDENTITY;

    constexpr DMat44() noexcept = default;

    /// Sixteen entries, row by row.
    constexpr explicit DMat44(const std::array<double, 16>& rowMajor) noexcept : m_entries(rowMajor) {}

    constexpr double Get(int row, int column) const noexcept { return m_entries[Index(row, column)]; }
    constexpr void Set(int row, int column, double value) noexcept { m_entries[Index(row, column)] = value; }

    /// Row by row.
    constexpr const std::array<double, 16>& GetEntries() const noexcept { return m_entries; }

    /// Rotation, scale and translation of a point; the last row is taken as (0, 0, 0, 1).
    LUHOST_API DPoint3D TransformPoint(const DPoint3D& point) const noexcept;

    /// Rotation and scale only.
    LUHOST_API DVec3 TransformVector(const DVec3& vector) const noexcept;

    /// Turns the matrix into its inverse.
    /// @return false, and the matrix as it was, when it is singular or not finite
    [[nodiscard]] LUHOST_API bool Invert() noexcept;

    friend constexpr bool operator==(const DMat44&, const DMat44&) noexcept = default;
    LUHOST_API friend DMat44 operator*(const DMat44& a, const DMat44& b) noexcept;

private:
    static constexpr std::size_t Index(int row, int column) noexcept
    {
        return static_cast<std::size_t>(row) * 4 + static_cast<std::size_t>(column);
    }

    std::array<double, 16> m_entries{1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0};
};

inline constexpr DMat44 DMat44::IDENTITY{};

} // namespace dg
