#include <luhost/render/FlatStretches.h>
#include <luhost/render/PixelRays.h>
#include <luhost/render/ScreenGeometry.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace luhost::render
{

namespace
{

using Points = std::vector<dg::DPoint2D>;

constexpr double kSampleStepPixels = 3.0;
constexpr double kInsetPixels = 0.5;
/// How far to both sides of a line the surface is looked at.
constexpr double kAsidePixels = 0.3;
constexpr int kHalvings = 5;
constexpr double kShortestPixels = 1.0;

/// A stroke by how far it has come, in pixels.
class Way
{
public:
    explicit Way(const Stroke& stroke) : m_points(stroke.points)
    {
        if (stroke.isClosed) {
            m_points.push_back(m_points.front());
        }
        m_lengths.push_back(0.0);
        for (std::size_t i = 1; i < m_points.size(); ++i) {
            m_lengths.push_back(m_lengths.back() + Distance(m_points[i - 1], m_points[i]));
        }
    }

    double GetLength() const noexcept { return m_lengths.back(); }

    struct Place {
        dg::DPoint2D point;
        dg::DPoint2D along; ///< of length 1
    };
    Place At(double length) const
    {
        const auto next = std::upper_bound(m_lengths.begin() + 1, m_lengths.end() - 1, length);
        const auto i = static_cast<std::size_t>(next - m_lengths.begin());
        const dg::DPoint2D& from = m_points[i - 1];
        const dg::DPoint2D& to = m_points[i];
        const double whole = m_lengths[i] - m_lengths[i - 1];
        const dg::DPoint2D along{(to.x - from.x) / whole, (to.y - from.y) / whole};
        const double rest = length - m_lengths[i - 1];
        return {{from.x + along.x * rest, from.y + along.y * rest}, along};
    }

    Points Between(double from, double to) const
    {
        Points points{RoundedPoint(At(from).point)};
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            if (m_lengths[i] > from && m_lengths[i] < to) {
                points.push_back(m_points[i]);
            }
        }
        points.push_back(RoundedPoint(At(to).point));
        return points;
    }

private:
    Points m_points;
    std::vector<double> m_lengths; ///< up to each point
};

/// Looks at the surface on both sides of a line.
class SurfaceViewer
{
public:
    SurfaceViewer(const PreparedScene& scene, std::size_t shape, const ViewFrame& view)
        : m_scene(scene), m_shape(shape), m_rays(view)
    {
    }

    /// Whether it is one and the same plane of the shape, in one colour.
    bool IsFlatAt(const Way::Place& place) const
    {
        RayPacket rays;
        rays.count = 2;
        for (unsigned lane = 0; lane < RayPacket::kWidth; ++lane) {
            const double aside = lane % 2 == 0 ? kAsidePixels : -kAsidePixels;
            m_rays.Set(rays, lane, place.point.x - place.along.y * aside, place.point.y + place.along.x * aside);
        }
        HitPacket hits;
        m_scene.rays->Intersect(rays, hits);
        return hits.shape[0] == m_shape && hits.shape[1] == m_shape && AreOne(hits.triangle[0], hits.triangle[1]);
    }

private:
    struct Plane {
        dg::DVec3 point;
        dg::DVec3 normal;
    };

    bool AreOne(std::size_t first, std::size_t second) const
    {
        constexpr double kSameDirection = 0.9999;
        constexpr double kSameHeight = 2.0e-5; // in the unit frame
        if (first == second) {
            return true;
        }
        const Plane a = PlaneOf(first);
        const Plane b = PlaneOf(second);
        return std::fabs(a.normal.Dot(b.normal)) > kSameDirection &&
               std::fabs((b.point - a.point).Dot(a.normal)) < kSameHeight && ColorOf(first) == ColorOf(second);
    }

    Plane PlaneOf(std::size_t triangle) const
    {
        const auto [a, b, c] = m_scene.CornersOf(m_shape, triangle);
        return {a, (b - a).Cross(c - a).Normalized()};
    }

    dg::Color ColorOf(std::size_t triangle) const
    {
        const SceneShape& shape = m_scene.geometry.shapes[m_shape];
        return m_scene.geometry.SurfaceOf(shape, m_scene.welded[shape.mesh]->PartOf(triangle)).color;
    }

    const PreparedScene& m_scene;
    std::size_t m_shape;
    PixelRays m_rays;
};

class StrokeCutter
{
public:
    StrokeCutter(const SurfaceViewer& viewer, const Stroke& stroke) : m_viewer(viewer), m_stroke(stroke), m_way(stroke)
    {
    }

    void AddRest(std::vector<Stroke>& kept)
    {
        FindStretches();
        if (m_stretches.size() == 1 && m_stretches.front() == std::pair(0.0, m_way.GetLength())) {
            kept.push_back(m_stroke);
            return;
        }
        for (const auto& [from, to] : m_stretches) {
            if (to - from >= kShortestPixels) {
                kept.push_back({m_stroke.kind, true, false, m_way.Between(from, to)});
            }
        }
    }

private:
    bool IsFlatAt(double length) const { return m_viewer.IsFlatAt(m_way.At(length)); }

    /// What is not flat.
    void FindStretches()
    {
        const double length = m_way.GetLength();
        const double inset = std::min(kInsetPixels, 0.25 * length);
        const auto count = static_cast<int>(std::ceil((length - 2.0 * inset) / kSampleStepPixels));
        double before = 0.0;
        std::optional<double> begin;
        for (int i = 0; i <= count; ++i) {
            const double place = inset + (length - 2.0 * inset) * i / count;
            const bool isFlat = IsFlatAt(place);
            if (isFlat && begin) {
                m_stretches.emplace_back(*begin, ChangeBetween(before, place));
                begin.reset();
            } else if (!isFlat && !begin) {
                begin = i == 0 ? 0.0 : ChangeBetween(place, before);
            }
            before = place;
        }
        if (begin) {
            m_stretches.emplace_back(*begin, length);
        }
    }

    /// To an eighth of a pixel, so that it does not tell how rays are computed.
    double ChangeBetween(double standingOut, double flat) const
    {
        for (int i = 0; i < kHalvings; ++i) {
            const double middle = 0.5 * (standingOut + flat);
            (IsFlatAt(middle) ? flat : standingOut) = middle;
        }
        constexpr double kSteps = 8.0;
        return std::clamp(std::round(standingOut * kSteps) / kSteps, 0.0, m_way.GetLength());
    }

    const SurfaceViewer& m_viewer;
    const Stroke& m_stroke;
    Way m_way;
    std::vector<std::pair<double, double>> m_stretches;
};

} // namespace

std::vector<Stroke> DropFlatStretches(const PreparedScene& scene, std::size_t shape, const ViewFrame& view,
                                      std::vector<Stroke> strokes)
{
    if (!scene.meshes[scene.shapes[shape].mesh].edges->hasSeveralBodies) {
        return strokes;
    }
    const SurfaceViewer viewer(scene, shape, view);
    std::vector<Stroke> kept;
    for (Stroke& stroke : strokes) {
        if (stroke.isVisible && stroke.kind != LineKind::PartBoundary) {
            StrokeCutter(viewer, stroke).AddRest(kept);
        } else {
            kept.push_back(std::move(stroke));
        }
    }
    return kept;
}

} // namespace luhost::render
