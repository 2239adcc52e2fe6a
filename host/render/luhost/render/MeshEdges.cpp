#include <dg/DVec3.h>
#include <luhost/render/MeshEdges.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

namespace luhost::render
{

namespace
{

constexpr std::uint32_t kNone = MeshEdge::kNone;

dg::DVec3 ToVector(const dg::FVec3& v) noexcept
{
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

dg::FVec3 ToSingle(const dg::DVec3& v) noexcept
{
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

bool IsZero(const dg::FVec3& v) noexcept { return v == dg::FVec3(); }

/// Zero for a triangle that welding may have bent into any direction.
dg::DVec3 NormalOf(const WeldedMesh& mesh, const WeldedMesh::Triangle& triangle) noexcept
{
    constexpr double kSmallestHeight = 2.0 * kWeldDistance;
    const dg::DVec3 origin = ToVector(mesh.positions[triangle[0]]);
    const dg::DVec3 a = ToVector(mesh.positions[triangle[1]]) - origin;
    const dg::DVec3 b = ToVector(mesh.positions[triangle[2]]) - origin;
    const dg::DVec3 normal = a.Cross(b);
    const dg::DVec3 c = b - a;
    const double longestSquare = std::max({a.Dot(a), b.Dot(b), c.Dot(c)});
    const double length = normal.Length();
    return length > kSmallestHeight * std::sqrt(longestSquare) ? normal * (1.0 / length) : dg::DVec3();
}

/// Of the angle between the two faces of an edge, 1 where they are level.
double CosineAt(const MeshEdges& edges, const MeshEdge& edge) noexcept
{
    const double cosine = ToVector(edges.normals[edge.left]).Dot(ToVector(edges.normals[edge.right]));
    return edge.isTwisted ? -cosine : cosine;
}

/// One side of a triangle, at the vertex with the lower number.
struct HalfEdge {
    std::uint32_t other;  ///< the vertex with the higher number
    std::uint32_t corner; ///< three times the triangle, and where in it the side begins
    bool operator<(const HalfEdge& right) const noexcept
    {
        return other != right.other ? other < right.other : corner < right.corner;
    }
};

/// All of them by their lower vertex.
class HalfEdges
{
public:
    explicit HalfEdges(const WeldedMesh& mesh) : m_begin(mesh.GetVertexCount() + 2, 0)
    {
        ForEach(mesh, [this](std::uint32_t lower, const HalfEdge&) { ++m_begin[lower + 2]; });
        std::partial_sum(m_begin.begin(), m_begin.end(), m_begin.begin());
        m_halves.resize(3 * mesh.triangles.size());
        ForEach(mesh, [this](std::uint32_t lower, const HalfEdge& half) { m_halves[m_begin[lower + 1]++] = half; });
        for (std::size_t vertex = 0; vertex < mesh.GetVertexCount(); ++vertex) {
            std::sort(Begin(vertex), Begin(vertex + 1));
        }
    }

    HalfEdge* Begin(std::size_t vertex) noexcept { return m_halves.data() + m_begin[vertex]; }

private:
    template <class Take>
    static void ForEach(const WeldedMesh& mesh, const Take& take)
    {
        std::uint32_t corner = 0;
        for (const WeldedMesh::Triangle& triangle : mesh.triangles) {
            for (std::size_t i = 0; i < 3; ++i, ++corner) {
                const std::uint32_t from = triangle[i];
                const std::uint32_t to = triangle[(i + 1) % 3];
                take(std::min(from, to), {std::max(from, to), corner});
            }
        }
    }

    std::vector<std::uint32_t> m_begin;
    std::vector<HalfEdge> m_halves;
};

class EdgeMaker
{
public:
    EdgeMaker(const WeldedMesh& mesh, MeshEdges& result) : m_mesh(mesh), m_result(result) {}

    void Make()
    {
        HalfEdges halves(m_mesh);
        m_result.edges.reserve(m_mesh.triangles.size() * 3 / 2 + 16);
        for (std::size_t vertex = 0; vertex < m_mesh.GetVertexCount(); ++vertex) {
            const HalfEdge* const end = halves.Begin(vertex + 1);
            for (HalfEdge* first = halves.Begin(vertex); first != end;) {
                HalfEdge* last = first;
                while (last != end && last->other == first->other) {
                    ++last;
                }
                AddEdge(static_cast<std::uint32_t>(vertex), first, DropDoubles(first, last));
                first = last;
            }
        }
        m_result.edges.shrink_to_fit();
    }

private:
    std::uint32_t OppositeOf(const HalfEdge& half) const
    {
        return m_mesh.triangles[half.corner / 3][(half.corner % 3 + 2) % 3];
    }

    bool IsForward(const HalfEdge& half) const
    {
        return m_mesh.triangles[half.corner / 3][half.corner % 3] < half.other;
    }

    /// Of triangles that are there twice, whichever way they wind, the first one stays. @return the new end
    HalfEdge* DropDoubles(HalfEdge* first, HalfEdge* last) const
    {
        if (last - first < 2) {
            return last;
        }
        std::sort(first, last, [this](const HalfEdge& a, const HalfEdge& b) {
            const std::uint32_t oppositeA = OppositeOf(a);
            const std::uint32_t oppositeB = OppositeOf(b);
            return oppositeA != oppositeB ? oppositeA < oppositeB : a.corner < b.corner;
        });
        last = std::unique(first, last,
                           [this](const HalfEdge& a, const HalfEdge& b) { return OppositeOf(a) == OppositeOf(b); });
        std::sort(first, last);
        return last;
    }

    void AddEdge(std::uint32_t vertex, const HalfEdge* first, const HalfEdge* last)
    {
        MeshEdge edge{vertex, first->other, first->corner / 3};
        if (last - first == 1) {
            edge.kind = MeshEdge::Kind::Border;
        } else {
            edge.right = first[1].corner / 3;
            edge.isTwisted = IsForward(first[0]) == IsForward(first[1]);
            edge.kind = last - first > 2 ? MeshEdge::Kind::Crease : MeshEdge::Kind::Smooth;
        }
        edge.isSolid = last - first == 2 && !edge.isTwisted;
        m_result.edges.push_back(edge);
    }

    const WeldedMesh& m_mesh;
    MeshEdges& m_result;
};

/// Gives triangles without an area the normals of their neighbours.
class NormalLender
{
public:
    NormalLender(const WeldedMesh& mesh, MeshEdges& result) : m_mesh(mesh), m_result(result) {}

    void Lend()
    {
        constexpr int kMostRounds = 8; // thin triangles side by side
        std::vector<const MeshEdge*> open;
        for (const MeshEdge& edge : m_result.edges) {
            if (edge.right != kNone && (NeedsAcross(edge, edge.left) || NeedsAcross(edge, edge.right))) {
                open.push_back(&edge);
            }
        }
        for (int round = 0; round < kMostRounds && !open.empty(); ++round) {
            std::erase_if(open, [this](const MeshEdge* edge) { return LendAcross(*edge); });
        }
    }

private:
    bool NeedsAcross(const MeshEdge& edge, std::uint32_t triangle) const
    {
        return IsZero(m_result.normals[triangle]) && LengthSquare(edge.start, edge.end) >= LongestSquare(triangle);
    }

    double LengthSquare(std::uint32_t a, std::uint32_t b) const
    {
        const dg::DVec3 side = ToVector(m_mesh.positions[a]) - ToVector(m_mesh.positions[b]);
        return side.Dot(side);
    }

    double LongestSquare(std::uint32_t number) const
    {
        const WeldedMesh::Triangle& triangle = m_mesh.triangles[number];
        return std::max({LengthSquare(triangle[0], triangle[1]), LengthSquare(triangle[1], triangle[2]),
                         LengthSquare(triangle[2], triangle[0])});
    }

    bool LendAcross(const MeshEdge& edge)
    {
        dg::FVec3& left = m_result.normals[edge.left];
        dg::FVec3& right = m_result.normals[edge.right];
        if (IsZero(left) == IsZero(right)) {
            return !IsZero(left);
        }
        const dg::FVec3 lent = IsZero(left) ? right : left;
        (IsZero(left) ? left : right) = edge.isTwisted ? dg::FVec3{-lent.x, -lent.y, -lent.z} : lent;
        return true;
    }

    const WeldedMesh& m_mesh;
    MeshEdges& m_result;
};

class Classifier
{
public:
    Classifier(const WeldedMesh& mesh, const luk::Mesh& colors, double creaseAngle, MeshEdges& result)
        : m_mesh(mesh), m_parts(colors.GetParts()), m_smallestCosine(std::cos(creaseAngle)), m_result(result)
    {
    }

    void Classify()
    {
        for (MeshEdge& edge : m_result.edges) {
            edge.isConcave = edge.isSolid && IsConcave(edge);
            const bool hasArea =
                !IsZero(m_result.normals[edge.left]) && (edge.right == kNone || !IsZero(m_result.normals[edge.right]));
            if (!hasArea) {
                edge.kind = MeshEdge::Kind::Nothing;
            } else if (edge.kind == MeshEdge::Kind::Smooth) {
                edge.kind = IsSharp(edge)           ? MeshEdge::Kind::Crease
                            : IsBetweenColors(edge) ? MeshEdge::Kind::PartBoundary
                                                    : MeshEdge::Kind::Smooth;
            }
        }
    }

    /// Whether a crease is no more than a step of a rounding may be.
    bool IsBlunt(const MeshEdge& edge) const
    {
        return edge.kind == MeshEdge::Kind::Crease && edge.isSolid && CosineAt(m_result, edge) > m_bluntCosine &&
               !IsBetweenColors(edge);
    }

private:
    bool IsSharp(const MeshEdge& edge) const { return CosineAt(m_result, edge) < m_smallestCosine; }

    /// Whether the other corner of the right triangle lies over the left one.
    bool IsConcave(const MeshEdge& edge) const
    {
        const WeldedMesh::Triangle& right = m_mesh.triangles[edge.right];
        const dg::DVec3 start = ToVector(m_mesh.positions[edge.start]);
        double height = 0.0;
        for (const std::uint32_t vertex : right) {
            if (vertex != edge.start && vertex != edge.end) {
                height = (ToVector(m_mesh.positions[vertex]) - start).Dot(ToVector(m_result.normals[edge.left]));
            }
        }
        return height > 0.0;
    }

    bool IsBetweenColors(const MeshEdge& edge) const
    {
        return m_mesh.runs.size() > 1 && !(ColorOf(edge.left) == ColorOf(edge.right));
    }

    dg::Color ColorOf(std::uint32_t triangle) const
    {
        const std::size_t part = m_mesh.PartOf(triangle);
        return part < m_parts.size() ? m_parts[part].color : luk::Mesh::Part().color;
    }

    const WeldedMesh& m_mesh;
    const std::vector<luk::Mesh::Part>& m_parts;
    double m_smallestCosine;
    double m_bluntCosine = std::cos(50.0 * std::numbers::pi / 180.0);
    MeshEdges& m_result;
};

/// Takes away the blunt creases that end in the midst of a surface. Of a rounding in coarse steps some bend a little more
/// than the limit and others a little less, so that nothing would be left of its lines but scraps.
class CreaseTrimmer
{
public:
    CreaseTrimmer(const WeldedMesh& mesh, const Classifier& classifier, MeshEdges& result)
        : m_classifier(classifier), m_result(result), m_count(mesh.GetVertexCount(), 0),
          m_joined(mesh.GetVertexCount(), 0)
    {
    }

    void Trim()
    {
        for (std::uint32_t number = 0; number < m_result.edges.size(); ++number) {
            const MeshEdge& edge = m_result.edges[number];
            if (edge.kind != MeshEdge::Kind::Smooth) {
                for (const std::uint32_t vertex : {edge.start, edge.end}) {
                    ++m_count[vertex];
                    m_joined[vertex] ^= number;
                }
            }
        }
        for (std::uint32_t vertex = 0; vertex < m_count.size(); ++vertex) {
            TrimFrom(vertex);
        }
    }

private:
    /// As far as the line goes without meeting another one.
    void TrimFrom(std::uint32_t vertex)
    {
        while (m_count[vertex] == 1) {
            const std::uint32_t number = m_joined[vertex];
            MeshEdge& edge = m_result.edges[number];
            if (!m_classifier.IsBlunt(edge)) {
                return;
            }
            edge.kind = MeshEdge::Kind::Smooth;
            for (const std::uint32_t end : {edge.start, edge.end}) {
                --m_count[end];
                m_joined[end] ^= number;
            }
            vertex = edge.start == vertex ? edge.end : edge.start;
        }
    }

    const Classifier& m_classifier;
    MeshEdges& m_result;
    std::vector<std::uint32_t> m_count;  ///< of the lines at a vertex, and of the edges without an area
    std::vector<std::uint32_t> m_joined; ///< their numbers, by exclusive or: of a single one its own
};

/// Finds the bodies: pieces of a mesh that are closed, wound alike, and have their normals outwards. A piece with its normals
/// inwards may be a cavity or a mistake, and is not trusted.
class SolidFinder
{
public:
    SolidFinder(const WeldedMesh& mesh, MeshEdges& result) : m_mesh(mesh), m_result(result) {}

    void Find()
    {
        JoinPieces();
        for (const WeldedMesh::Triangle& triangle : m_mesh.triangles) {
            m_result.hasSeveralBodies =
                m_result.hasSeveralBodies || PieceOf(triangle[0]) != PieceOf(m_mesh.triangles.front()[0]);
        }
        std::vector<double> volumes(m_mesh.GetVertexCount(), 0.0);
        for (const WeldedMesh::Triangle& triangle : m_mesh.triangles) {
            volumes[PieceOf(triangle[0])] += VolumeBelow(triangle);
        }
        constexpr double kSmallestVolume = 1e-12;
        std::vector<char> isOpen(m_mesh.GetVertexCount(), 0);
        for (const MeshEdge& edge : m_result.edges) {
            const std::uint32_t piece = PieceOf(edge.start);
            if (!edge.isSolid || !(volumes[piece] > kSmallestVolume)) {
                isOpen[piece] = 1;
            }
        }
        for (MeshEdge& edge : m_result.edges) {
            edge.isSolid = !isOpen[PieceOf(edge.start)];
        }
    }

private:
    void JoinPieces()
    {
        m_above.resize(m_mesh.GetVertexCount());
        std::iota(m_above.begin(), m_above.end(), 0U);
        for (const WeldedMesh::Triangle& triangle : m_mesh.triangles) {
            Join(triangle[0], triangle[1]);
            Join(triangle[0], triangle[2]);
        }
    }

    void Join(std::uint32_t a, std::uint32_t b)
    {
        const std::uint32_t pieceA = PieceOf(a);
        const std::uint32_t pieceB = PieceOf(b);
        m_above[std::max(pieceA, pieceB)] = std::min(pieceA, pieceB);
    }

    std::uint32_t PieceOf(std::uint32_t vertex)
    {
        while (m_above[vertex] != vertex) {
            m_above[vertex] = m_above[m_above[vertex]];
            vertex = m_above[vertex];
        }
        return vertex;
    }

    double VolumeBelow(const WeldedMesh::Triangle& triangle) const
    {
        const auto at = [&](std::size_t corner) { return ToVector(m_mesh.positions[triangle[corner]]); };
        return at(0).Dot(at(1).Cross(at(2))) / 6.0;
    }

    const WeldedMesh& m_mesh;
    MeshEdges& m_result;
    std::vector<std::uint32_t> m_above;
};

} // namespace

MeshEdges::MeshEdges(const WeldedMesh& mesh, const luk::Mesh& colors, double creaseAngle)
{
    normals.reserve(mesh.triangles.size());
    for (const WeldedMesh::Triangle& triangle : mesh.triangles) {
        normals.push_back(ToSingle(NormalOf(mesh, triangle)));
    }
    EdgeMaker(mesh, *this).Make();
    NormalLender(mesh, *this).Lend();
    Classifier classifier(mesh, colors, creaseAngle, *this);
    classifier.Classify();
    CreaseTrimmer(mesh, classifier, *this).Trim();
    SolidFinder(mesh, *this).Find();
}

} // namespace luhost::render
