#include <luhost/render/PixelRays.h>

#include <algorithm>
#include <cmath>

namespace luhost::render
{

PixelRays::PixelRays(const ViewFrame& view)
    : m_view(view), m_start(view.isOrthographic ? kUnitRadius - view.eye.Dot(view.towardsViewer)
                                                : std::max(0.0, view.eye.Length() - kUnitRadius))
{
}

void PixelRays::Set(RayPacket& rays, unsigned lane, double column, double row) const noexcept
{
    const dg::DVec3 across = m_view.right * ((column - m_view.centerX) / m_view.pixelsPerUnit) +
                             m_view.up * ((m_view.centerY - row) / m_view.pixelsPerUnit);
    dg::DVec3 origin = m_view.eye;
    dg::DVec3 direction = -m_view.towardsViewer;
    if (m_view.isOrthographic) {
        origin = origin + across + m_view.towardsViewer * m_start;
    } else {
        direction = across - m_view.towardsViewer;
        direction = direction * (1.0 / std::sqrt(direction.Dot(direction)));
        origin = origin + direction * m_start;
    }
    rays.Set(lane, origin, direction, 4.0 * kUnitRadius);
}

} // namespace luhost::render
