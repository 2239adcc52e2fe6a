#include "DocumentDrawing.h"

#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotationFlattened.h"
#include "SymbolState.h"

#include <dg/Camera3D.h>
#include <luhost/Document.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/StampDrawing.h>
#include <luk/Annotation.h>
#include <luk/illustration2d/Scene2D.h>

#include <algorithm>
#include <cmath>

namespace lusym
{

namespace
{

using luhost::render::Drawing;

constexpr int kUsualWidth = 1280;
constexpr int kUsualHeight = 800;
constexpr double kMillimetresPerLineWidth = 0.35;

/// The document's camera, with as many pixels as are asked for. A camera shows its whole width, so that another shape of
/// the picture shows more or less above and below.
dg::Camera3D CameraFor(const luhost::Document& document, const DrawingOptions& options)
{
    dg::Camera3D camera = document.GetCamera();
    const bool hasPixels = camera.GetPixelWidth() > 0 && camera.GetPixelHeight() > 0;
    int width = hasPixels ? camera.GetPixelWidth() : kUsualWidth;
    int height = hasPixels ? camera.GetPixelHeight() : kUsualHeight;
    const double heightPerWidth = static_cast<double>(height) / static_cast<double>(width);
    if (options.pixelWidth != 0) {
        width = options.pixelWidth;
        height = static_cast<int>(std::ceil(options.pixelWidth * heightPerWidth));
    }
    if (options.pixelHeight != 0) {
        height = options.pixelHeight;
        width = options.pixelWidth != 0 ? width : static_cast<int>(std::ceil(options.pixelHeight / heightPerWidth));
    }
    camera.SetViewport(width, height);
    return camera;
}

Drawing ViewDrawing(const luhost::Document& document, const DrawingOptions& options)
{
    const auto wordsOf = [&](const luk::Annotation& annotation) {
        // The drawing only lends what it shows; the state is read through operations that are not const.
        const SymbolState state = StateOf(document, const_cast<luk::Annotation&>(annotation));
        return luhost::render::Words{state.id, state.showsTitle ? state.title : std::string(),
                                     state.showsDescription ? state.description : std::string()};
    };
    return luhost::render::DrawView(*document.GetScene(), CameraFor(document, options), wordsOf);
}

/// A stamp of a page has neither frame nor fill; those of the symbol that it belongs to are drawn as they are over the view.
Drawing PageDrawing(const luhost::Document& document, int page)
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
            picture.fillColor = symbol->GetFillColor();
            picture.lineColor = symbol->GetLineColor();
            picture.lineWidth = std::max(symbol->GetLineWidth(), 0) * kMillimetresPerLineWidth;
        }
    }
    return drawing;
}

} // namespace

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

bool DrawDocument(const luhost::Document& document, const DrawingOptions& options, PictureFormat format,
                  std::string& bytes, std::string& error)
{
    Drawing drawing = options.page == 0 ? ViewDrawing(document, options) : PageDrawing(document, options.page);
    drawing.background = options.background;
    switch (format) {
    case PictureFormat::Svg:
        return luhost::render::WriteSvg(drawing, bytes, error);
    case PictureFormat::Pdf:
        return luhost::render::WritePdf(drawing, bytes, error);
    case PictureFormat::Png:
        break;
    }
    return luhost::render::WritePng(drawing, options.pixelWidth, options.pixelHeight, bytes, error);
}

} // namespace lusym
