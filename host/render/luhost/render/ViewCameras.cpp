#include <luhost/render/ViewCameras.h>

#include <algorithm>
#include <array>
#include <cmath>
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

double ExtentAlong(const dg::DVec3& size, const dg::DVec3& axis) noexcept
{
    return std::fabs(size.x * axis.x) + std::fabs(size.y * axis.y) + std::fabs(size.z * axis.z);
}

} // namespace

std::optional<StandardView> StandardViewOf(std::string_view name) noexcept
{
    const auto found =
        std::find_if(kNames.begin(), kNames.end(), [name](const auto& entry) { return entry.first == name; });
    return found == kNames.end() ? std::nullopt : std::optional(found->second);
}

dg::DVec3 UpVector(UpAxis axis) noexcept { return Raised({0.0, 1.0, 0.0}, axis); }

dg::Camera3D MakeViewCamera(StandardView view, UpAxis up, const dg::DBox& box, int pixelWidth, int pixelHeight,
                            double margin)
{
    const Axes axes = AxesOf(view);
    dg::Camera3D camera;
    camera.SetViewport(pixelWidth, pixelHeight);
    camera.SetLocation({MatrixOf(Raised(axes.right, up), Raised(axes.up, up)), dg::DPoint3D::ORIGIN});
    return FitCamera(camera, box, margin);
}

dg::Camera3D FitCamera(const dg::Camera3D& camera, const dg::DBox& box, double margin)
{
    dg::Camera3D fitted = camera;
    const dg::DVec3 right = camera.GetU();
    const dg::DVec3 up = camera.GetV();
    const dg::DVec3 size = box.GetSize();
    const double free = 1.0 - 2.0 * std::clamp(margin, 0.0, 0.49);
    const double shorterSide = std::min(camera.GetPixelWidth(), camera.GetPixelHeight());
    const double taken = (1.0 - free) * shorterSide; // by the margins
    const double unitsPerPixel = std::max(ExtentAlong(size, right) / (camera.GetPixelWidth() - taken),
                                          ExtentAlong(size, up) / (camera.GetPixelHeight() - taken));
    const double width = unitsPerPixel * camera.GetPixelWidth();
    fitted.SetOrthographic(width > 0.0 ? width : 1.0);
    const double distance = size.Length() > 0.0 ? size.Length() : 1.0;
    const dg::DPoint3D center = box.IsEmpty() ? dg::DPoint3D::ORIGIN : box.GetCenter();
    fitted.SetLocation({camera.GetLocation().GetMat(), center + right.Cross(up) * distance});
    return fitted;
}

} // namespace luhost::render
