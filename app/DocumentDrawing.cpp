#include "DocumentDrawing.h"

#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotationFlattened.h"
#include "SymbolState.h"
#include "TextValues.h"

#include <luhost/Document.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/StampDrawing.h>
#include <luk/Annotation.h>
#include <luk/ComponentNode.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/Structure.h>

#include <algorithm>

namespace lusym
{

namespace
{

using luhost::render::Drawing;

constexpr double kMillimetresPerLineWidth = 0.35;

} // namespace

/// A stamp of a page has neither frame nor fill; those of the symbol that it belongs to are drawn as they are over the view.
Drawing DrawPageOf(const luhost::Document& document, int page)
{
    Drawing drawing = luhost::render::DrawPage(*document.GetPage(static_cast<std::size_t>(page) - 1)->GetDocument());
    // What a flattened 3D symbol looks like is drawn by its lines.
    std::erase_if(drawing.pictures, [&](const luhost::render::DrawnPicture& picture) {
        const du::SmartPtr<luk::Annotation> annotation = document.FindAnnotation(picture.id);
        return annotation && dynamic_cast<luannotations::SymbolAnnotationFlattened*>(annotation.get()) != nullptr;
    });
    for (luhost::render::DrawnPicture& picture : drawing.pictures) {
        const du::SmartPtr<luk::Annotation> annotation = document.FindAnnotation(picture.id);
        if (const luannotations::Symbol2D* const symbol = annotation ? AsPicture(*annotation) : nullptr) {
            picture.link = FindLink(symbol->GetDescription());
            picture.fillColor = symbol->GetFillColor();
            picture.lineColor = symbol->GetLineColor();
            picture.lineWidth = std::max(symbol->GetLineWidth(), 0) * kMillimetresPerLineWidth;
        }
    }
    return drawing;
}

std::string DrawingTitle(const luhost::Document& document, const std::string& what)
{
    const std::string product = document.GetStructure()->GetRoot()->GetName().GetText();
    return product.empty() ? what : product + ", " + what;
}

const std::map<std::string, PictureFormat>& PictureFormats()
{
    static const std::map<std::string, PictureFormat> formats = {
        {"svg", PictureFormat::Svg}, {"pdf", PictureFormat::Pdf}, {"png", PictureFormat::Png}};
    return formats;
}

std::optional<PictureFormat> FindPictureFormat(const std::string& ending)
{
    const auto known = PictureFormats().find(ending);
    return known == PictureFormats().end() ? std::nullopt : std::optional(known->second);
}

bool WriteDrawing(const Drawing& drawing, PictureFormat format, int pixelWidth, int pixelHeight, std::string& bytes,
                  std::string& error)
{
    switch (format) {
    case PictureFormat::Svg:
        return luhost::render::WriteSvg(drawing, bytes, error);
    case PictureFormat::Pdf:
        return luhost::render::WritePdf(drawing, bytes, error);
    case PictureFormat::Png:
        break;
    }
    return luhost::render::WritePng(drawing, pixelWidth, pixelHeight, bytes, error);
}

} // namespace lusym
