#pragma once

#include <dg/DPoint2D.h>
#include <dg/DVec3.h>
#include <luhost/render/PreparedScene.h>
#include <luhost/render/ViewFrame.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace luhost::render
{

/// Why there is a line, what stands out most first.
enum class LineKind : std::uint8_t { Silhouette, Border, Crease, PartBoundary, Piercing };
inline constexpr std::size_t kLineKinds = 5;

/// An edge of a shape that a camera has a line for, as far as it lies before the eye and near the sheet.
struct FeatureLine {
    static constexpr std::uint32_t kNoVertex = ~std::uint32_t{0};

    LineKind kind = LineKind::Crease;
    bool isSmooth = false;                 ///< only because the surface turns away there
    bool isHidden = false;                 ///< for certain, by the body that it belongs to
    std::uint32_t startVertex = kNoVertex; ///< of the welded mesh; kNoVertex where the edge was cut off
    std::uint32_t endVertex = kNoVertex;
    dg::DVec3 start; ///< view points
    dg::DVec3 end;
    dg::DPoint2D screenStart;
    dg::DPoint2D screenEnd;
    /// On the screen, of length 1, away from the faces of a silhouette or border; (0, 0) where they lie on both sides.
    dg::DPoint2D outwards;
};

/// Cuts off what of a line lies behind the eye or away from the sheet, and finds where the rest appears.
/// @return false when nothing is left
bool FitToSheet(const ViewFrame& view, FeatureLine& line) noexcept;

/// The lines of one shape, in the order of its mesh's edges: borders, creases, part boundaries, and where the surface turns
/// away from the viewer.
///
/// Cost: linear in the triangles and edges.
std::vector<FeatureLine> FindFeatureLines(const PreparedScene& scene, std::size_t shape, const ViewFrame& view);

} // namespace luhost::render
