#include <luhost/render/CrackClosing.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace luhost::render
{

namespace
{

/// In the frame of a welded mesh; much less than a line is wide.
constexpr float kWidestCrack = 5.0e-4F;
/// Of the edges beside a crack, so that no detail is lost.
constexpr float kPartOfEdge = 0.1F;
/// Of the vertices in one cell; where more of them crowd, there is more than cracks.
constexpr std::ptrdiff_t kMostInCell = 64;

float DistanceSquare(const dg::FVec3& a, const dg::FVec3& b) noexcept
{
    const dg::FVec3 d{a.x - b.x, a.y - b.y, a.z - b.z};
    return d.x * d.x + d.y * d.y + d.z * d.z;
}

class CrackCloser
{
public:
    CrackCloser(WeldedMesh& mesh, const MeshEdges& edges) : m_mesh(mesh), m_reach(mesh.GetVertexCount(), -1.0F)
    {
        for (const MeshEdge& edge : edges.edges) {
            if (edge.right == MeshEdge::kNone) {
                m_reach[edge.start] = m_reach[edge.end] = kWidestCrack;
            }
        }
        for (const MeshEdge& edge : edges.edges) {
            const float length = std::sqrt(DistanceSquare(mesh.positions[edge.start], mesh.positions[edge.end]));
            for (const std::uint32_t vertex : {edge.start, edge.end}) {
                m_reach[vertex] = std::min(m_reach[vertex], kPartOfEdge * length);
            }
        }
    }

    bool Close()
    {
        for (std::uint32_t vertex = 0; vertex < m_reach.size(); ++vertex) {
            if (m_reach[vertex] > 0.0F) {
                m_cells.emplace_back(CellOf(m_mesh.positions[vertex], 0.0F), vertex);
            }
        }
        std::sort(m_cells.begin(), m_cells.end());
        m_joined.resize(m_reach.size());
        for (std::uint32_t vertex = 0; vertex < m_joined.size(); ++vertex) {
            m_joined[vertex] = vertex;
        }
        bool isAnyJoined = false;
        for (std::uint32_t vertex = 0; vertex < m_joined.size(); ++vertex) {
            if (m_reach[vertex] > 0.0F && m_joined[vertex] == vertex) {
                isAnyJoined = JoinTo(vertex) || isAnyJoined;
            }
        }
        for (WeldedMesh::Triangle& triangle : m_mesh.triangles) {
            for (std::uint32_t& vertex : triangle) {
                vertex = m_joined[vertex];
            }
        }
        return isAnyJoined;
    }

private:
    using Cell = std::array<int, 3>;

    static Cell CellOf(const dg::FVec3& place, float shift)
    {
        const auto cell = [shift](float value) {
            return static_cast<int>(std::floor((value + shift) / (4.0F * kWidestCrack)));
        };
        return {cell(place.x), cell(place.y), cell(place.z)};
    }

    /// The later ones around a vertex.
    bool JoinTo(std::uint32_t vertex)
    {
        const Cell first = CellOf(m_mesh.positions[vertex], -m_reach[vertex]);
        const Cell last = CellOf(m_mesh.positions[vertex], m_reach[vertex]);
        bool isAnyJoined = false;
        for (int x = first[0]; x <= last[0]; ++x) {
            for (int y = first[1]; y <= last[1]; ++y) {
                for (int z = first[2]; z <= last[2]; ++z) {
                    isAnyJoined = JoinIn({x, y, z}, vertex) || isAnyJoined;
                }
            }
        }
        return isAnyJoined;
    }

    bool JoinIn(const Cell& cell, std::uint32_t vertex)
    {
        auto other = std::lower_bound(m_cells.begin(), m_cells.end(), std::pair(cell, vertex + 1));
        const auto end = m_cells.end() - other > kMostInCell ? other + kMostInCell : m_cells.end();
        bool isAnyJoined = false;
        for (; other != end && other->first == cell; ++other) {
            const std::uint32_t candidate = other->second;
            const float reach = std::min(m_reach[vertex], m_reach[candidate]);
            if (m_joined[candidate] == candidate &&
                DistanceSquare(m_mesh.positions[vertex], m_mesh.positions[candidate]) <= reach * reach) {
                m_joined[candidate] = vertex;
                isAnyJoined = true;
            }
        }
        return isAnyJoined;
    }

    WeldedMesh& m_mesh;
    std::vector<float> m_reach; ///< of each vertex, below zero away from borders
    std::vector<std::pair<Cell, std::uint32_t>> m_cells;
    std::vector<std::uint32_t> m_joined; ///< what each vertex has become
};

} // namespace

bool CloseCracks(WeldedMesh& mesh, const MeshEdges& edges)
{
    const bool hasBorders =
        std::ranges::any_of(edges.edges, [](const MeshEdge& edge) { return edge.right == MeshEdge::kNone; });
    return hasBorders && CrackCloser(mesh, edges).Close();
}

} // namespace luhost::render
