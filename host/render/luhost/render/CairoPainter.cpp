#include <luhost/render/CairoPainter.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace luhost::render
{

namespace
{

/// As SVG has it, so that slanted frames have the same corners everywhere.
constexpr double kMiterLimit = 4.0;

} // namespace

void CairoPainter::PaintBackground(const dg::Color& color)
{
    SetColor(Clamped(color));
    cairo_paint(m_context);
}

void CairoPainter::PaintUnderlay(Raster* raster)
{
    if (!raster || raster->pixels.empty()) {
        return;
    }
    const CairoSurface surface = WrapPixels(*raster);
    cairo_save(m_context);
    cairo_scale(m_context, m_sheet.width / raster->width, m_sheet.height / raster->height);
    cairo_set_source_surface(m_context, surface.get(), 0.0, 0.0);
    // Stretched, its border must not fade.
    cairo_pattern_set_extend(cairo_get_source(m_context), CAIRO_EXTEND_PAD);
    cairo_rectangle(m_context, 0.0, 0.0, raster->width, raster->height);
    cairo_fill(m_context);
    cairo_restore(m_context);
}

void CairoPainter::Paint(const PlacedStrokes& strokes)
{
    cairo_save(m_context);
    SetColor(strokes.color);
    cairo_set_line_width(m_context, strokes.width);
    cairo_set_line_cap(m_context, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(m_context, CAIRO_LINE_JOIN_ROUND);
    cairo_set_dash(m_context, strokes.dashes.data(), static_cast<int>(strokes.dashes.size()), 0.0);
    // Where lines touch, one path is no darker than one of them; but what a line costs must not depend on all the others.
    constexpr std::size_t kMostTogether = 256;
    for (std::size_t i = 0; i < strokes.lines.size(); ++i) {
        AddPath(strokes.lines[i].points, strokes.lines[i].closed);
        if ((i + 1) % kMostTogether == 0) {
            cairo_stroke(m_context);
        }
    }
    cairo_stroke(m_context);
    cairo_restore(m_context);
}

void CairoPainter::Paint(const Placement& placement)
{
    const PlacedMask& mask = placement.mask;
    if (!mask.pixels) {
        PaintWithOpacity(placement);
        return;
    }
    cairo_save(m_context);
    ClipAround(placement);
    cairo_push_group(m_context);
    PaintWithOpacity(placement);
    cairo_pop_group_to_source(m_context);
    const CairoSurface pixels = WrapPixels(*mask.pixels);
    cairo_pattern_t* const pattern = cairo_pattern_create_for_surface(pixels.get());
    const double columns = mask.pixels->width;
    const double rows = mask.pixels->height;
    const cairo_matrix_t toPixels{
        columns / mask.width,          0.0, 0.0, rows / mask.height, -mask.left * columns / mask.width,
        -mask.top * rows / mask.height};
    cairo_pattern_set_matrix(pattern, &toPixels);
    cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
    cairo_mask(m_context, pattern);
    cairo_pattern_destroy(pattern);
    cairo_restore(m_context);
}

void CairoPainter::PaintWithOpacity(const Placement& placement)
{
    if (placement.opacity >= 1.0) {
        PaintParts(placement);
        return;
    }
    cairo_save(m_context);
    ClipAround(placement);
    cairo_push_group(m_context);
    PaintParts(placement);
    cairo_pop_group_to_source(m_context);
    cairo_paint_with_alpha(m_context, placement.opacity);
    cairo_restore(m_context);
}

void CairoPainter::PaintParts(const Placement& placement)
{
    if (placement.fillColor.alpha > 0.0F) {
        SetColor(placement.fillColor);
        AddPath(placement.box.outline, true);
        cairo_fill(m_context);
    }
    switch (placement.content) {
    case Placement::Content::Nothing:
        break;
    case Placement::Content::Missing:
        PaintMissing(placement);
        break;
    case Placement::Content::Whole:
        PaintWhole(placement);
        break;
    case Placement::Content::Patch:
        PaintPatch(placement);
        break;
    }
    if (placement.lineWidth > 0.0) {
        SetColor(placement.lineColor);
        cairo_set_line_width(m_context, placement.lineWidth);
        cairo_set_miter_limit(m_context, kMiterLimit);
        for (const Line& line : placement.box.frame) {
            AddPath(line.points, line.closed);
            cairo_stroke(m_context);
        }
    }
}

void CairoPainter::PaintMissing(const Placement& placement)
{
    cairo_save(m_context);
    cairo_set_source_rgb(m_context, kMissingGrey, kMissingGrey, kMissingGrey);
    cairo_set_line_width(m_context, m_sheet.thinLine);
    for (const Line& line : placement.box.cross) {
        AddPath(line.points, line.closed);
        cairo_stroke(m_context);
    }
    const double dash = kMissingDash * m_sheet.thinLine;
    cairo_set_dash(m_context, &dash, 1, 0.0);
    for (const Line& line : placement.box.frame) {
        AddPath(line.points, line.closed);
        cairo_stroke(m_context);
    }
    cairo_restore(m_context);
}

void CairoPainter::PaintWhole(const Placement& placement)
{
    StoredPicture& picture = *placement.use.picture;
    cairo_save(m_context);
    if (m_target == Target::Pixels && picture.GetVectorSource()) {
        MapOnto(placement.corners, picture.GetWidth(), picture.GetHeight());
        picture.DrawVectors(m_context);
    } else {
        const StoredPicture::Surface stored = picture.GetSurface();
        MapOnto(placement.corners, stored.width, stored.height);
        cairo_set_source_surface(m_context, stored.surface, 0.0, 0.0);
        cairo_paint(m_context);
    }
    cairo_restore(m_context);
}

/// From a picture of this size to where its corners lie.
void CairoPainter::MapOnto(const Corners& corners, double width, double height)
{
    const auto& [origin, right, opposite, below] = corners;
    const cairo_matrix_t matrix{(right.x - origin.x) / width,
                                (right.y - origin.y) / width,
                                (below.x - origin.x) / height,
                                (below.y - origin.y) / height,
                                origin.x,
                                origin.y};
    cairo_transform(m_context, &matrix);
}

void CairoPainter::PaintPatch(const Placement& placement)
{
    Patch patch = MakePatch(placement, m_sheet, m_pixelsPerUnit, m_mostPatchPixels);
    const CairoSurface surface = WrapPixels(patch.pixels);
    cairo_save(m_context);
    AddPath(placement.box.outline, true);
    cairo_clip(m_context);
    cairo_translate(m_context, patch.left, patch.top);
    cairo_scale(m_context, 1.0 / patch.pixelsPerUnit, 1.0 / patch.pixelsPerUnit);
    cairo_set_source_surface(m_context, surface.get(), 0.0, 0.0);
    cairo_paint(m_context);
    cairo_restore(m_context);
}

void CairoPainter::AddPath(const Polygon& points, bool closed)
{
    cairo_new_sub_path(m_context);
    for (const dg::DPoint2D& point : points) {
        cairo_line_to(m_context, point.x, point.y);
    }
    if (closed) {
        cairo_close_path(m_context);
    }
}

/// The box in whole units, so that the clip itself fades no edge.
void CairoPainter::ClipAround(const Placement& placement)
{
    const PixelWindow window = WindowOf(placement.box.outline, m_sheet);
    const double margin = std::ceil(placement.lineWidth * kMiterLimit * 0.5 + m_sheet.thinLine);
    cairo_rectangle(m_context, window.left - margin, window.top - margin, window.width + 2.0 * margin,
                    window.height + 2.0 * margin);
    cairo_clip(m_context);
}

void CairoPainter::SetColor(const dg::Color& color)
{
    cairo_set_source_rgba(m_context, static_cast<double>(color.red), static_cast<double>(color.green),
                          static_cast<double>(color.blue), static_cast<double>(color.alpha));
}

} // namespace luhost::render
