#pragma once

#include <luhost/render/MeshEdges.h>
#include <luhost/render/WeldedMesh.h>

#include <array>
#include <cstdint>
#include <vector>

namespace luhost::render
{

/// Directions of a smooth surface at the corners of its triangles: at each the mean of the faces around the vertex that meet
/// at less than an angle there, weighted by their own angles.
///
/// Cost: linear, but at a vertex at which many triangles meet, where a bounded number of them counts; 18 bytes a triangle.
class CornerNormals
{
public:
    /// @param smoothAngle in radians
    CornerNormals(const WeldedMesh& mesh, const MeshEdges& edges, double smoothAngle);

    /// @param u,v where in the triangle: weights of its second and third corner
    /// @return of any length
    dg::FVec3 At(std::size_t triangle, float u, float v) const noexcept;

private:
    using Packed = std::array<std::int16_t, 3>;
    std::vector<Packed> m_corners;
};

} // namespace luhost::render
