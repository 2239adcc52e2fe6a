#include <dg/FormatNumber.h>
#include <luhost/render/CairoPainter.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/XmlText.h>

#include <algorithm>
#include <cairo-pdf.h>
#include <limits>
#include <new>
#include <string_view>

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
    cairo_pdf_surface_set_metadata(page.get(), CAIRO_PDF_METADATA_CREATOR, "lusymbols");
    if (!drawing.title.empty()) {
        cairo_pdf_surface_set_metadata(page.get(), CAIRO_PDF_METADATA_TITLE, ToXmlCharacters(drawing.title).c_str());
    }
    return page;
}

/// Of something that was drawn, in units of the drawing.
struct LinkArea {
    double left = std::numeric_limits<double>::max();
    double top = std::numeric_limits<double>::max();
    double right = std::numeric_limits<double>::lowest();
    double bottom = std::numeric_limits<double>::lowest();

    void Enclose(const Polygon& points)
    {
        for (const dg::DPoint2D& point : points) {
            left = std::min(left, point.x);
            top = std::min(top, point.y);
            right = std::max(right, point.x);
            bottom = std::max(bottom, point.y);
        }
    }
};

/// The attributes of a tag are a language of their own. Cairo puts the address into the file as it is, so that whatever
/// ends a string there, and whatever an address may not have, is encoded.
/// @param pointsPerUnit the scale of the context does not hold for areas
std::string LinkAttributes(const std::string& link, const LinkArea& area, double pointsPerUnit)
{
    std::string text = "rect=[";
    for (const double number : {area.left, area.top, area.right - area.left, area.bottom - area.top}) {
        dg::AppendNumber(text, number * pointsPerUnit);
        text += ' ';
    }
    text += "] uri='";
    for (const char letter : link) {
        constexpr std::string_view kDigits = "0123456789ABCDEF";
        constexpr std::string_view kEncoded = "\\()<>\"'";
        const auto byte = static_cast<unsigned char>(letter);
        if (byte <= ' ' || byte >= 0x7F || kEncoded.find(letter) != std::string_view::npos) {
            text.append(1, '%').append(1, kDigits[byte / 16]).append(1, kDigits[byte % 16]);
        } else {
            text += letter;
        }
    }
    return text += '\'';
}

void AddLink(cairo_t* context, const std::string& link, const LinkArea& area, double pointsPerUnit)
{
    if (!link.empty() && area.left < area.right && area.top < area.bottom) {
        cairo_tag_begin(context, CAIRO_TAG_LINK, LinkAttributes(link, area, pointsPerUnit).c_str());
        cairo_tag_end(context, CAIRO_TAG_LINK);
    }
}

void PaintPage(const Drawing& drawing, cairo_surface_t* page, double pointsPerUnit, PictureStore& store)
{
    const CairoContext context(cairo_create(page));
    cairo_scale(context.get(), pointsPerUnit, pointsPerUnit);
    const Sheet sheet = SheetOf(drawing);
    CairoPainter painter(context.get(), sheet, PatchPixelsPerUnit(drawing), kMostPatchPixels);
    if (drawing.background.alpha > 0.0F) {
        painter.PaintBackground(drawing.background);
    }
    painter.PaintUnderlay(drawing.underlay.get());
    for (const DrawnStrokes& strokes : drawing.strokes) {
        const PlacedStrokes placed = PlaceStrokes(strokes, sheet, 1.0, 1.0);
        painter.Paint(placed);
        LinkArea area;
        for (const Line& line : placed.lines) {
            area.Enclose(line.points);
        }
        AddLink(context.get(), strokes.link, area, pointsPerUnit);
    }
    for (const DrawnPicture& picture : drawing.pictures) {
        if (const auto placement = Place(picture, sheet, 1.0, 1.0, store)) {
            painter.Paint(*placement);
            LinkArea area;
            area.Enclose(placement->box.outline);
            AddLink(context.get(), picture.link, area, pointsPerUnit);
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
