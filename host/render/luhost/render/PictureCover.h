#pragma once

#include <dg/Camera3D.h>
#include <luhost/render/Drawing.h>
#include <luhost/render/PreparedScene.h>
#include <luhost/render/Workers.h>

namespace luhost::render
{

/// Hides of pictures that stand in space what opaque shapes stand before: gives them masks, and takes those away of which
/// nothing is left. A picture that lies on a surface, or a little within it, is before it.
///
/// Cost: four rays for each pixel of such a picture.
/// @param margin pixels that are kept free around what stands before a picture, for the lines around that
Outcome CoverPictures(const PreparedScene& scene, const dg::Camera3D& camera, double margin, const Workers& workers,
                      Drawing& drawing);

} // namespace luhost::render
