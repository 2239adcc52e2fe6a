#pragma once

#include <luhost/render/CairoHandles.h>
#include <luhost/render/Placement.h>
#include <luhost/render/StrokePlacement.h>

namespace luhost::render
{

/// Paints placements onto a surface whose user space is that of the sheet.
class CairoPainter
{
public:
    /// @param pixelsPerUnit,mostPatchPixels detail of patches
    /// A file keeps a picture once, however often it is painted; on pixels each is drawn as fine as it is large there.
    enum class Target { File, Pixels };

    CairoPainter(cairo_t* context, Target target, const Sheet& sheet, double pixelsPerUnit, double mostPatchPixels)
        : m_context(context), m_target(target), m_sheet(sheet), m_pixelsPerUnit(pixelsPerUnit),
          m_mostPatchPixels(mostPatchPixels)
    {
    }

    void PaintBackground(const dg::Color& color);
    /// @param raster over all of the sheet; may be null
    void PaintUnderlay(Raster* raster);
    void Paint(const PlacedStrokes& strokes);
    void Paint(const Placement& placement);

private:
    void PaintWithOpacity(const Placement& placement);
    void PaintParts(const Placement& placement);
    void PaintMissing(const Placement& placement);
    void PaintWhole(const Placement& placement);
    void MapOnto(const Corners& corners, double width, double height);
    void PaintPatch(const Placement& placement);
    void AddPath(const Polygon& points, bool closed);
    void ClipAround(const Placement& placement);
    void SetColor(const dg::Color& color);

    cairo_t* m_context;
    Target m_target;
    Sheet m_sheet;
    double m_pixelsPerUnit;
    double m_mostPatchPixels;
};

} // namespace luhost::render
