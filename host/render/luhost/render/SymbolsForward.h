#pragma once

#include <dg/Camera3D.h>
#include <luhost/render/SceneGeometry.h>

namespace luhost::render
{

/// Moves symbols before everything else, to where the camera sees them as before: along the line of sight, and in
/// perspective smaller by as much as they come nearer. For pictures of this camera alone.
void BringSymbolsForward(SceneGeometry& geometry, const dg::Camera3D& camera);

} // namespace luhost::render
