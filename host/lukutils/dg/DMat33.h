#pragma once

#include <dg/FMat33.h>

#include <array>
#include <cstddef>

namespace dg
{

/// 3x3 matrix, double precision, row-major, for column vectors (`a * b` applies b first). Starts as the identity.
class DMat33
{
public:
    static const DMat33 IDENTITY;

    constexpr DMat33() noexcept = default;

    /// Nine entries, row by row.
    constexpr explicit DMat33(const std::array<double, 9>& rowMajor) noexcept : m_entries(rowMajor) {}
    LUHOST_API explicit DMat33(const FMat33& matrix) noexcept;

    constexpr double Get(int row, int column) const noexcept { return m_entries[Index(row, column)]; }
    constexpr void Set(int row, int column, double value) noexcept { m_entries[Index(row, column)] = value; }

    /// Row by row.
    constexpr const std::array<double, 9>& GetEntries() const noexcept { return m_entries; }

    /// The same matrix rounded to single precision.
    LUHOST_API FMat33 ToFMat33() const noexcept;

    /// Turns the matrix into its inverse.
    /// @return false, and the matrix as it was, when it is singular or not finite
    [[nodiscard]] LUHOST_API bool Invert() noexcept;

    friend constexpr bool operator==(const DMat33&, const DMat33&) noexcept = default;
    LUHOST_API friend DMat33 operator*(const DMat33& a, const DMat33& b) noexcept;
    LUHOST_API friend DVec3 operator*(const DMat33& m, const DVec3& v) noexcept;

private:
    static constexpr std::size_t Index(int row, int column) noexcept
    {
        return static_cast<std::size_t>(row) * 3 + static_cast<std::size_t>(column);
    }

    std::array<double, 9> m_entries{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
};

inline constexpr DMat33 DMat33::IDENTITY{};

} // namespace dg
