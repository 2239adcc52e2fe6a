#include <luhost/render/ViewCameras.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace luhost::render
{

namespace
{

constexpr std::array<std::pair<std::string_view, StandardView>, 7> kNames{{{"iso", StandardView::Iso},
                                                                           {"front", StandardView::Front},
                                                                           {"back", StandardView::Back},
                                                                           {"left", StandardView::Left},
                                                                           {"right", StandardView::Right},
                                                                           {"top", StandardView::Top},
                                                                           {"bottom", StandardView::Bottom}}};

struct Axes {
    dg::DVec3 right;
    dg::DVec3 up;
};

/// With y up.
Axes AxesOf(StandardView view)
{
    switch (view) {
    case StandardView::Front:
        break;
    case StandardView::Back:
        return {{-1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};
    case StandardView::Left:
        return {{0.0, 0.0, 1.0}, {0.0, 1.0, 0.0}};
    case StandardView::Right:
        return {{0.0, 0.0, -1.0}, {0.0, 1.0, 0.0}};
    case StandardView::Top:
        return {{1.0, 0.0, 0.0}, {0.0, 0.0, -1.0}};
    case StandardView::Bottom:
        return {{1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}};
    case StandardView::Iso:
        return {dg::DVec3{1.0, 0.0, -1.0}.Normalized(), dg::DVec3{-1.0, 2.0, -1.0}.Normalized()};
    }
    return {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};
}

dg::DVec3 Raised(const dg::DVec3& v, UpAxis up) noexcept { return up == UpAxis::Y ? v : dg::DVec3{v.x, -v.z, v.y}; }

dg::FMat33 MatrixOf(const dg::DVec3& right, const dg::DVec3& up)
{
    dg::FMat33 matrix;
    const dg::DVec3 towardsViewer = right.Cross(up);
    for (int row = 0; row < 3; ++row) {
        matrix.Set(row, 0, static_cast<float>(right.Get(row)));
        matrix.Set(row, 1, static_cast<float>(up.Get(row)));
        matrix.Set(row, 2, static_cast<float>(towardsViewer.Get(row)));
    }
    return matrix;
}

/// By what lengths across the screen are multiplied so that 1 is half of what there is room for; in perspective those at a
/// distance of 1.
struct Scale {
    Scale(const dg::Camera3D& camera, double margin)
    {
        const double width = camera.GetPixelWidth();
        const double height = camera.GetPixelHeight();
        const double taken = 2.0 * std::clamp(margin, 0.0, 0.49) * std::min(width, height);
        const double halfAngle = 0.5 * camera.GetPerspectiveHFOV() * std::numbers::pi / 180.0;
        const double pixelsPerUnit = camera.IsOrthographic() ? 1.0 : 0.5 * width / std::tan(halfAngle);
        x = 2.0 * pixelsPerUnit / (width - taken);
        y = 2.0 * pixelsPerUnit / (height - taken);
    }

    double x;
    double y;
};

/// Points as a camera sees them: x to the right and y up, scaled, and z towards the viewer, not scaled.
struct Seen {
    static constexpr double kNothing = std::numeric_limits<double>::max();

    void Enclose(const dg::DVec3& point) noexcept
    {
        low = {std::min(low.x, point.x), std::min(low.y, point.y), std::min(low.z, point.z)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y), std::max(high.z, point.z)};
        right = std::max(right, point.z + point.x);
        left = std::max(left, point.z - point.x);
        top = std::max(top, point.z + point.y);
        bottom = std::max(bottom, point.z - point.y);
    }

    dg::DVec3 OrthographicEye() const noexcept
    {
        const double depth = high.z - low.z;
        return {0.5 * (low.x + high.x), 0.5 * (low.y + high.y), high.z + (depth > 0.0 ? depth : 1.0)};
    }

    /// From where the planes around everything are those around the view, or a little farther than everything.
    dg::DVec3 PerspectiveEye() const noexcept
    {
        const double distance = 0.5 * std::max(right + left, top + bottom);
        return {0.5 * (right - left), 0.5 * (top - bottom), distance > high.z ? distance : high.z + 1.0};
    }

    dg::DVec3 low{kNothing, kNothing, kNothing};
    dg::DVec3 high{-kNothing, -kNothing, -kNothing};
    double right = -kNothing; ///< z + x, and so on
    double left = -kNothing;
    double top = -kNothing;
    double bottom = -kNothing;
};

/// Near the points, whatever their order: what is reckoned from there is the same to the last bit.
dg::DPoint3D LowestOf(const std::vector<dg::DPoint3D>& points) noexcept
{
    dg::DPoint3D lowest = points.empty() ? dg::DPoint3D::ORIGIN : points.front();
    for (const dg::DPoint3D& point : points) {
        lowest = {std::min(lowest.x, point.x), std::min(lowest.y, point.y), std::min(lowest.z, point.z)};
    }
    return lowest;
}

} // namespace

std::optional<StandardView> StandardViewOf(std::string_view name) noexcept
{
    const auto found =
        std::find_if(kNames.begin(), kNames.end(), [name](const auto& entry) { return entry.first == name; });
    return found == kNames.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string_view> StandardViewNames()
{
    std::vector<std::string_view> names;
    names.reserve(kNames.size());
    for (const auto& [name, view] : kNames) {
        names.push_back(name);
    }
    return names;
}

dg::DVec3 UpVector(UpAxis axis) noexcept { return Raised({0.0, 1.0, 0.0}, axis); }

dg::Camera3D MakeViewCamera(StandardView view, UpAxis up, const dg::DBox& box, int pixelWidth, int pixelHeight,
                            double margin)
{
    const Axes axes = AxesOf(view);
    dg::Camera3D camera;
    camera.SetViewport(pixelWidth, pixelHeight);
    camera.SetLocation({MatrixOf(Raised(axes.right, up), Raised(axes.up, up)), dg::DPoint3D::ORIGIN});
    return FitCamera(camera, CornersOf(box), margin);
}

std::vector<dg::DPoint3D> CornersOf(const dg::DBox& box)
{
    std::vector<dg::DPoint3D> corners;
    corners.reserve(8);
    for (unsigned corner = 0; corner < 8 && !box.IsEmpty(); ++corner) {
        corners.push_back({(corner & 1U) ? box.GetMax().x : box.GetMin().x,
                           (corner & 2U) ? box.GetMax().y : box.GetMin().y,
                           (corner & 4U) ? box.GetMax().z : box.GetMin().z});
    }
    return corners;
}

dg::Camera3D FitCamera(const dg::Camera3D& camera, const std::vector<dg::DPoint3D>& points, double margin)
{
    const Axes axes{camera.GetU(), camera.GetV()};
    const dg::DVec3 back = axes.right.Cross(axes.up);
    const Scale scale(camera, margin);
    const dg::DPoint3D origin = LowestOf(points);
    Seen seen;
    for (const dg::DPoint3D& point : points) {
        const dg::DVec3 from = point - origin;
        seen.Enclose({from.Dot(axes.right) * scale.x, from.Dot(axes.up) * scale.y, from.Dot(back)});
    }
    if (points.empty()) {
        seen.Enclose({});
    }
    dg::Camera3D fitted = camera;
    dg::DVec3 eye = camera.IsOrthographic() ? seen.OrthographicEye() : seen.PerspectiveEye();
    if (camera.IsOrthographic()) {
        const double halfUnits = 0.5 * std::max(seen.high.x - seen.low.x, seen.high.y - seen.low.y);
        fitted.SetOrthographic(halfUnits > 0.0 ? halfUnits * camera.GetPixelWidth() : 1.0);
    }
    eye = axes.right * (eye.x / scale.x) + axes.up * (eye.y / scale.y) + back * eye.z;
    fitted.SetLocation({camera.GetLocation().GetMat(), origin + eye});
    return fitted;
}

} // namespace luhost::render
