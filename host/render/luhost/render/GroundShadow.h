#pragma once

#include <dg/DVec3.h>
#include <luhost/render/PreparedScene.h>

#include <cstddef>
#include <vector>

namespace luhost::render
{

/// The soft shadow that a product casts onto the plane it stands on, darker where it is nearer to it; symbols cast none. The
/// same for every camera.
///
/// Cost: a fixed number of rays.
class GroundShadow
{
public:
    /// @param up which way is up in the scene; of length 1
    Outcome Cast(const PreparedScene& scene, const dg::DVec3& up, const Workers& workers);

    /// Of what a ray in the unit frame sees on the plane, when it looks down on it. @return 0 to 1
    float DarknessOnRay(const dg::DVec3& origin, const dg::DVec3& direction) const noexcept;

private:
    void Place(const dg::DBox& box, const UnitFrame& frame, const dg::DVec3& up);
    void CastRow(const PreparedScene& scene, std::size_t row);
    void Blur();
    float At(double column, double row) const noexcept;

    dg::DVec3 m_up;
    dg::DVec3 m_alongRows;
    dg::DVec3 m_alongColumns;
    dg::DVec3 m_corner; ///< of the first cell
    double m_cellSize = 1.0;
    double m_height = 1.0; ///< of the scene
    std::vector<float> m_cells;
};

} // namespace luhost::render
