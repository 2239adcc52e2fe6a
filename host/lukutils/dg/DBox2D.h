#pragma once

#include <dg/DPoint2D.h>

namespace dg
{

/// Box on a page or on the screen. Starts as a point at the origin.
class DBox2D
{
public:
    constexpr DBox2D() noexcept = default;

    /// Any two opposite corners.
    constexpr DBox2D(const DPoint2D& a, const DPoint2D& b) noexcept
        : m_min{b.x < a.x ? b.x : a.x, b.y < a.y ? b.y : a.y}, m_max{b.x < a.x ? a.x : b.x, b.y < a.y ? a.y : b.y}
    {
    }

    constexpr const DPoint2D& GetMin() const noexcept { return m_min; }
    constexpr const DPoint2D& GetMax() const noexcept { return m_max; }
    constexpr double GetWidth() const noexcept { return m_max.x - m_min.x; }
    constexpr double GetHeight() const noexcept { return m_max.y - m_min.y; }
    constexpr DPoint2D GetCenter() const noexcept { return {(m_min.x + m_max.x) * 0.5, (m_min.y + m_max.y) * 0.5}; }

    friend constexpr bool operator==(const DBox2D&, const DBox2D&) noexcept = default;

private:
    DPoint2D m_min;
    DPoint2D m_max;
};

} // namespace dg
