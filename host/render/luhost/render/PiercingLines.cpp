#include <luhost/render/PiercingLines.h>
#include <luhost/render/PixelRays.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

namespace luhost::render
{

namespace
{

/// Surfaces that go through one another by less only touch, in the unit frame.
constexpr double kTouching = 1.0e-5;
/// A line goes on over what is no longer, past a corner that lies in the other surface.
constexpr double kBridge = 4.0 * kTouching;
/// Whoever has more of them sees no picture anyway.
constexpr std::size_t kMostPairs = 2'000'000;
constexpr int kBandRows = 16;

/// A triangle where it is shown.
struct Facet {
    std::uint32_t shape = 0;
    std::uint32_t triangle = 0;
    bool operator==(const Facet&) const = default;
    bool operator<(const Facet& other) const noexcept
    {
        return std::tie(shape, triangle) < std::tie(other.shape, other.triangle);
    }
};

/// The lower facet first.
struct FacetPair {
    Facet a;
    Facet b;
    bool operator==(const FacetPair&) const = default;
    bool operator<(const FacetPair& other) const noexcept { return std::tie(a, b) < std::tie(other.a, other.b); }
};

FacetPair PairOf(const Facet& a, const Facet& b) noexcept { return a < b ? FacetPair{a, b} : FacetPair{b, a}; }

/// Where the edge of a facet goes through another facet: an end of a line, the same for both facets at the edge.
struct Piercing {
    std::uint32_t shape = 0; ///< of the edge
    std::uint32_t start = 0; ///< vertices, the lower number first
    std::uint32_t end = 0;
    Facet through;
    bool operator<(const Piercing& other) const noexcept
    {
        return std::tie(shape, start, end, through) < std::tie(other.shape, other.start, other.end, other.through);
    }
};

struct LineEnd {
    Piercing piercing;
    dg::DVec3 point; ///< in the unit frame
};

/// Where two facets meet in a line.
struct Crossing {
    LineEnd start;
    LineEnd end;
    bool isThrough = false; ///< each reaches to both sides of the other
};

class FacetCrosser
{
public:
    explicit FacetCrosser(const PreparedScene& scene) : m_scene(scene) {}

    bool AreNeighbours(const Facet& a, const Facet& b) const
    {
        if (a.shape != b.shape) {
            return false;
        }
        const WeldedMesh::Triangle& corners = TriangleOf(a);
        const WeldedMesh::Triangle& others = TriangleOf(b);
        return std::ranges::any_of(corners,
                                   [&](std::uint32_t corner) { return std::ranges::count(others, corner) > 0; });
    }

    std::optional<Crossing> Cross(const FacetPair& pair) const
    {
        const Placed a = Place(pair.a);
        const Placed b = Place(pair.b);
        std::array<End, 2> endsOfA;
        std::array<End, 2> endsOfB;
        if (!FindEnds(a, b, endsOfA) || !FindEnds(b, a, endsOfB)) {
            return std::nullopt;
        }
        const dg::DVec3 along = a.normal.Cross(b.normal);
        Sort(endsOfA, along);
        Sort(endsOfB, along);
        const End& start = endsOfA[0].place >= endsOfB[0].place ? endsOfA[0] : endsOfB[0];
        const End& end = endsOfA[1].place <= endsOfB[1].place ? endsOfA[1] : endsOfB[1];
        if (!(end.place >= start.place)) {
            return std::nullopt;
        }
        return Crossing{start.end, end.end, ReachesThrough(a, b) && ReachesThrough(b, a)};
    }

    /// The facets of the same shape at an edge.
    std::vector<Facet> FacetsAt(const Piercing& piercing) const
    {
        const std::vector<MeshEdge>& edges = m_scene.meshes[m_scene.shapes[piercing.shape].mesh].edges->edges;
        const auto isBefore = [](const MeshEdge& edge, const Piercing& wanted) {
            return edge.start != wanted.start ? edge.start < wanted.start : edge.end < wanted.end;
        };
        std::vector<Facet> facets;
        for (auto edge = std::lower_bound(edges.begin(), edges.end(), piercing, isBefore);
             edge != edges.end() && edge->start == piercing.start && edge->end == piercing.end; ++edge) {
            for (const std::uint32_t triangle : {edge->left, edge->right}) {
                if (triangle != MeshEdge::kNone) {
                    facets.push_back({piercing.shape, triangle});
                }
            }
        }
        return facets;
    }

private:
    struct Placed {
        Facet facet;
        std::array<dg::DVec3, 3> corners;
        dg::DVec3 normal; ///< of length 1
    };
    struct End {
        LineEnd end;
        double place = 0.0; ///< along the line in which the two planes meet
    };

    const WeldedMesh::Triangle& TriangleOf(const Facet& facet) const
    {
        return m_scene.welded[m_scene.shapes[facet.shape].mesh]->triangles[facet.triangle];
    }

