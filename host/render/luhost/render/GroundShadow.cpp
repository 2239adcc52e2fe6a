#include <luhost/render/GroundShadow.h>
#include <luhost/render/ViewCameras.h>
#include <luhost/render/ViewFrame.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace luhost::render
{

namespace
{

constexpr std::size_t kSide = 320; ///< cells
constexpr float kDarkest = 0.42F;
/// Of the height of the scene: what stands as high casts half the shadow.
constexpr double kHalfHeight = 0.25;
/// Of the side: how far the shadow is spread, and three times as much that it may take up beyond the scene.
constexpr std::size_t kBlurRadius = kSide / 64;
constexpr double kMargin = 1.3;

struct Range {
    double low = 1e9;
    double high = -1e9;
    void Enclose(double value) noexcept
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }
};

dg::DBox BoxOfProduct(const SceneGeometry& geometry)
{
    dg::DBox box;
    for (const SceneShape& shape : geometry.shapes) {
        box.Enclose(shape.kind == SceneShape::Kind::Product ? shape.box : dg::DBox());
    }
    return box;
}

/// @param corners of a box
Range RangeAlong(const std::vector<dg::DPoint3D>& corners, const UnitFrame& frame, const dg::DVec3& axis) noexcept
{
    Range range;
    for (const dg::DPoint3D& corner : corners) {
        range.Enclose(((corner - frame.center) * frame.scale).Dot(axis));
    }
    return range;
}

/// Mean over a stretch that slides along a line of cells.
void BlurLine(float* first, std::size_t step)
{
    std::array<float, kSide + 2 * kBlurRadius + 1> sums{};
    for (std::size_t i = 0; i + 1 < sums.size(); ++i) {
        const bool isCell = i >= kBlurRadius && i < kSide + kBlurRadius;
        sums[i + 1] = sums[i] + (isCell ? first[(i - kBlurRadius) * step] : 0.0F);
    }
    constexpr float kScale = 1.0F / (2 * kBlurRadius + 1);
    for (std::size_t i = 0; i < kSide; ++i) {
        const std::size_t end = std::min(i + 2 * kBlurRadius + 1, sums.size() - 1);
        first[i * step] = (sums[end] - sums[i]) * kScale;
    }
}

} // namespace

Outcome GroundShadow::Cast(const PreparedScene& scene, const dg::DVec3& up, const Workers& workers)
{
    m_cells.assign(kSide * kSide, 0.0F);
    const dg::DBox box = BoxOfProduct(scene.geometry);
    if (box.IsEmpty()) {
        return Outcome::Done;
    }
    Place(box, scene.geometry.frame, up);
    const Outcome outcome = RunParallel(kSide, workers, [this, &scene](std::size_t row) { CastRow(scene, row); });
    Blur();
    return outcome;
}

void GroundShadow::Place(const dg::DBox& box, const UnitFrame& frame, const dg::DVec3& up)
{
    const std::vector<dg::DPoint3D> corners = CornersOf(box);
    const dg::DVec3 other = std::fabs(up.x) < 0.5 ? dg::DVec3{1.0, 0.0, 0.0} : dg::DVec3{0.0, 1.0, 0.0};
    m_up = up;
    m_alongRows = other.Cross(up).Normalized();
    m_alongColumns = up.Cross(m_alongRows);
    const Range height = RangeAlong(corners, frame, m_up);
    const Range rows = RangeAlong(corners, frame, m_alongRows);
    const Range columns = RangeAlong(corners, frame, m_alongColumns);
    m_height = std::max(height.high - height.low, 1e-6);
    const double side = std::max({rows.high - rows.low, columns.high - columns.low, 1e-6}) * kMargin;
    m_cellSize = side / kSide;
    m_corner = m_up * height.low + m_alongRows * (0.5 * (rows.low + rows.high - side)) +
               m_alongColumns * (0.5 * (columns.low + columns.high - side));
}

void GroundShadow::CastRow(const PreparedScene& scene, std::size_t row)
{
    constexpr double kBelow = 1e-4; // so that what stands on the plane is met
    RayPacket packet;
    HitPacket hits;
    packet.count = RayPacket::kWidth;
    for (std::size_t first = 0; first < kSide; first += RayPacket::kWidth) {
        for (unsigned lane = 0; lane < RayPacket::kWidth; ++lane) {
            const double along = (static_cast<double>(first + lane) + 0.5) * m_cellSize;
            const dg::DVec3 origin = m_corner + m_alongRows * along +
                                     m_alongColumns * ((static_cast<double>(row) + 0.5) * m_cellSize) - m_up * kBelow;
            packet.Set(lane, origin, m_up, 4.0 * kUnitRadius);
        }
        scene.rays->IntersectOpaque(packet, hits);
        for (std::size_t lane = 0; lane < RayPacket::kWidth; ++lane) {
            const double height = static_cast<double>(hits.distance[lane]) / (kHalfHeight * m_height);
            const bool casts = hits.shape[lane] != HitPacket::kNothing &&
                               scene.geometry.shapes[hits.shape[lane]].kind == SceneShape::Kind::Product;
            m_cells[row * kSide + first + lane] = casts ? static_cast<float>(1.0 / (1.0 + height * height)) : 0.0F;
        }
    }
}

/// Three times over, which is as good as round.
void GroundShadow::Blur()
{
    for (int pass = 0; pass < 3; ++pass) {
        for (std::size_t i = 0; i < kSide; ++i) {
            BlurLine(m_cells.data() + i * kSide, 1);
            BlurLine(m_cells.data() + i, kSide);
        }
    }
}

float GroundShadow::DarknessOnRay(const dg::DVec3& origin, const dg::DVec3& direction) const noexcept
{
    const double fall = direction.Dot(m_up);
    if (!(fall < -1e-6) || m_cells.empty()) {
        return 0.0F;
    }
    const double distance = (m_corner - origin).Dot(m_up) / fall;
    if (!(distance > 0.0)) {
        return 0.0F;
    }
    const dg::DVec3 fromCorner = origin + direction * distance - m_corner;
    return kDarkest *
           At(fromCorner.Dot(m_alongRows) / m_cellSize - 0.5, fromCorner.Dot(m_alongColumns) / m_cellSize - 0.5);
}

float GroundShadow::At(double column, double row) const noexcept
{
    constexpr double kLast = static_cast<double>(kSide - 1);
    if (!(column >= 0.0 && row >= 0.0 && column < kLast && row < kLast)) {
        return 0.0F;
    }
    const auto x = static_cast<std::size_t>(column);
    const auto y = static_cast<std::size_t>(row);
    const float right = static_cast<float>(column - static_cast<double>(x));
    const float below = static_cast<float>(row - static_cast<double>(y));
    const float* const cell = m_cells.data() + y * kSide + x;
    return (cell[0] * (1.0F - right) + cell[1] * right) * (1.0F - below) +
           (cell[kSide] * (1.0F - right) + cell[kSide + 1] * right) * below;
}

} // namespace luhost::render
