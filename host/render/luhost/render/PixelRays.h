#pragma once

#include <luhost/render/RayScene.h>
#include <luhost/render/ViewFrame.h>

namespace luhost::render
{

/// Rays from the viewer through places of the screen, each from before everything there is.
class PixelRays
{
public:
    explicit PixelRays(const ViewFrame& view);

    /// @param column,row in pixels from the upper left corner of the viewport
    void Set(RayPacket& rays, unsigned lane, double column, double row) const noexcept;

private:
    const ViewFrame& m_view;
    double m_start; ///< how far from the eye rays begin, towards the viewer in an orthographic view
};

} // namespace luhost::render
