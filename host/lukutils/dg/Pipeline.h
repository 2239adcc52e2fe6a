#pragma once

#include <dg/Camera3D.h>

namespace dg
{

/// How a drawing is made of a scene: the camera that projects it and the resolution of the page.
class Pipeline
{
public:
    Pipeline() noexcept = default;

    /// @param pixelsPerUnit resolution of the page, pixels for one unit of length
    Pipeline(const Camera3D& camera, double pixelsPerUnit) noexcept : m_camera(camera), m_pixelsPerUnit(pixelsPerUnit)
    {
    }

    /// Pixels per unit, as it was given: not checked to be finite.
    double GetScale() const noexcept { return m_pixelsPerUnit; }
    const Camera3D& GetCamera() const noexcept { return m_camera; }

    /// Where a point of the scene lies on the drawing, in pixels; see Camera3D::ProjectPoint.
    [[nodiscard]] bool ProjectPoint(const DPoint3D& point, DPoint2D& pixel) const noexcept
    {
        return m_camera.ProjectPoint(point, pixel);
    }

private:
    Camera3D m_camera;
    double m_pixelsPerUnit = 1.0;
};

} // namespace dg
