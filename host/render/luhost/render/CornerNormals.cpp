#include <luhost/render/CornerNormals.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace luhost::render
{

namespace
{

constexpr float kPackedUnit = 32767.0F;
/// Of the triangles around a vertex: hubs of fans with thousands are flat or look so.
constexpr std::size_t kMostNeighbours = 64;

float Dot(const dg::FVec3& a, const dg::FVec3& b) noexcept { return a.x * b.x + a.y * b.y + a.z * b.z; }
dg::FVec3 Difference(const dg::FVec3& a, const dg::FVec3& b) noexcept { return {a.x - b.x, a.y - b.y, a.z - b.z}; }

/// The corners of all triangles by their vertices.
struct CornersOfVertices {
    explicit CornersOfVertices(const WeldedMesh& mesh) : begin(mesh.GetVertexCount() + 2, 0)
    {
        for (const WeldedMesh::Triangle& triangle : mesh.triangles) {
            for (const std::uint32_t vertex : triangle) {
                ++begin[vertex + 2];
            }
        }
        std::partial_sum(begin.begin(), begin.end(), begin.begin());
        corners.resize(3 * mesh.triangles.size());
        for (std::uint32_t corner = 0; corner < corners.size(); ++corner) {
            corners[begin[mesh.triangles[corner / 3][corner % 3] + 1]++] = corner;
        }
    }

    std::vector<std::uint32_t> begin;
    std::vector<std::uint32_t> corners;
};

float AngleAt(const WeldedMesh& mesh, std::uint32_t corner) noexcept
{
    const WeldedMesh::Triangle& triangle = mesh.triangles[corner / 3];
    const dg::FVec3& at = mesh.positions[triangle[corner % 3]];
    const dg::FVec3 a = Difference(mesh.positions[triangle[(corner + 1) % 3]], at);
    const dg::FVec3 b = Difference(mesh.positions[triangle[(corner + 2) % 3]], at);
    const float lengths = std::sqrt(Dot(a, a) * Dot(b, b));
    return lengths > 0.0F ? std::acos(std::clamp(Dot(a, b) / lengths, -1.0F, 1.0F)) : 0.0F;
}

} // namespace

CornerNormals::CornerNormals(const WeldedMesh& mesh, const MeshEdges& edges, double smoothAngle)
    : m_corners(3 * mesh.triangles.size())
{
    const CornersOfVertices around(mesh);
    const float smallestCosine = static_cast<float>(std::cos(smoothAngle));
    std::vector<float> angles;
    for (std::size_t vertex = 0; vertex < mesh.GetVertexCount(); ++vertex) {
        const std::uint32_t* const first = around.corners.data() + around.begin[vertex];
        const std::uint32_t* const last = around.corners.data() + around.begin[vertex + 1];
        const std::uint32_t* const lastCounted = first + std::min<std::ptrdiff_t>(last - first, kMostNeighbours);
        angles.clear();
        std::transform(first, lastCounted, std::back_inserter(angles),
                       [&mesh](std::uint32_t corner) { return AngleAt(mesh, corner); });
        for (const std::uint32_t* corner = first; corner != last; ++corner) {
            const dg::FVec3& own = edges.normals[*corner / 3];
            dg::FVec3 sum = own;
            sum = {sum.x * 1e-3F, sum.y * 1e-3F, sum.z * 1e-3F};
            for (const std::uint32_t* other = first; other != lastCounted; ++other) {
                const dg::FVec3& normal = edges.normals[*other / 3];
                if (Dot(own, normal) >= smallestCosine) {
                    const float weight = angles[static_cast<std::size_t>(other - first)];
                    sum = {sum.x + normal.x * weight, sum.y + normal.y * weight, sum.z + normal.z * weight};
                }
            }
            const float length = std::sqrt(Dot(sum, sum));
            const float scale = length > 0.0F ? kPackedUnit / length : 0.0F;
            m_corners[*corner] = {static_cast<std::int16_t>(sum.x * scale), static_cast<std::int16_t>(sum.y * scale),
                                  static_cast<std::int16_t>(sum.z * scale)};
        }
    }
}

dg::FVec3 CornerNormals::At(std::size_t triangle, float u, float v) const noexcept
{
    const Packed* const corner = m_corners.data() + 3 * triangle;
    const float w = 1.0F - u - v;
    const auto mix = [&](std::size_t axis) {
        return w * static_cast<float>(corner[0][axis]) + u * static_cast<float>(corner[1][axis]) +
               v * static_cast<float>(corner[2][axis]);
    };
    return {mix(0), mix(1), mix(2)};
}

} // namespace luhost::render
