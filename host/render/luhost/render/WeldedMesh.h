#pragma once

#include <dg/DMat44.h>
#include <dg/FVec3.h>
#include <luk/Mesh.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace luhost::render
{

/// A mesh as pictures need it: vertices at one place are one vertex, whatever their number in the file, and what cannot be
/// drawn is gone: triangles with coordinates that are no numbers, with indices of nothing, and with two corners at one place.
///
/// Frame: moved to the origin and scaled by a power of two, as the unit frame is.
///
/// Cost: linear. Vertices are one within a millionth of the longest half side, so that seams which were computed twice close.
struct WeldedMesh {
    using Triangle = std::array<std::uint32_t, 3>;
    static constexpr std::size_t kNoPart = ~std::size_t{0};

    /// Triangles of one part, up to the next run.
    struct Run {
        std::uint32_t firstTriangle = 0;
        std::size_t part = kNoPart;
    };

    explicit WeldedMesh(const luk::Mesh& mesh);

    std::size_t GetVertexCount() const noexcept { return positions.size() - 1; }
    std::size_t PartOf(std::size_t triangle) const noexcept;

    dg::DMat44 toMesh;                ///< from this frame to that of the mesh
    std::vector<dg::FVec3> positions; ///< and one more, that whoever reads four numbers at once stays inside
    std::vector<Triangle> triangles;
    std::vector<Run> runs; ///< in order
};

/// In the frame of a welded mesh.
inline constexpr double kWeldDistance = 1.0e-6;

} // namespace luhost::render
