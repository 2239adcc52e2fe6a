#pragma once

#include <luhost/render/PreparedScene.h>
#include <luhost/render/Strokes.h>
#include <luhost/render/ViewFrame.h>

#include <cstddef>
#include <vector>

namespace luhost::render
{

/// Leaves out what of the visible strokes of a shape lies within a flat face: where a mesh is made of bodies that were put
/// into one another, edges of one go on in the faces of the next.
///
/// Cost: for a mesh of several bodies two rays for every three pixels of a stroke; for others nothing.
std::vector<Stroke> DropFlatStretches(const PreparedScene& scene, std::size_t shape, const ViewFrame& view,
                                      std::vector<Stroke> strokes);

} // namespace luhost::render
