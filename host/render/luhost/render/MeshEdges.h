#pragma once

#include <luhost/render/WeldedMesh.h>

#include <cstdint>
#include <vector>

namespace luhost::render
{

/// An edge of a welded mesh and the two triangles that it joins.
struct MeshEdge {
    enum class Kind : std::uint8_t {
        Smooth,       ///< drawn only where it is a silhouette
        Border,       ///< of one triangle alone
        Crease,       ///< sharp, or of more than two triangles; a blunt one joins other lines at both its ends
        PartBoundary, ///< between two colours of the mesh
        Nothing       ///< of triangles without an area alone
    };
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};

    std::uint32_t start = 0; ///< vertices, the lower number first
    std::uint32_t end = 0;
    std::uint32_t left = kNone; ///< triangles; kNone: there is none
    std::uint32_t right = kNone;
    Kind kind = Kind::Smooth;
    bool isTwisted = false; ///< the triangles' windings disagree, so one of their normals counts the other way round
    bool isConcave = false; ///< where it is solid: the faces look at each other
    bool isSolid = false;   ///< part of the hull of a body, normals outwards: behind both its faces nobody sees it
};

/// The edges of a mesh, each classified once for every camera.
///
/// Triangles that are there twice count once. Those without an area take the normal of the neighbour across their longest
/// edge, so that they make no lines of their own and break none.
///
/// Cost: linear, but for the sorting of the edges at one vertex.
struct MeshEdges {
    /// @param mesh made of `colors`
    /// @param creaseAngle in radians; two faces that meet at more than that have a line between them
    MeshEdges(const WeldedMesh& mesh, const luk::Mesh& colors, double creaseAngle);

    std::vector<dg::FVec3> normals; ///< for each triangle, of length 1, or 0 where nothing gives one
    std::vector<MeshEdge> edges;
    bool hasSeveralBodies = false; ///< pieces that share no vertex
};

} // namespace luhost::render
