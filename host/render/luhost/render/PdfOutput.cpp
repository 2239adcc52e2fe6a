#include <luhost/render/CairoPainter.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/XmlText.h>

#include <cairo-pdf.h>
#include <new>

namespace luhost::render
{

namespace
{

constexpr double kPointsPerPixel = 72.0 / 96.0;

CairoSurface MakePage(const Drawing& drawing, double pointsPerUnit, std::string& pdf)
{
    CairoSurface page(cairo_pdf_surface_create_for_stream(AppendToText, &pdf, drawing.width * pointsPerUnit,
                                                          drawing.height * pointsPerUnit));
    // A date would make each file another one.
    cairo_pdf_surface_set_metadata(page.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");
    if (!drawing.title.empty()) {
        cairo_pdf_surface_set_metadata(page.get(), CAIRO_PDF_METADATA_TITLE, ToXmlCharacters(drawing.title).c_str());
    }
    return page;
}

void PaintPage(const Drawing& drawing, cairo_surface_t* page, double pointsPerUnit, PictureStore& store)
{
    const CairoContext context(cairo_create(page));
    cairo_scale(context.get(), pointsPerUnit, pointsPerUnit);
    const Sheet sheet = SheetOf(drawing);
    CairoPainter painter(context.get(), sheet, kPatchDetail * PixelsPerUnit(drawing), kMostPatchPixels);
    if (drawing.background.alpha > 0.0F) {
        painter.PaintBackground(drawing.background);
    }
    painter.PaintUnderlay(drawing.underlay.get());
    for (const DrawnStrokes& strokes : drawing.strokes) {
        painter.Paint(PlaceStrokes(strokes, sheet, 1.0, 1.0));
    }
    for (const DrawnPicture& picture : drawing.pictures) {
        if (const auto placement = Place(picture, sheet, 1.0, 1.0, store)) {
            painter.Paint(*placement);
        }
    }
    cairo_show_page(context.get());
}

} // namespace

bool WritePdf(const Drawing& drawing, std::string& pdf, std::string& error)
{
    pdf.clear();
    if (!CheckSheet(drawing, error)) {
        return false;
    }
    try {
        const double pointsPerUnit = kPointsPerPixel * PixelsPerUnit(drawing);
        PictureStore store;
        const CairoSurface page = MakePage(drawing, pointsPerUnit, pdf);
        PaintPage(drawing, page.get(), pointsPerUnit, store);
        cairo_surface_finish(page.get());
        if (cairo_surface_status(page.get()) == CAIRO_STATUS_SUCCESS) {
            return true;
        }
        error = cairo_status_to_string(cairo_surface_status(page.get()));
    } catch (const std::bad_alloc&) {
        error = "out of memory";
    }
    pdf.clear();
    return false;
}

} // namespace luhost::render
