#pragma once

#include <dg/FVec3.h>

#include <limits>

namespace dg
{

/// Single-precision box along the axes of its frame, as shape files carry it. Starts empty.
class FBox
{
public:
    /// Encloses nothing: "the size of this shape is not known yet".
    static const FBox EMPTY;

    constexpr FBox() noexcept = default;

    constexpr void Enclose(const FVec3& point) noexcept
    {
        m_min = {point.x < m_min.x ? point.x : m_min.x, point.y < m_min.y ? point.y : m_min.y,
                 point.z < m_min.z ? point.z : m_min.z};
        m_max = {point.x > m_max.x ? point.x : m_max.x, point.y > m_max.y ? point.y : m_max.y,
                 point.z > m_max.z ? point.z : m_max.z};
    }

    constexpr bool IsEmpty() const noexcept { return !(m_min.x <= m_max.x); }
    constexpr const FVec3& GetMin() const noexcept { return m_min; }
    constexpr const FVec3& GetMax() const noexcept { return m_max; }

    friend constexpr bool operator==(const FBox&, const FBox&) noexcept = default;

private:
    static constexpr float kInfinity = std::numeric_limits<float>::infinity();

    FVec3 m_min{kInfinity, kInfinity, kInfinity};
    FVec3 m_max{-kInfinity, -kInfinity, -kInfinity};
};

inline constexpr FBox FBox::EMPTY{};

} // namespace dg
