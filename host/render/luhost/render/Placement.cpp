#include <luhost/render/DrawingOutput.h>
#include <luhost/render/Placement.h>

#include <algorithm>
#include <cmath>

namespace luhost::render
{

namespace
{

constexpr double kPixelsPerInch = 96.0;
constexpr double kPixelsPerMillimetre = kPixelsPerInch / 25.4;

float Clamped(float value) noexcept { return value >= 0.0F ? std::min(value, 1.0F) : 0.0F; }

double LongestSide(const Corners& corners) noexcept
{
    double longest = 0.0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const dg::DPoint2D& next = corners[(i + 1) % 4];
        longest = std::max(longest, std::hypot(next.x - corners[i].x, next.y - corners[i].y));
    }
    return longest;
}

Placement::Content ContentOf(const Box& box, const StoredUse& use) noexcept
{
    if (!use.picture) {
        return Placement::Content::Missing;
    }
    switch (box.fit) {
    case Box::Fit::Parallelogram:
        return Placement::Content::Whole;
    case Box::Fit::Perspective:
        return Placement::Content::Patch;
    case Box::Fit::Crooked:
        break;
    }
    return Placement::Content::Nothing;
}

} // namespace

double PixelsPerUnit(const Drawing& drawing) noexcept
{
    return drawing.unit == Drawing::Unit::Millimetre ? kPixelsPerMillimetre : kPixelsPerInch / drawing.pixelsPerInch;
}

double PatchPixelsPerUnit(const Drawing& drawing) noexcept
{
    constexpr double kDetail = 2.0; // of what a screen shows
    return kDetail *
           (drawing.unit == Drawing::Unit::Pixel ? std::max(PixelsPerUnit(drawing), 1.0) : PixelsPerUnit(drawing));
}

Sheet SheetOf(const Drawing& drawing) noexcept { return {drawing.width, drawing.height, 1.0 / PixelsPerUnit(drawing)}; }

bool CheckSheet(const Drawing& drawing, std::string& error)
{
    if (!(drawing.width > 0.0 && drawing.height > 0.0)) {
        error = "the sheet is empty";
        return false;
    }
    const double width = drawing.width * PixelsPerUnit(drawing);
    const double height = drawing.height * PixelsPerUnit(drawing);
    if (!(width * height <= kMaximumPixels && width <= kMaximumSide && height <= kMaximumSide)) {
        error = "the sheet is too large";
        return false;
    }
    return true;
}

dg::Color Clamped(const dg::Color& color) noexcept
{
    return {Clamped(color.red), Clamped(color.green), Clamped(color.blue), Clamped(color.alpha)};
}

std::optional<Placement> Place(const DrawnPicture& picture, const Sheet& sheet, double scaleX, double scaleY,
                               PictureStore& store)
{
    Placement placement;
    placement.opacity = picture.opacity < 1.0 ? std::max(picture.opacity, 0.0) : 1.0;
    placement.fillColor = Clamped(picture.fillColor);
    placement.lineColor = Clamped(picture.lineColor);
    const double lineWidth = picture.lineWidth * std::sqrt(scaleX * scaleY);
    if (lineWidth > 0.0 && placement.lineColor.alpha > 0.0F) {
        placement.lineWidth = std::min(lineWidth, std::max(sheet.width, sheet.height));
    }
    Corners corners = picture.corners;
    for (dg::DPoint2D& corner : corners) {
        corner = {corner.x * scaleX, corner.y * scaleY};
    }
    std::optional<Box> box = MakeBox(corners, placement.lineWidth, sheet);
    if (!box || !(placement.opacity > 0.0)) {
        return std::nullopt;
    }
    placement.box = std::move(*box);
    placement.use = store.Find(picture.image.get());
    placement.corners = placement.use.Turn(corners);
    placement.content = ContentOf(placement.box, placement.use);
    if (const auto& mask = picture.mask; mask && mask->pixels && !mask->pixels->pixels.empty()) {
        placement.mask = {mask->left * scaleX, mask->top * scaleY, mask->width * scaleX, mask->height * scaleY,
                          mask->pixels.get()};
    }
    return placement;
}

Patch MakePatch(const Placement& placement, const Sheet& sheet, double pixelsPerUnit, double mostPixels)
{
    const PixelWindow unscaled = WindowOf(placement.box.outline, sheet);
    const double area = 1.0 * unscaled.width * unscaled.height;
    const double scale = std::min(pixelsPerUnit, std::sqrt(mostPixels / std::max(area, 1.0)));
    const auto scaled = [scale](const dg::DPoint2D& point) { return dg::DPoint2D{point.x * scale, point.y * scale}; };
    Corners corners = placement.corners;
    std::transform(corners.begin(), corners.end(), corners.begin(), scaled);
    Polygon outline = placement.box.outline;
    std::transform(outline.begin(), outline.end(), outline.begin(), scaled);

    const PixelWindow window = WindowOf(outline, {sheet.width * scale, sheet.height * scale, sheet.thinLine * scale});
    const RasterLevels& levels = placement.use.picture->GetLevels(2.0 * LongestSide(corners));
    return {Resample(levels, corners, outline, window), window.left / scale, window.top / scale, scale};
}

} // namespace luhost::render
