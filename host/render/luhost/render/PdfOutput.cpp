#include <dg/FormatNumber.h>
#include <luhost/render/CairoPainter.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/XmlText.h>

#include <algorithm>
#include <cairo-pdf.h>
#include <charconv>
#include <cstddef>
#include <limits>
#include <new>
#include <string_view>
#include <unordered_set>

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
    CairoPainter painter(context.get(), CairoPainter::Target::File, sheet, PatchPixelsPerUnit(drawing),
                         kMostPatchPixels);
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

/// Cairo names a picture among the resources of a page once for each time that it is painted, and a dictionary may have no
/// key twice. Blanks in the place of the others keep all offsets in the file.
void BlankRepeatedResources(std::string& pdf)
{
    constexpr std::string_view kStart = "/XObject <<";
    for (std::size_t at = pdf.find(kStart); at != pdf.npos; at = pdf.find(kStart, at)) {
        const std::size_t end = std::min(pdf.find(">>", at), pdf.size());
        std::unordered_set<std::string_view> known;
        for (at = pdf.find('/', at + kStart.size()); at < end;) {
            const std::size_t next = std::min(pdf.find('/', at + 1), end);
            if (!known.insert(std::string_view(pdf).substr(at, next - at)).second) {
                std::fill_n(pdf.begin() + static_cast<std::ptrdiff_t>(at), next - at, ' ');
            }
            at = next;
        }
        at = end;
    }
}

/// Cairo gives a link a number for a structure that it never writes, whose offset then is that of something else. The
/// number is told as free, which makes what refers to it nothing, as it is meant.
void FreeUnwrittenObjects(std::string& pdf)
{
    constexpr std::string_view kStart = "\nxref\n0 ";
    constexpr std::string_view kFree = "0000000000 65535 f";
    constexpr std::size_t kEntrySize = 20;
    constexpr std::size_t kOffsetDigits = 10;
    const std::size_t table = pdf.rfind(kStart);
    if (table == pdf.npos) {
        return;
    }
    std::size_t entry = pdf.find('\n', table + kStart.size()) + 1;
    for (std::size_t number = 0; entry + kEntrySize <= pdf.size() && pdf[entry] != 't'; ++number, entry += kEntrySize) {
        std::size_t offset = 0;
        std::from_chars(pdf.data() + entry, pdf.data() + entry + kOffsetDigits, offset);
        const std::string opening = std::to_string(number) + " 0 obj";
        if (pdf.compare(std::min(offset, pdf.size()), opening.size(), opening) != 0) {
            pdf.replace(entry, kFree.size(), kFree);
        }
    }
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
            BlankRepeatedResources(pdf);
            FreeUnwrittenObjects(pdf);
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
