#pragma once

#include <dg/Color.h>
#include <luhost/render/GroundShadow.h>
#include <luhost/render/PreparedScene.h>
#include <luhost/render/Raster.h>
#include <luhost/render/ViewFrame.h>

namespace luhost::render
{

/// Light on the surfaces of a scene: a key from the upper left, a fill from the right and a rim from behind, all fixed to the
/// camera, and light from everywhere. A surface that faces the viewer keeps nearly its own colour.
///
/// Each pixel is the mean of four rays in a fixed pattern. A ray goes on behind what is not opaque, through a bounded number
/// of layers.
struct ShadingOptions {
    dg::Color background{1.0F, 1.0F, 1.0F, 0.0F}; ///< alpha 0 for none
    const GroundShadow* shadow = nullptr;         ///< null for none
};

/// @param[out] raster of the size of the view. The same bytes whatever the number of threads.
Outcome ShadeView(const PreparedScene& scene, const ViewFrame& view, const ShadingOptions& options,
                  const Workers& workers, Raster& raster);

} // namespace luhost::render
