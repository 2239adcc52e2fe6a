#include <luhost/render/LineVisibility.h>
#include <luhost/render/ScreenGeometry.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace luhost::render
{

namespace
{

constexpr double kSampleStepPixels = 3.0;
constexpr double kMostSamples = 1024.0;
/// Samples keep away from the ends, where other faces meet.
constexpr double kInsetPixels = 0.25;
constexpr int kHalvings = 7;

/// Where rays begin: so far from the faces that a line belongs to, and no nearer than single precision needs.
constexpr double kTowardsViewerPixels = 0.35;
constexpr double kOutwardsPixels = 0.08;
constexpr double kSmallestOffset = 4.0e-6;

struct LinePlace {
    std::size_t line;
    double fraction;
};

double LengthOf(const FeatureLine& line) noexcept { return Distance(line.screenStart, line.screenEnd); }

/// Sends rays from places on lines to the viewer.
class LineCaster
{
public:
    LineCaster(const PreparedScene& scene, const std::vector<FeatureLine>& lines, const ViewFrame& view)
        : m_scene(scene), m_lines(lines), m_view(view)
    {
    }

    /// Asks for all places, in packets. @param answer called with the index of a place and whether it is hidden
    template <class PlaceOf, class Answer>
    void FindHidden(std::size_t count, const PlaceOf& placeOf, const Answer& answer) const
    {
        RayPacket rays;
        for (std::size_t first = 0; first < count; first += RayPacket::kWidth) {
            Fill(rays, first, count, placeOf);
            const std::uint32_t hidden = m_scene.rays->FindOccluded(rays);
            for (unsigned lane = 0; lane < rays.count; ++lane) {
                answer(first + lane, (hidden >> lane & 1U) != 0);
            }
        }
    }

    /// @param answer called with the index of a place, and shape and triangle in front of it, if any
    template <class PlaceOf, class Answer>
    void FindInFront(std::size_t count, const PlaceOf& placeOf, const Answer& answer) const
    {
        RayPacket rays;
        HitPacket hits;
        for (std::size_t first = 0; first < count; first += RayPacket::kWidth) {
            Fill(rays, first, count, placeOf);
            m_scene.rays->IntersectOpaque(rays, hits);
            for (unsigned lane = 0; lane < rays.count; ++lane) {
                if (hits.shape[lane] != HitPacket::kNothing) {
                    answer(first + lane, hits.shape[lane], hits.triangle[lane]);
                }
            }
        }
    }

private:
    template <class PlaceOf>
    void Fill(RayPacket& rays, std::size_t first, std::size_t count, const PlaceOf& placeOf) const
    {
        rays.count = static_cast<unsigned>(std::min<std::size_t>(RayPacket::kWidth, count - first));
        for (unsigned lane = 0; lane < rays.count; ++lane) {
            SetRay(rays, lane, placeOf(first + lane));
        }
        // Lanes without a ray are read all the same.
        for (unsigned lane = rays.count; lane < RayPacket::kWidth; ++lane) {
            SetRay(rays, lane, placeOf(first));
        }
    }

    void SetRay(RayPacket& rays, unsigned lane, const LinePlace& place) const
    {
        const dg::DVec3 start = StartOf(m_lines[place.line], place.fraction);
        const double distance = start.Length();
        const dg::DVec3 origin = m_view.FromView(start);
        const dg::DVec3 direction =
            m_view.isOrthographic ? m_view.towardsViewer : (m_view.eye - origin) * (1.0 / distance);
        constexpr double kEverything = 4.0 * kUnitRadius;
        rays.Set(lane, origin, direction, m_view.isOrthographic ? kEverything : std::min(distance, kEverything));
    }

    dg::DVec3 StartOf(const FeatureLine& line, double fraction) const
    {
        const double startDepth = m_view.DepthOf(line.start);
        const double endDepth = m_view.DepthOf(line.end);
        const double along = fraction * startDepth / (endDepth + fraction * (startDepth - endDepth));
        dg::DVec3 point = line.start + (line.end - line.start) * along;
        const double pixel = m_view.DepthOf(point) / m_view.pixelsPerUnit;
        const double aside = std::max(kOutwardsPixels * pixel, kSmallestOffset);
        point = point + dg::DVec3{line.outwards.x * aside, -line.outwards.y * aside, 0.0};
        const double before = std::max(kTowardsViewerPixels * pixel, kSmallestOffset);
        if (m_view.isOrthographic) {
            return point - dg::DVec3{0.0, 0.0, before};
        }
        return point * std::max(1.0 - before / point.Length(), 0.5);
    }

    const PreparedScene& m_scene;
    const std::vector<FeatureLine>& m_lines;
    const ViewFrame& m_view;
};

/// Between two neighbouring samples, one visible and one hidden.
struct Change {
    std::size_t line;
    double visible;
    double hidden;
    double place; ///< in the end
};

/// Takes a change to where the edge of the triangle in front crosses the line, or where the line goes through it.
class ChangeSnapper
{
public:
    ChangeSnapper(const PreparedScene& scene, const ViewFrame& view) : m_scene(scene), m_view(view) {}

    void Snap(const FeatureLine& line, std::size_t shape, std::size_t triangle, Change& change)
    {
        if (!Project(shape, triangle)) {
            return;
        }
        m_found = change.place;
        m_target = change.place;
        m_tolerance = kMostPixels / std::max(LengthOf(line), kMostPixels);
        for (std::size_t corner = 0; corner < 3; ++corner) {
            CrossEdge(line, m_screen[corner], m_screen[(corner + 1) % 3]);
        }
        CrossPlane(line);
        change.place = m_found;
    }

private:
    static constexpr double kMostPixels = 0.15;

    bool Project(std::size_t shape, std::size_t triangle)
    {
        const std::array<dg::DVec3, 3> corners = m_scene.CornersOf(shape, triangle);
        for (std::size_t corner = 0; corner < 3; ++corner) {
            m_corners[corner] = m_view.ToView(corners[corner]);
            if (!(m_view.DepthOf(m_corners[corner]) > 0.0)) {
                return false;
            }
            m_screen[corner] = m_view.ToScreen(m_corners[corner]);
        }
        return true;
    }

    void CrossEdge(const FeatureLine& line, const dg::DPoint2D& a, const dg::DPoint2D& b)
    {
        const double dx = line.screenEnd.x - line.screenStart.x;
        const double dy = line.screenEnd.y - line.screenStart.y;
        const double ex = b.x - a.x;
        const double ey = b.y - a.y;
        const double cross = dx * ey - dy * ex;
        Take(((a.x - line.screenStart.x) * ey - (a.y - line.screenStart.y) * ex) / cross);
    }

    void CrossPlane(const FeatureLine& line)
    {
        const dg::DVec3 normal = (m_corners[1] - m_corners[0]).Cross(m_corners[2] - m_corners[0]);
        const double start = (line.start - m_corners[0]).Dot(normal);
        const double end = (line.end - m_corners[0]).Dot(normal);
        const double along = start / (start - end);
        const double startDepth = m_view.DepthOf(line.start);
        const double endDepth = m_view.DepthOf(line.end);
        Take(along * endDepth / (startDepth + along * (endDepth - startDepth)));
    }

    void Take(double fraction) noexcept
    {
        const double distance = std::fabs(fraction - m_target);
        if (fraction >= 0.0 && fraction <= 1.0 && distance < m_tolerance) {
            m_tolerance = distance;
            m_found = fraction;
        }
    }

    const PreparedScene& m_scene;
    const ViewFrame& m_view;
    std::array<dg::DVec3, 3> m_corners;
    std::array<dg::DPoint2D, 3> m_screen;
    double m_target = 0.0;
    double m_found = 0.0;
    double m_tolerance = 0.0;
};

class SpanFinder
{
public:
    SpanFinder(const PreparedScene& scene, const std::vector<FeatureLine>& lines, const ViewFrame& view)
        : m_scene(scene), m_lines(lines), m_view(view), m_caster(scene, lines, view)
    {
    }

    LineSpans Find()
    {
        for (std::size_t line = 0; line < m_lines.size(); ++line) {
            PlanSamples(line);
        }
        m_isHidden.resize(m_samples.size());
        m_caster.FindHidden(
            m_samples.size(), [this](std::size_t i) { return m_samples[i]; },
            [this](std::size_t i, bool isHidden) { m_isHidden[i] = isHidden ? 1 : 0; });
        FindChanges();
        NarrowChanges();
        SnapChanges();
        return MakeSpans();
    }

private:
    void PlanSamples(std::size_t number)
    {
        const FeatureLine& line = m_lines[number];
        if (line.isHidden) {
            return;
        }
        const double length = LengthOf(line);
        if (length < 3.0 * kInsetPixels) {
            m_samples.push_back({number, 0.5});
            return;
        }
        const auto count = static_cast<int>(std::min(std::ceil(length / kSampleStepPixels), kMostSamples));
        const double inset = kInsetPixels / length;
        for (int i = 0; i <= count; ++i) {
            m_samples.push_back({number, inset + (1.0 - 2.0 * inset) * (static_cast<double>(i) / count)});
        }
    }

    void FindChanges()
    {
        for (std::size_t i = 1; i < m_samples.size(); ++i) {
            const LinePlace& before = m_samples[i - 1];
            const LinePlace& after = m_samples[i];
            if (before.line == after.line && m_isHidden[i - 1] != m_isHidden[i]) {
                const bool isHidden = m_isHidden[i] != 0;
                m_changes.push_back({after.line, isHidden ? before.fraction : after.fraction,
                                     isHidden ? after.fraction : before.fraction, 0.0});
            }
        }
    }

    void NarrowChanges()
    {
        const auto middleOf = [this](std::size_t i) {
            return LinePlace{m_changes[i].line, 0.5 * (m_changes[i].visible + m_changes[i].hidden)};
        };
        for (int round = 0; round < kHalvings; ++round) {
            m_caster.FindHidden(m_changes.size(), middleOf, [&](std::size_t i, bool isHidden) {
                const double middle = middleOf(i).fraction;
                (isHidden ? m_changes[i].hidden : m_changes[i].visible) = middle;
            });
        }
        for (std::size_t i = 0; i < m_changes.size(); ++i) {
            m_changes[i].place = middleOf(i).fraction;
        }
    }

    void SnapChanges()
    {
        ChangeSnapper snapper(m_scene, m_view);
        m_caster.FindInFront(
            m_changes.size(),
            [this](std::size_t i) {
                return LinePlace{m_changes[i].line, m_changes[i].hidden};
            },
            [&](std::size_t i, std::size_t shape, std::size_t triangle) {
                snapper.Snap(m_lines[m_changes[i].line], shape, triangle, m_changes[i]);
            });
    }

    LineSpans MakeSpans() const
    {
        LineSpans result;
        result.first.reserve(m_lines.size() + 1);
        std::size_t sample = 0;
        std::size_t change = 0;
        for (std::size_t line = 0; line < m_lines.size(); ++line) {
            result.first.push_back(result.spans.size());
            const bool startsVisible = !m_lines[line].isHidden && m_isHidden[sample] == 0;
            result.spans.push_back({0.0, 1.0, startsVisible});
            for (; change < m_changes.size() && m_changes[change].line == line; ++change) {
                LineSpan& last = result.spans.back();
                const double place = std::max(m_changes[change].place, last.from);
                const LineSpan next{place, 1.0, !last.isVisible};
                last.to = place;
                result.spans.push_back(next);
            }
            while (sample < m_samples.size() && m_samples[sample].line == line) {
                ++sample;
            }
        }
        result.first.push_back(result.spans.size());
        return result;
    }

    const PreparedScene& m_scene;
    const std::vector<FeatureLine>& m_lines;
    const ViewFrame& m_view;
    LineCaster m_caster;
    std::vector<LinePlace> m_samples; ///< by line, and by their places on it
    std::vector<char> m_isHidden;     ///< the samples
    std::vector<Change> m_changes;
};

} // namespace

LineSpans FindLineSpans(const PreparedScene& scene, const std::vector<FeatureLine>& lines, const ViewFrame& view)
{
    return SpanFinder(scene, lines, view).Find();
}

} // namespace luhost::render