    Placed Place(const Facet& facet) const
    {
        Placed placed{facet, m_scene.CornersOf(facet.shape, facet.triangle), {}};
        placed.normal =
            (placed.corners[1] - placed.corners[0]).Cross(placed.corners[2] - placed.corners[0]).Normalized();
        return placed;
    }

    static std::array<double, 3> HeightsOver(const Placed& plane, const Placed& facet)
    {
        std::array<double, 3> heights;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            heights[corner] = (facet.corners[corner] - plane.corners[0]).Dot(plane.normal);
        }
        return heights;
    }

    static bool ReachesThrough(const Placed& facet, const Placed& plane)
    {
        const auto [low, high] = std::ranges::minmax(HeightsOver(plane, facet));
        return low < -kTouching && high > kTouching;
    }

    /// Where the edges of a facet go through the plane of another. @return false when it lies on one side of it
    bool FindEnds(const Placed& facet, const Placed& plane, std::array<End, 2>& ends) const
    {
        const std::array<double, 3> heights = HeightsOver(plane, facet);
        std::size_t count = 0;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const std::size_t next = (corner + 1) % 3;
            if ((heights[corner] < 0.0) != (heights[next] < 0.0)) {
                ends[count++].end = EndOn(facet, plane, heights, corner, next);
            }
        }
        return count == 2;
    }

    /// Reckoned from the vertex with the lower number on, to be the same for both facets at the edge.
    LineEnd EndOn(const Placed& facet, const Placed& plane, const std::array<double, 3>& heights, std::size_t from,
                  std::size_t to) const
    {
        const WeldedMesh::Triangle& triangle = TriangleOf(facet.facet);
        if (triangle[from] > triangle[to]) {
            std::swap(from, to);
        }
        const double share = heights[from] / (heights[from] - heights[to]);
        return {{facet.facet.shape, triangle[from], triangle[to], plane.facet},
                facet.corners[from] + (facet.corners[to] - facet.corners[from]) * share};
    }

    static void Sort(std::array<End, 2>& ends, const dg::DVec3& along)
    {
        for (End& end : ends) {
            end.place = end.end.point.Dot(along);
        }
        if (ends[0].place > ends[1].place) {
            std::swap(ends[0], ends[1]);
        }
    }

    const PreparedScene& m_scene;
};

/// Looks for pixels side by side between which there is such a line.
class SeedFinder
{
public:
    SeedFinder(const PreparedScene& scene, const ViewFrame& view)
        : m_scene(scene), m_view(view), m_rays(view), m_crosser(scene)
    {
    }

    Outcome Find(const Workers& workers, std::vector<FacetPair>& seeds)
    {
        const auto bandCount = static_cast<std::size_t>((m_view.pixelHeight + kBandRows - 1) / kBandRows);
        std::vector<std::vector<FacetPair>> found(bandCount);
        const Outcome outcome =
            RunParallel(bandCount, workers, [&](std::size_t band) { FindInBand(band, found[band]); });
        for (const std::vector<FacetPair>& ofBand : found) {
            seeds.insert(seeds.end(), ofBand.begin(), ofBand.end());
        }
        std::sort(seeds.begin(), seeds.end());
        seeds.erase(std::unique(seeds.begin(), seeds.end()), seeds.end());
        return outcome;
    }

private:
    /// What is seen at a pixel: what is nearest, and the nearest that nothing is seen through.
    struct Sight {
        Facet nearest;
        Facet opaque;
    };
    using Row = std::vector<Sight>;

    void FindInBand(std::size_t band, std::vector<FacetPair>& seeds) const
    {
        const int first = static_cast<int>(band) * kBandRows;
        const int last = std::min(first + kBandRows, m_view.pixelHeight - 1);
        Row above = LookAlong(first);
        for (int row = first; row <= last; ++row) {
            Row below = row < last ? LookAlong(row + 1) : Row();
            for (std::size_t column = 0; column < above.size(); ++column) {
                if (column > 0) {
                    Compare(above[column - 1], above[column], seeds);
                }
                if (!below.empty()) {
                    Compare(above[column], below[column], seeds);
                }
            }
            above = std::move(below);
        }
    }

    Row LookAlong(int row) const
    {
        Row sights(static_cast<std::size_t>(m_view.pixelWidth));
        RayPacket rays;
        HitPacket hits;
        HitPacket opaque;
        rays.count = RayPacket::kWidth;
        for (std::size_t first = 0; first < sights.size(); first += RayPacket::kWidth) {
            for (unsigned lane = 0; lane < RayPacket::kWidth; ++lane) {
                m_rays.Set(rays, lane, static_cast<double>(first + lane) + 0.5, row + 0.5);
            }
            m_scene.rays->Intersect(rays, hits);
            const bool hitsClear = std::ranges::any_of(hits.shape, [this](std::uint32_t shape) {
                return shape != HitPacket::kNothing && !m_scene.shapes[shape].isOpaque;
            });
            if (hitsClear) {
                m_scene.rays->IntersectOpaque(rays, opaque);
            }
            const HitPacket& behind = hitsClear ? opaque : hits;
            for (std::size_t lane = 0; lane < RayPacket::kWidth && first + lane < sights.size(); ++lane) {
                sights[first + lane] = {{hits.shape[lane], hits.triangle[lane]},
                                        {behind.shape[lane], behind.triangle[lane]}};
            }
        }
        return sights;
    }

