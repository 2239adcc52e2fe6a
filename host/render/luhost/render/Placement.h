#pragma once

#include <luhost/render/Box.h>
#include <luhost/render/PictureStore.h>

#include <optional>
#include <string>

namespace luhost::render
{

/// @return false with the reason for a drawing that no output takes
bool CheckSheet(const Drawing& drawing, std::string& error);
Sheet SheetOf(const Drawing& drawing) noexcept;
/// Of 96 an inch.
double PixelsPerUnit(const Drawing& drawing) noexcept;
/// Of what is drawn as pixels in outputs that are scaled when they are seen.
double PatchPixelsPerUnit(const Drawing& drawing) noexcept;

/// From 0 to 1; what is not a number is 0.
dg::Color Clamped(const dg::Color& color) noexcept;

/// Lines around and across a box whose picture is missing, and their colour.
inline constexpr double kMissingGrey = 0.6;
inline constexpr double kMissingDash = 4.0; ///< thin lines on, and as much off

/// Where the mask of a picture lies on the sheet.
struct PlacedMask {
    double left = 0.0;
    double top = 0.0;
    double width = 0.0;
    double height = 0.0;
    Raster* pixels = nullptr; ///< null for no mask
};

/// How one picture of a drawing is put down, the same for every output.
struct Placement {
    /// What is drawn in the box, over its fill and under its frame.
    enum class Content {
        Nothing,
        Missing, ///< a cross
        Whole,   ///< the picture, its corners moved to those of the box
        Patch    ///< see MakePatch
    };
    Content content = Content::Nothing;
    Corners corners; ///< of the stored picture
    Box box;
    StoredUse use;
    dg::Color fillColor;
    dg::Color lineColor;
    double lineWidth = 0.0; ///< 0 for no frame
    double opacity = 1.0;
    PlacedMask mask;
};

/// Nothing for a picture that is not seen.
/// @param scaleX,scaleY from the drawing to the sheet
std::optional<Placement> Place(const DrawnPicture& picture, const Sheet& sheet, double scaleX, double scaleY,
                               PictureStore& store);

/// The pixels that are seen of a picture that no matrix can place, upright on the sheet. Whoever draws them clips them by
/// the outline of the box.
struct Patch {
    Raster pixels;
    double left = 0.0; ///< on the sheet
    double top = 0.0;
    double pixelsPerUnit = 1.0;
};

/// @param pixelsPerUnit wanted; fewer when the patch would have more than `mostPixels`
Patch MakePatch(const Placement& placement, const Sheet& sheet, double pixelsPerUnit, double mostPixels);

/// What a large patch has at most, in outputs that are scaled when they are seen.
inline constexpr double kMostPatchPixels = 16777216.0;

} // namespace luhost::render
