#include <luhost/render/CairoPainter.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/PngEncoder.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>
#include <utility>

namespace luhost::render
{

namespace
{

struct Size {
    double width;
    double height;
};

Size PictureSize(const Drawing& drawing, int pixelWidth, int pixelHeight)
{
    const auto whole = [](double pixels) { return std::max(1.0, std::round(pixels)); };
    Size size{1.0 * pixelWidth, 1.0 * pixelHeight};
    if (pixelWidth <= 0 && pixelHeight <= 0) {
        const double pixelsPerUnit = drawing.unit == Drawing::Unit::Pixel ? 1.0 : PixelsPerUnit(drawing);
        size = {drawing.width * pixelsPerUnit, drawing.height * pixelsPerUnit};
    } else if (pixelWidth <= 0) {
        size.width = drawing.width / drawing.height * pixelHeight;
    } else if (pixelHeight <= 0) {
        size.height = drawing.height / drawing.width * pixelWidth;
    }
    return {whole(size.width), whole(size.height)};
}

/// Where the sheet lies on the picture, in whole pixels: a sheet that ended within a pixel would fade there.
PixelWindow FitSheet(const Drawing& drawing, const Size& size)
{
    const double scale = std::min(size.width / drawing.width, size.height / drawing.height);
    const double width = std::clamp(std::round(drawing.width * scale), 1.0, size.width);
    const double height = std::clamp(std::round(drawing.height * scale), 1.0, size.height);
    return {static_cast<int>((size.width - width) / 2.0), static_cast<int>((size.height - height) / 2.0),
            static_cast<int>(width), static_cast<int>(height)};
}

/// Neighbours that are drawn alike are painted as one.
void PaintStrokes(const Drawing& drawing, const Sheet& sheet, double scaleX, double scaleY, CairoPainter& painter)
{
    PlacedStrokes together;
    for (const DrawnStrokes& strokes : drawing.strokes) {
        PlacedStrokes placed = PlaceStrokes(strokes, sheet, scaleX, scaleY);
        if (!together.LooksLike(placed)) {
            painter.Paint(together);
            together = std::move(placed);
        } else {
            std::ranges::move(placed.lines, std::back_inserter(together.lines));
        }
    }
    painter.Paint(together);
}

void PaintSheet(const Drawing& drawing, PictureStore& store, cairo_surface_t* surface, const PixelWindow& window)
{
    const CairoSurface part(
        cairo_surface_create_for_rectangle(surface, window.left, window.top, window.width, window.height));
    const CairoContext context(cairo_create(part.get()));
    const double scaleX = window.width / drawing.width;
    const double scaleY = window.height / drawing.height;
    const Sheet sheet{1.0 * window.width, 1.0 * window.height, SheetOf(drawing).thinLine * std::sqrt(scaleX * scaleY)};
    CairoPainter painter(context.get(), CairoPainter::Target::Pixels, sheet, 1.0, kMaximumPixels);
    painter.PaintBackground(drawing.background);
    painter.PaintUnderlay(drawing.underlay.get());
    PaintStrokes(drawing, sheet, scaleX, scaleY, painter);
    for (const DrawnPicture& picture : drawing.pictures) {
        if (auto placement = Place(picture, sheet, scaleX, scaleY, store)) {
            if (placement->content == Placement::Content::Whole && !placement->use.picture->GetVectorSource()) {
                // Resampled by us, enlarged pixels have no border that fades, shrunk ones lose no lines.
                placement->content = Placement::Content::Patch;
            }
            painter.Paint(*placement);
        }
    }
}

/// Whatever is in the pixels, as a surface with alpha.
CairoSurface WrapAsTransparent(Raster& raster)
{
    constexpr int kBytesPerPixel = 4;
    return CairoSurface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(raster.pixels.data()),
                                                            CAIRO_FORMAT_ARGB32, raster.width, raster.height,
                                                            raster.width * kBytesPerPixel));
}

bool DrawSheet(const Drawing& drawing, int pixelWidth, int pixelHeight, PictureStore& store, Raster& pixels,
               std::string& error)
{
    if (!CheckSheet(drawing, error)) {
        return false;
    }
    const Size size = PictureSize(drawing, pixelWidth, pixelHeight);
    if (!(size.width * size.height <= kMaximumPixels && size.width <= kMaximumSide && size.height <= kMaximumSide)) {
        error = "the picture is too large";
        return false;
    }
    try {
        pixels = Raster(static_cast<int>(size.width), static_cast<int>(size.height));
        const CairoSurface surface = WrapAsTransparent(pixels);
        PaintSheet(drawing, store, surface.get(), FitSheet(drawing, size));
        cairo_surface_finish(surface.get());
        if (cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS) {
            return true;
        }
    } catch (const std::bad_alloc&) {
    }
    error = "out of memory";
    return false;
}

} // namespace

bool DrawPixels(const Drawing& drawing, int pixelWidth, int pixelHeight, Raster& pixels, std::string& error)
{
    PictureStore store;
    return DrawSheet(drawing, pixelWidth, pixelHeight, store, pixels, error);
}

bool WritePng(const Drawing& drawing, int pixelWidth, int pixelHeight, std::string& png, std::string& error)
{
    return PngSeries().Write(drawing, pixelWidth, pixelHeight, png, error);
}

PngSeries::PngSeries() : m_store(std::make_unique<PictureStore>()) {}
PngSeries::~PngSeries() = default;

std::string PngSeries::FindProblem() const { return m_store->FindProblem(); }

bool PngSeries::Write(const Drawing& drawing, int pixelWidth, int pixelHeight, std::string& png, std::string& error)
{
    png.clear();
    Raster pixels;
    if (!DrawSheet(drawing, pixelWidth, pixelHeight, *m_store, pixels, error)) {
        return false;
    }
    try {
        if (EncodePng(pixels, png)) {
            return true;
        }
    } catch (const std::bad_alloc&) {
    }
    png.clear();
    error = "out of memory";
    return false;
}

} // namespace luhost::render
