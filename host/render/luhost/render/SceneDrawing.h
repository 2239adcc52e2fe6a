#pragma once

#include <dg/Camera3D.h>
#include <luhost/render/Drawing.h>
#include <luhost/render/FeatureLines.h>
#include <luhost/render/PreparedScene.h>
#include <luhost/render/Workers.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace luhost::render
{

/// How lines look, in millimetres on the page.
struct LineStyle {
    double widthMm = 0.35;
    std::vector<double> dashesMm; ///< on and off by turns
    dg::Color color = dg::Color::BLACK;
};

struct SceneDrawingOptions {
    enum class Style { Shaded, Lines, Both };

    /// "silhouette", "border", "crease", "boundary", "intersection", "symbol", "hidden", or "all" for all but the hidden ones.
    /// @return false for another word
    bool SetLineWidth(std::string_view kind, double widthMm);

    Style style = Style::Both;
    LineStyle visibleLines;
    std::array<double, kLineKinds> visibleWidthsMm{}; ///< by LineKind; 0: as visible lines are
    LineStyle symbolLines;
    LineStyle hiddenLines{0.18, {1.6, 1.0}, dg::Color::BLACK};
    bool showsHiddenLines = false;
    bool castsGroundShadow = false;   ///< where it is shaded
    dg::DVec3 up{0.0, 1.0, 0.0};      ///< for the shadow; of length 1
    double pixelsPerMm = 96.0 / 25.4; ///< of the camera's viewport, when it is printed
};

/// Draws a scene in space: shaded pixels as the underlay, and lines over them: hidden ones, visible ones, those of symbols.
/// Lines are grouped by part and kind, with the id path as part, the component's name as title, and classes such as
/// "visible silhouette", "hidden crease" and "visible border symbol". Where lines of parts lie upon one another there is one.
///
/// The drawing is in pixels of the camera's viewport, without a background.
///
/// Errors: false with the reason: a camera that projects nothing, a viewport that is too large, no memory, stopped.
///
/// Cost: linear in the pixels, in the triangles of all shapes, and in the pixels that lines are long.
bool DrawScene(const PreparedScene& scene, const dg::Camera3D& camera, const SceneDrawingOptions& options,
               const Workers& workers, Drawing& drawing, std::string& error);

} // namespace luhost::render
