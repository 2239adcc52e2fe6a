#include <luhost/render/ViewFrame.h>

#include <cmath>
#include <numbers>

namespace luhost::render
{

std::optional<ViewFrame> ViewFrame::Make(const dg::Camera3D& camera, const UnitFrame& frame)
{
    ViewFrame view;
    view.pixelWidth = camera.GetPixelWidth();
    view.pixelHeight = camera.GetPixelHeight();
    view.centerX = 0.5 * view.pixelWidth;
    view.centerY = 0.5 * view.pixelHeight;
    dg::DPoint3D eye;
    dg::DVec3 direction;
    if (!camera.ScreenXYToNormalizedRay(view.centerX, view.centerY, eye, direction)) {
        return std::nullopt;
    }
    view.eye = (eye - frame.center) * frame.scale;
    view.right = camera.GetU();
    view.up = camera.GetV();
    view.towardsViewer = -direction;
    view.isOrthographic = camera.IsOrthographic();
    if (view.isOrthographic) {
        // Wherever it stands on its line of sight it sees the same, and near the scene numbers are exact.
        view.eye = view.eye - view.towardsViewer * view.eye.Dot(view.towardsViewer);
    }
    const double halfAngle = camera.GetPerspectiveHFOV() * std::numbers::pi / 360.0;
    const double visibleWidth =
        view.isOrthographic ? camera.GetOrthographicWidth() * frame.scale : 2.0 * std::tan(halfAngle);
    view.pixelsPerUnit = view.pixelWidth / visibleWidth;
    const bool isUsable = view.eye.Length() <= kFarthestCoordinate && std::isfinite(view.pixelsPerUnit) &&
                          view.pixelsPerUnit > 0.0 && !view.right.IsBad() && !view.up.IsBad();
    return isUsable ? std::optional<ViewFrame>(view) : std::nullopt;
}

} // namespace luhost::render