    void Compare(const Sight& a, const Sight& b, std::vector<FacetPair>& seeds) const
    {
        Try(a.nearest, b.nearest, seeds);
        if (!(a.nearest == a.opaque && b.nearest == b.opaque)) {
            Try(a.opaque, b.opaque, seeds);
        }
    }

    void Try(const Facet& a, const Facet& b, std::vector<FacetPair>& seeds) const
    {
        if (a == b || a.shape == HitPacket::kNothing || b.shape == HitPacket::kNothing) {
            return;
        }
        const FacetPair pair = PairOf(a, b);
        if ((!seeds.empty() && seeds.back() == pair) || m_crosser.AreNeighbours(a, b)) {
            return;
        }
        if (const auto crossing = m_crosser.Cross(pair); crossing && crossing->isThrough) {
            seeds.push_back(pair);
        }
    }

    const PreparedScene& m_scene;
    const ViewFrame& m_view;
    PixelRays m_rays;
    FacetCrosser m_crosser;
};

/// Follows lines from one pair of facets to the next.
class LineFollower
{
public:
    using Crossings = std::map<FacetPair, Crossing>;

    explicit LineFollower(const PreparedScene& scene) : m_crosser(scene) {}

    Crossings Follow(const std::vector<FacetPair>& seeds)
    {
        for (const FacetPair& seed : seeds) {
            Plan(seed);
        }
        while (!m_due.empty()) {
            const FacetPair pair = m_due.front();
            m_due.pop_front();
            if (const auto crossing = m_crosser.Cross(pair); crossing && IsOfLine(*crossing)) {
                m_crossings.emplace(pair, *crossing);
                GoOnFrom(crossing->start.piercing);
                GoOnFrom(crossing->end.piercing);
            }
        }
        return std::move(m_crossings);
    }

private:
    static bool IsOfLine(const Crossing& crossing)
    {
        return crossing.isThrough || (crossing.end.point - crossing.start.point).Length() <= kBridge;
    }

    void GoOnFrom(const Piercing& piercing)
    {
        for (const Facet& facet : m_crosser.FacetsAt(piercing)) {
            if (!m_crosser.AreNeighbours(facet, piercing.through)) {
                Plan(PairOf(facet, piercing.through));
            }
        }
    }

    void Plan(const FacetPair& pair)
    {
        if (m_planned.size() < kMostPairs && m_planned.insert(pair).second) {
            m_due.push_back(pair);
        }
    }

    FacetCrosser m_crosser;
    std::set<FacetPair> m_planned;
    std::deque<FacetPair> m_due;
    Crossings m_crossings;
};

class LineMaker
{
public:
    LineMaker(const PreparedScene& scene, const ViewFrame& view, std::vector<std::vector<FeatureLine>>& lines)
        : m_scene(scene), m_view(view), m_lines(lines)
    {
    }

    void Add(const FacetPair& pair, const Crossing& crossing)
    {
        FeatureLine line;
        line.kind = LineKind::Piercing;
        line.startVertex = NumberOf(crossing.start.piercing);
        line.endVertex = NumberOf(crossing.end.piercing);
        line.start = m_view.ToView(crossing.start.point);
        line.end = m_view.ToView(crossing.end.point);
        if (FitToSheet(m_view, line)) {
            m_lines[OwnerOf(pair)].push_back(line);
        }
    }

private:
    std::uint32_t NumberOf(const Piercing& piercing)
    {
        return m_numbers.emplace(piercing, static_cast<std::uint32_t>(m_numbers.size())).first->second;
    }

    std::uint32_t OwnerOf(const FacetPair& pair) const
    {
        const bool isSecond = m_scene.geometry.shapes[pair.a.shape].kind == SceneShape::Kind::Product &&
                              m_scene.geometry.shapes[pair.b.shape].kind == SceneShape::Kind::Symbol;
        return isSecond ? pair.b.shape : pair.a.shape;
    }

    const PreparedScene& m_scene;
    const ViewFrame& m_view;
    std::vector<std::vector<FeatureLine>>& m_lines;
    std::map<Piercing, std::uint32_t> m_numbers;
};

} // namespace

Outcome FindPiercingLines(const PreparedScene& scene, const ViewFrame& view, const Workers& workers,
                          std::vector<std::vector<FeatureLine>>& lines)
{
    lines.assign(scene.shapes.size(), {});
    std::vector<FacetPair> seeds;
    const Outcome outcome = SeedFinder(scene, view).Find(workers, seeds);
    if (outcome == Outcome::Done) {
        LineMaker maker(scene, view, lines);
        for (const auto& [pair, crossing] : LineFollower(scene).Follow(seeds)) {
            maker.Add(pair, crossing);
        }
    }
    return outcome;
}

} // namespace luhost::render
