#pragma once

#include <dg/Camera3D.h>
#include <dg/DVec3.h>
#include <luhost/render/SceneGeometry.h>

#include <optional>

namespace luhost::render
{

/// A camera in the unit frame, ready for millions of rays and points.
///
/// Frames: view points have x to the right and y up in lengths of the unit frame, and z how far they lie before the eye.
struct ViewFrame {
    /// Nothing for a camera that projects nothing.
    static std::optional<ViewFrame> Make(const dg::Camera3D& camera, const UnitFrame& frame);

    dg::DVec3 ToView(const dg::DVec3& point) const noexcept
    {
        const dg::DVec3 fromEye = point - eye;
        return {fromEye.Dot(right), fromEye.Dot(up), -fromEye.Dot(towardsViewer)};
    }
    dg::DVec3 FromView(const dg::DVec3& point) const noexcept
    {
        return eye + right * point.x + up * point.y - towardsViewer * point.z;
    }
    /// By how much lengths at a view point are divided on the screen.
    double DepthOf(const dg::DVec3& viewPoint) const noexcept { return isOrthographic ? 1.0 : viewPoint.z; }
    dg::DPoint2D ToScreen(const dg::DVec3& viewPoint) const noexcept
    {
        const double scale = pixelsPerUnit / DepthOf(viewPoint);
        return {centerX + viewPoint.x * scale, centerY - viewPoint.y * scale};
    }

    dg::DVec3 eye;
    dg::DVec3 right;
    dg::DVec3 up;
    dg::DVec3 towardsViewer;
    double centerX = 0.0;
    double centerY = 0.0;
    double pixelsPerUnit = 1.0; ///< for a perspective camera at a distance of 1 from the eye
    bool isOrthographic = true;
    int pixelWidth = 0;
    int pixelHeight = 0;
};

/// Farther from the origin there is nothing of a scene in its unit frame.
inline constexpr double kUnitRadius = 1.75;

} // namespace luhost::render
