#pragma once

#include <dg/DPoint3D.h>

#include <limits>

namespace dg
{

/// Box along the axes of its frame. Starts empty.
class DBox
{
public:
    /// Encloses nothing: its lower corner is at plus infinity, its upper one at minus infinity.
    static const DBox EMPTY;

    constexpr DBox() noexcept = default;

    /// Grows the box by a point. A bad point is not enclosed, so that the box never becomes bad.
    constexpr void Enclose(const DPoint3D& point) noexcept
    {
        if (point.IsBad()) {
            return;
        }
        m_min = {point.x < m_min.x ? point.x : m_min.x, point.y < m_min.y ? point.y : m_min.y,
                 point.z < m_min.z ? point.z : m_min.z};
        m_max = {point.x > m_max.x ? point.x : m_max.x, point.y > m_max.y ? point.y : m_max.y,
                 point.z > m_max.z ? point.z : m_max.z};
    }

    /// Grows the box by another one.
    constexpr void Enclose(const DBox& box) noexcept
    {
        if (!box.IsEmpty()) {
            Enclose(box.m_min);
            Enclose(box.m_max);
        }
    }

    constexpr bool IsEmpty() const noexcept { return !(m_min.x <= m_max.x); }
    constexpr const DPoint3D& GetMin() const noexcept { return m_min; }
    constexpr const DPoint3D& GetMax() const noexcept { return m_max; }

    /// Bad for an empty box.
    constexpr DPoint3D GetCenter() const noexcept
    {
        return IsEmpty() ? DPoint3D::BAD
                         : DPoint3D{(m_min.x + m_max.x) * 0.5, (m_min.y + m_max.y) * 0.5, (m_min.z + m_max.z) * 0.5};
    }

    /// Zero for an empty box.
    constexpr DVec3 GetSize() const noexcept { return IsEmpty() ? DVec3() : m_max - m_min; }

    friend constexpr bool operator==(const DBox&, const DBox&) noexcept = default;

private:
    static constexpr double kInfinity = std::numeric_limits<double>::infinity();

    DPoint3D m_min{kInfinity, kInfinity, kInfinity};
    DPoint3D m_max{-kInfinity, -kInfinity, -kInfinity};
};

inline constexpr DBox DBox::EMPTY{};

} // namespace dg
