#include <luhost/render/FeatureLines.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace luhost::render
{

namespace
{

constexpr std::uint32_t kNone = MeshEdge::kNone;

/// Nearer before the eye nothing is drawn, in the unit frame.
constexpr double kNearest = 1.0e-5;
/// Lines go on for so many pixels beyond the sheet, that no end of one shows.
constexpr double kMarginPixels = 16.0;

/// Where a camera stands, in the frame of a welded mesh.
class LocalViewer
{
public:
    LocalViewer(const dg::DMat44& toUnit, const ViewFrame& view) : m_isOrthographic(view.isOrthographic)
    {
        dg::DMat44 inverse = toUnit;
        m_isValid = inverse.Invert();
        m_place = m_isOrthographic ? inverse.TransformVector(view.towardsViewer).Normalized()
                                   : inverse.TransformPoint(dg::DPoint3D::ORIGIN + view.eye) - dg::DPoint3D::ORIGIN;
    }

    bool IsValid() const noexcept { return m_isValid && !m_place.IsBad(); }
    const dg::DVec3& GetPlace() const noexcept { return m_place; }

    /// Whether a face turns to the viewer; one seen edge-on does not.
    bool Faces(const dg::FVec3& point, const dg::FVec3& normal) const noexcept
    {
        constexpr double kSmallestCosine = 2.0e-6;
        const auto wide = [](const dg::FVec3& v) {
            return dg::DVec3{static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
        };
        const dg::DVec3 towards = m_isOrthographic ? m_place : m_place - wide(point);
        const double cosine = towards.Dot(wide(normal));
        return cosine > 0.0 && cosine * cosine > kSmallestCosine * kSmallestCosine * towards.Dot(towards);
    }

private:
    bool m_isOrthographic;
    bool m_isValid = false;
    dg::DVec3 m_place; ///< of the eye; the direction to it for an orthographic camera
};

class LineFinder
{
public:
    LineFinder(const PreparedScene& scene, std::size_t shape, const ViewFrame& view)
        : m_shape(scene.shapes[shape]), m_mesh(*scene.welded[m_shape.mesh]), m_edges(*scene.meshes[m_shape.mesh].edges),
          m_view(view), m_viewer(m_shape.toUnit, view)
    {
    }

    std::vector<FeatureLine> Find()
    {
        if (m_viewer.IsValid()) {
            ProjectVertices();
            FindFacing();
            m_mayTrustBodies = m_shape.isOpaque && !IsEyeInside();
            for (const MeshEdge& edge : m_edges.edges) {
                AddEdge(edge);
            }
        }
        return std::move(m_lines);
    }

private:
    void ProjectVertices()
    {
        m_points.reserve(m_mesh.GetVertexCount());
        for (std::size_t i = 0; i < m_mesh.GetVertexCount(); ++i) {
            const dg::FVec3& p = m_mesh.positions[i];
            const dg::DPoint3D inUnit = m_shape.toUnit.TransformPoint(
                {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)});
            m_points.push_back(m_view.ToView(inUnit - dg::DPoint3D::ORIGIN));
        }
    }

    void FindFacing()
    {
        m_isFacing.reserve(m_mesh.triangles.size());
        for (std::size_t i = 0; i < m_mesh.triangles.size(); ++i) {
            m_isFacing.push_back(m_viewer.Faces(m_mesh.positions[m_mesh.triangles[i][0]], m_edges.normals[i]) ? 1 : 0);
        }
    }

    /// From within, a body shows the backs of its faces. Nobody is inside who is outside its box.
    bool IsEyeInside() const noexcept
    {
        const dg::DVec3& eye = m_viewer.GetPlace();
        return !m_view.isOrthographic && std::max({std::fabs(eye.x), std::fabs(eye.y), std::fabs(eye.z)}) <= 1.0;
    }

    std::optional<LineKind> KindOf(const MeshEdge& edge, bool isLeftFacing, bool isRightFacing) const noexcept
    {
        switch (edge.kind) {
        case MeshEdge::Kind::Nothing:
            return std::nullopt;
        case MeshEdge::Kind::Border:
            return LineKind::Border;
        case MeshEdge::Kind::Crease:
            return isLeftFacing != isRightFacing ? LineKind::Silhouette : LineKind::Crease;
        case MeshEdge::Kind::PartBoundary:
            return isLeftFacing != isRightFacing ? LineKind::Silhouette : LineKind::PartBoundary;
        case MeshEdge::Kind::Smooth:
            break;
        }
        return isLeftFacing != isRightFacing ? std::optional(LineKind::Silhouette) : std::nullopt;
    }

    /// An edge that stands out is seen from where one of its faces is seen, one that lies in a corner only from where both are.
    static bool IsBehindItself(const MeshEdge& edge, bool isLeftFacing, bool isRightFacing) noexcept
    {
        return edge.isConcave ? !isLeftFacing || !isRightFacing : !isLeftFacing && !isRightFacing;
    }

    void AddEdge(const MeshEdge& edge)
    {
        const bool isLeftFacing = m_isFacing[edge.left];
        const bool isRightFacing = edge.right != kNone && (m_isFacing[edge.right] != 0) != edge.isTwisted;
        const std::optional<LineKind> kind = KindOf(edge, isLeftFacing, isRightFacing);
        if (!kind) {
            return;
        }
        FeatureLine line;
        line.kind = *kind;
        line.isSmooth = edge.kind == MeshEdge::Kind::Smooth;
        line.isHidden = m_mayTrustBodies && edge.isSolid && IsBehindItself(edge, isLeftFacing, isRightFacing);
        line.startVertex = edge.start;
        line.endVertex = edge.end;
        line.start = m_points[edge.start];
        line.end = m_points[edge.end];
        if (FitToSheet(m_view, line)) {
            line.outwards = OutwardsOf(edge, line);
            m_lines.push_back(line);
        }
    }

    /// Away from the side on which all its faces appear.
    dg::DPoint2D OutwardsOf(const MeshEdge& edge, const FeatureLine& line) const noexcept
    {
        const double dx = line.screenEnd.x - line.screenStart.x;
        const double dy = line.screenEnd.y - line.screenStart.y;
        const double length = std::sqrt(dx * dx + dy * dy);
        const int left = SideOf(edge, edge.left);
        const int right = edge.right == kNone ? left : SideOf(edge, edge.right);
        const int side = left == 0 ? right : left;
        if (!(length > 0.0) || left * right < 0) {
            return {0.0, 0.0};
        }
        return {-side * dy / length, side * dx / length};
    }

    /// On which side of the edge, as it runs over the screen, a face appears: 1 to the left, -1 to the right, 0 for a face
    /// that is seen edge-on.
    int SideOf(const MeshEdge& edge, std::uint32_t triangle) const noexcept
    {
        constexpr double kSmallestSine = 1.0e-6;
        for (const std::uint32_t vertex : m_mesh.triangles[triangle]) {
            if (vertex != edge.start && vertex != edge.end) {
                const dg::DVec3& from = m_points[edge.start];
                const dg::DVec3 across = (m_points[edge.end] - from).Cross(m_points[vertex] - from);
                const dg::DVec3 lineOfSight = m_view.isOrthographic ? dg::DVec3{0.0, 0.0, 1.0} : from;
                const double sine = across.Dot(lineOfSight);
                const double smallest = kSmallestSine * std::sqrt(across.Dot(across) * lineOfSight.Dot(lineOfSight));
                return sine > smallest ? 1 : sine < -smallest ? -1 : 0;
            }
        }
        return 0;
    }

    const RayScene::Shape& m_shape;
    const WeldedMesh& m_mesh;
    const MeshEdges& m_edges;
    const ViewFrame& m_view;
    LocalViewer m_viewer;
    bool m_mayTrustBodies = false;
    std::vector<dg::DVec3> m_points; ///< view points of the vertices
    std::vector<char> m_isFacing;    ///< the triangles that turn to the viewer
    std::vector<FeatureLine> m_lines;
};

} // namespace

bool FitToSheet(const ViewFrame& view, FeatureLine& line) noexcept
{
    const double halfWidth = (0.5 * view.pixelWidth + kMarginPixels) / view.pixelsPerUnit;
    const double halfHeight = (0.5 * view.pixelHeight + kMarginPixels) / view.pixelsPerUnit;
    double first = 0.0;
    double last = 1.0;
    const auto cut = [&](double atStart, double atEnd) {
        if (atStart < 0.0 && atEnd > atStart) {
            first = std::max(first, atStart / (atStart - atEnd));
        } else if (atEnd < 0.0 && atStart > atEnd) {
            last = std::min(last, atStart / (atStart - atEnd));
        } else if (!(atStart >= 0.0)) {
            last = -1.0;
        }
    };
    const auto cutSide = [&](double start, double end, double half) {
        cut(half * view.DepthOf(line.start) - start, half * view.DepthOf(line.end) - end);
    };
    cutSide(line.start.x, line.end.x, halfWidth);
    cutSide(-line.start.x, -line.end.x, halfWidth);
    cutSide(line.start.y, line.end.y, halfHeight);
    cutSide(-line.start.y, -line.end.y, halfHeight);
    if (!view.isOrthographic) {
        cut(line.start.z - kNearest, line.end.z - kNearest);
    }
    if (!(first < last)) {
        return false;
    }
    const dg::DVec3 whole = line.end - line.start;
    if (last < 1.0) {
        line.end = line.start + whole * last;
        line.endVertex = FeatureLine::kNoVertex;
    }
    if (first > 0.0) {
        line.start = line.start + whole * first;
        line.startVertex = FeatureLine::kNoVertex;
    }
    line.screenStart = view.ToScreen(line.start);
    line.screenEnd = view.ToScreen(line.end);
    return true;
}

std::vector<FeatureLine> FindFeatureLines(const PreparedScene& scene, std::size_t shape, const ViewFrame& view)
{
    return LineFinder(scene, shape, view).Find();
}

} // namespace luhost::render
