#pragma once

#include <dg/DPoint2D.h>
#include <dg/Location.h>

namespace dg
{

/// Camera of a view: where it stands, how it projects, and the pixels that it projects onto.
///
/// Frames: the location places the camera in the scene. Column 0 of its matrix is U, to the right on the screen; column
/// 1 is V, up on the screen; column 2 is U x V, towards the viewer, so that the camera looks along its negative. The
/// scale of the matrix does not matter. Screen points are in pixels from the upper left corner of the viewport, x to the
/// right and y down; the eye looks at its centre.
///
/// Errors: an empty viewport, a field of view or width that is not positive and finite, a bad location, and axes that
/// span no plane leave nothing to project. Every operation that needs them then answers false.
class Camera3D
{
public:
    /// Orthographic with a visible width of 1, at IDENTITY, with an empty viewport.
    Camera3D() noexcept = default;

    /// @param width extent of the scene that the width of the viewport shows
    LUHOST_API void SetOrthographic(double width) noexcept;

    /// @param horizontalFovDegrees angle that the width of the viewport shows, over 0 and under 180
    LUHOST_API void SetPerspective(double horizontalFovDegrees) noexcept;

    bool IsOrthographic() const noexcept { return m_orthographic; }

    /// In units of the scene. A perspective camera keeps the width that was set last.
    double GetOrthographicWidth() const noexcept { return m_orthographicWidth; }

    /// In degrees. An orthographic camera keeps the angle that was set last.
    double GetPerspectiveHFOV() const noexcept { return m_horizontalFovDegrees; }

    const Location& GetLocation() const noexcept { return m_location; }
    void SetLocation(const Location& location) noexcept { m_location = location; }

    void SetViewport(int pixelWidth, int pixelHeight) noexcept
    {
        m_pixelWidth = pixelWidth;
        m_pixelHeight = pixelHeight;
    }
    int GetPixelWidth() const noexcept { return m_pixelWidth; }
    int GetPixelHeight() const noexcept { return m_pixelHeight; }

    /// To the right on the screen, length 1; bad when the location gives none.
    LUHOST_API DVec3 GetU() const noexcept;
    /// Up on the screen, right-angled to U, length 1; bad when the location gives none.
    LUHOST_API DVec3 GetV() const noexcept;

    /// Where a point of the scene appears; it may lie outside the viewport.
    /// @return false, and `screen` as it was, when it appears nowhere: for a perspective camera also when the point is
    /// not in front of the eye
    [[nodiscard]] LUHOST_API bool ProjectPoint(const DPoint3D& point, DPoint2D& screen) const noexcept;

    /// The ray from the eye through a screen point; orthographic rays start at the same depth as the eye.
    /// @param direction has length 1
    /// @return false, and the results as they were, when there is none
    [[nodiscard]] LUHOST_API bool ScreenXYToNormalizedRay(double screenX, double screenY, DPoint3D& origin,
                                                          DVec3& direction) const noexcept;

    /// Where a ray of this camera meets a plane. A perspective ray begins at its origin; an orthographic one is endless
    /// both ways, because such a view also shows what lies beside and behind the eye.
    /// @param planeNormal of any length
    /// @return false, and `hit` as it was, for a miss: a ray along the plane, a plane behind the eye, a plane without a
    /// normal, anything bad
    [[nodiscard]] LUHOST_API bool IntersectRayWithPlane(const DPoint3D& origin, const DVec3& direction,
                                                        const DPoint3D& planePoint, const DVec3& planeNormal,
                                                        DPoint3D& hit) const noexcept;

private:
    struct Projection;
    bool GetProjection(Projection& projection) const noexcept;

    Location m_location = Location::IDENTITY;
    double m_orthographicWidth = 1.0;
    double m_horizontalFovDegrees = 45.0;
    int m_pixelWidth = 0;
    int m_pixelHeight = 0;
    bool m_orthographic = true;
};

} // namespace dg
