#pragma once

#include <luhost/render/CornerNormals.h>
#include <luhost/render/MeshEdges.h>
#include <luhost/render/RayScene.h>
#include <luhost/render/SceneGeometry.h>
#include <luhost/render/WeldedMesh.h>
#include <luhost/render/Workers.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace luhost::render
{

/// A scene ready to be drawn from any number of cameras.
///
/// Threads: prepared by several, read by any.
///
/// Errors: preparing answers null with the reason.
///
/// Cost: linear in the triangles of the distinct meshes, and in the shapes; about 250 bytes for such a triangle.
struct PreparedScene {
    struct Options {
        /// Faces that meet at more have a line between them and are not shaded as one. What has twelve sides is meant round.
        double creaseAngleDegrees = 32.0;
        RayScene::Limits limits;
        bool isSameEverywhere = false; ///< whether drawings are the same to the last bit on every machine; see RayScene
    };

    /// What pictures need of one mesh.
    struct Mesh {
        std::unique_ptr<MeshEdges> edges;
        std::unique_ptr<CornerNormals> normals;
    };

    static std::unique_ptr<PreparedScene> Prepare(SceneGeometry geometry, const Options& options,
                                                  const Workers& workers, std::string& error);

    /// Of a triangle of a shape, in the unit frame.
    std::array<dg::DVec3, 3> CornersOf(std::size_t shape, std::size_t triangle) const noexcept;

    SceneGeometry geometry;
    std::vector<std::unique_ptr<WeldedMesh>> welded; ///< as in the geometry's meshes
    std::vector<Mesh> meshes;                        ///< the same
    std::vector<RayScene::Shape> shapes;             ///< as in the geometry's shapes
    std::unique_ptr<RayScene> rays;
};

} // namespace luhost::render
