#pragma once

#include <luhost/render/FeatureLines.h>

#include <vector>

namespace luhost::render
{

/// Lines along which surfaces go through one another, of which files say nothing: a bolt that sticks in a block without a
/// hole, a boss that was set onto a wall.
///
/// Found are those of which the camera sees something: where pixels side by side show different triangles there may be one, and
/// from there it is followed as far as it goes. Surfaces that only touch, or lie in one plane, have none.
///
/// Cost: a ray for each pixel, two where it is seen through something, and linear in the length of the lines.
/// @param[out] lines by shape: of two the symbol, else the one that comes first
Outcome FindPiercingLines(const PreparedScene& scene, const ViewFrame& view, const Workers& workers,
                          std::vector<std::vector<FeatureLine>>& lines);

} // namespace luhost::render
