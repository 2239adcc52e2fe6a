#pragma once

#include <dg/Color.h>
#include <dg/DBox.h>
#include <dg/DMat44.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <lug/Appearance.h>
#include <luk/Mesh.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace luk
{
class ShapeScene;
}

namespace luhost::render
{

/// The frame in which pictures are computed: the scene moved to the origin and scaled by a power of two, so that its longest
/// half side is over 0.5 and at most 1. Single precision is then as good for a ship far from its origin as for a screw.
struct UnitFrame {
    dg::DPoint3D center = dg::DPoint3D::ORIGIN;
    double scale = 1.0;

    static UnitFrame Around(const dg::DBox& box) noexcept;
    /// Nearest to what `Around` does; from this frame's outer one.
    dg::DMat44 GetTransform() const noexcept;
};

/// How one run of triangles looks.
struct Surface {
    dg::Color color; ///< alpha: how much of what is behind it covers
    dg::Color emissive;
    dg::Color specular;
    float shininess = 0.0F;
};

/// One mesh, whoever shows it.
struct SceneMesh {
    du::SmartPtr<luk::Mesh> mesh;
    dg::DBox box;         ///< of its triangles, those with coordinates that are no numbers left out
    bool isOpaque = true; ///< in all its own colours
};

/// One visible occurrence of a mesh.
struct SceneShape {
    enum class Kind : std::uint8_t { Product, Symbol };

    std::size_t mesh = 0;                     ///< in the geometry's meshes
    dg::DMat44 transform;                     ///< to the scene
    dg::DBox box;                             ///< in the scene
    du::SmartPtr<lug::Appearance> appearance; ///< with a material, in the place of the mesh's colours; may be null
    float opacity = 1.0F;                     ///< times that of the colours, or instead of it
    bool replacesOpacity = false;
    bool isOpaque = true;
    Kind kind = Kind::Product;
    du::Symbol idPath;
    du::Symbol name; ///< of the component
};

/// What of a scene can be seen, flat: one entry for each visible occurrence, meshes shared.
///
/// Use: visible are shape instances that have a loaded shape with triangles, that nothing hides, and whose transparency and
/// visibility fraction leave something of them.
///
/// Ownership: holds the meshes and appearances. Later changes of the scene do not show.
///
/// Threads: collected on the host thread, read on any thread.
///
/// Errors: occurrences that cannot be placed (no position, numbers that are none, a transform that flattens, too far away)
/// are left out and told in `problems`, as are those without a loaded shape.
///
/// Cost: linear in the instances and in the triangles of the distinct meshes.
struct SceneGeometry {
    static SceneGeometry Collect(const luk::ShapeScene& scene);
    /// One mesh by itself, in its own frame. Nothing of one that has no triangles to be drawn.
    static SceneGeometry Of(const du::SmartPtr<luk::Mesh>& mesh);

    /// @param part of its mesh; a number beyond its parts is for triangles that belong to none
    Surface SurfaceOf(const SceneShape& shape, std::size_t part) const noexcept;

    std::vector<SceneMesh> meshes;
    std::vector<SceneShape> shapes; ///< as in the tree, parents first
    dg::DBox box;
    UnitFrame frame;
    std::vector<std::string> problems; ///< "/a/b: it flattens"
};

/// Beyond it, in any direction, nothing is drawn.
inline constexpr double kFarthestCoordinate = 1.0e30;

/// Of the vertices that triangles use and that can be drawn: a stray one must not shrink the picture.
dg::DBox DrawableBox(const luk::Mesh& mesh) noexcept;

} // namespace luhost::render
