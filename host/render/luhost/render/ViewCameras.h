#pragma once

#include <dg/Camera3D.h>
#include <dg/DBox.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace luhost::render
{

/// The views that a drawing office knows. With y up, x is to the right and z comes forward:
///
///     front   from +z, up is +y        back     from -z, up is +y
///     right   from +x, up is +y        left     from -x, up is +y
///     top     from +y, up is -z        bottom   from -y, up is +z
///     iso     from (1, 1, 1), up is +y: front, right and top, foreshortened alike
///
/// With z up the same views see the scene lying on its back: what is above becomes +z, and what was forward -y.
enum class StandardView : std::uint8_t { Iso, Front, Back, Left, Right, Top, Bottom };

/// As files of most products have it: y up for models made for display, z up for many made by engineering systems.
enum class UpAxis : std::uint8_t { Y, Z };

/// "iso", "front" and so on; nothing for another word.
std::optional<StandardView> StandardViewOf(std::string_view name) noexcept;
std::vector<std::string_view> StandardViewNames();

/// Which way is up in the scene.
dg::DVec3 UpVector(UpAxis axis) noexcept;

/// An orthographic camera that shows a whole box, centred, as large as fits into the viewport.
/// @param margin around it, as a part of the shorter side of the viewport, from 0 to under 0.5
/// @return one that looks at the origin for an empty box, one without a use for an empty viewport
dg::Camera3D MakeViewCamera(StandardView view, UpAxis up, const dg::DBox& box, int pixelWidth, int pixelHeight,
                            double margin);

/// The same for points, without turning: as large as fits, seen from where the camera looks. A camera in perspective keeps
/// its angle and comes nearer or goes away.
dg::Camera3D FitCamera(const dg::Camera3D& camera, const std::vector<dg::DPoint3D>& points, double margin);

/// The corners of a box; none of an empty one.
std::vector<dg::DPoint3D> CornersOf(const dg::DBox& box);

} // namespace luhost::render
