#include <dg/Camera3D.h>

#include <cmath>
#include <numbers>

namespace dg
{

/// What a usable camera comes down to.
struct Camera3D::Projection {
    DPoint3D eye;
    DVec3 u;
    DVec3 v;
    DVec3 towardsViewer;
    double centerX;
    double centerY;
    /// Pixels for one unit of length; for a perspective camera at a distance of 1 from the eye.
    double pixelsPerUnit;
};

void Camera3D::SetOrthographic(double width) noexcept
{
    m_orthographic = true;
    m_orthographicWidth = width;
}

void Camera3D::SetPerspective(double horizontalFovDegrees) noexcept
{
    m_orthographic = false;
    m_horizontalFovDegrees = horizontalFovDegrees;
}

DVec3 Camera3D::GetU() const noexcept { return m_location.GetMat().GetColumn(0).Normalized(); }

DVec3 Camera3D::GetV() const noexcept
{
    // The columns are single precision and right-angled only to that; what is projected must come back along its ray
    // exactly, so V is made right-angled to U. Columns that differ by rounding alone span no plane.
    constexpr double kSmallestSine = 1e-6;
    const DVec3 u = GetU();
    const DVec3 towardsViewer = u.Cross(m_location.GetMat().GetColumn(1).Normalized());
    if (!(towardsViewer.Length() > kSmallestSine)) {
        return DVec3::BAD;
    }
    return towardsViewer.Normalized().Cross(u);
}

bool Camera3D::GetProjection(Projection& projection) const noexcept
{
    const double halfFov = m_horizontalFovDegrees * std::numbers::pi / 360.0;
    const double visibleWidth = m_orthographic ? m_orthographicWidth : 2.0 * std::tan(halfFov);
    const bool fovInRange = m_orthographic || (m_horizontalFovDegrees > 0.0 && m_horizontalFovDegrees < 180.0);
    if (m_pixelWidth <= 0 || m_pixelHeight <= 0 || !fovInRange || !(visibleWidth > 0.0)) {
        return false;
    }
    projection = {m_location.GetPosition(),
                  GetU(),
                  GetV(),
                  GetU().Cross(GetV()).Normalized(),
                  m_pixelWidth * 0.5,
                  m_pixelHeight * 0.5,
                  m_pixelWidth / visibleWidth};
    return !projection.towardsViewer.IsBad() && std::isfinite(projection.pixelsPerUnit) &&
           projection.pixelsPerUnit > 0.0 && ApproximateEquality(projection.eye, projection.eye, 0.0);
}

bool Camera3D::ProjectPoint(const DPoint3D& point, DPoint2D& screen) const noexcept
{
    Projection projection;
    if (!GetProjection(projection)) {
        return false;
    }
    const DVec3 fromEye = point - projection.eye;
    const double depth = m_orthographic ? 1.0 : -fromEye.Dot(projection.towardsViewer);
    if (!(depth > 0.0)) {
        return false;
    }
    const DPoint2D result{projection.centerX + fromEye.Dot(projection.u) * projection.pixelsPerUnit / depth,
                          projection.centerY - fromEye.Dot(projection.v) * projection.pixelsPerUnit / depth};
    if (!std::isfinite(result.x) || !std::isfinite(result.y)) {
        return false;
    }
    screen = result;
    return true;
}

bool Camera3D::ScreenXYToNormalizedRay(double screenX, double screenY, DPoint3D& origin,
                                       DVec3& direction) const noexcept
{
    Projection projection;
    if (!GetProjection(projection) || !std::isfinite(screenX) || !std::isfinite(screenY)) {
        return false;
    }
    const DVec3 offset = projection.u * ((screenX - projection.centerX) / projection.pixelsPerUnit) +
                         projection.v * ((projection.centerY - screenY) / projection.pixelsPerUnit);
    const DPoint3D rayOrigin = m_orthographic ? projection.eye + offset : projection.eye;
    const DVec3 rayDirection =
        m_orthographic ? -projection.towardsViewer : (offset - projection.towardsViewer).Normalized();
    if (!ApproximateEquality(rayOrigin, rayOrigin, 0.0) || rayDirection.IsBad()) {
        return false;
    }
    origin = rayOrigin;
    direction = rayDirection;
    return true;
}

bool Camera3D::IntersectRayWithPlane(const DPoint3D& origin, const DVec3& direction, const DPoint3D& planePoint,
                                     const DVec3& planeNormal, DPoint3D& hit) const noexcept
{
    // The cosine between ray and normal; below this the hit would be rounding, far away.
    constexpr double kParallel = 1e-12;
    const DVec3 normal = planeNormal.Normalized();
    const double approach = direction.Dot(normal);
    if (!(std::fabs(approach) > kParallel)) {
        return false;
    }
    const double distance = (planePoint - origin).Dot(normal) / approach;
    if (!std::isfinite(distance) || (!m_orthographic && distance < 0.0)) {
        return false;
    }
    hit = origin + direction * distance;
    return true;
}

} // namespace dg
