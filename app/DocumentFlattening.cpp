#include "DocumentFlattening.h"

#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotationFlattened.h"
#include "DocumentSource.h"
#include "SymbolState.h"

#include <dg/Camera3D.h>
#include <dg/DBox.h>
#include <dg/DMat33.h>
#include <dg/DMat44.h>
#include <dg/Pipeline.h>
#include <luhost/Document.h>
#include <luhost/render/Drawing.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/InstanceCheck.h>
#include <luk/Shape.h>
#include <luk/ShapeInstance.h>

#include <algorithm>
#include <cmath>

namespace lusym
{

namespace
{

using luannotations::SymbolAnnotationFlattened;
using luk::illustration2d::Lines2D;

constexpr int kFittedWidth = 1280;

/// From pixels of the viewport, which count down from its upper left corner, to millimetres of the sheet, which count up.
class SheetPlacement
{
public:
    SheetPlacement(const FlatSheet& sheet, const dg::Camera3D& camera)
    {
        const double width = camera.GetPixelWidth();
        const double height = camera.GetPixelHeight();
        m_scale = std::min(sheet.width / width, sheet.height / height);
        m_left = 0.5 * (sheet.width - m_scale * width);
        m_top = 0.5 * (sheet.height + m_scale * height);
    }

    double GetScale() const { return m_scale; }
    dg::DPoint3D At(double x, double y) const { return {m_left + m_scale * x, m_top - m_scale * y, 0.0}; }

private:
    double m_scale = 1.0;
    double m_left = 0.0;
    double m_top = 0.0;
};

/// By how much a viewport is enlarged so that lines are as exact as a printer.
int DetailOf(const dg::Camera3D& camera, double millimetresPerPixel)
{
    constexpr double kPixelsPerMillimetre = 8.0;
    constexpr int kMost = 8;
    constexpr int kLongestSide = 16384;
    const int longest = std::max(camera.GetPixelWidth(), camera.GetPixelHeight());
    const int wanted =
        static_cast<int>(std::ceil(std::clamp(kPixelsPerMillimetre * millimetresPerPixel, 1.0, 1.0 * kMost)));
    return std::clamp(wanted, 1, std::max(1, kLongestSide / longest));
}

/// Of the sheet, in whole thousandths of a millimetre: no printer knows more.
double Rounded(double millimetres) { return std::round(millimetres * 1000.0) / 1000.0; }

/// @param scale millimetres of a pixel of the drawing, of which there are `detail` times as many as the placement counts
du::SmartPtr<Lines2D> ToLines(const luhost::render::DrawnStrokes& strokes, const SheetPlacement& placement,
                              double scale, int detail)
{
    auto lines = du::MakeCounted<Lines2D>();
    std::vector<Lines2D::Line> all;
    for (const luhost::render::DrawnStrokes::Stroke& stroke : strokes.strokes) {
        Lines2D::Line& line = all.emplace_back();
        line.isClosed = stroke.closed;
        for (const dg::DPoint2D& pixel : stroke.points) {
            const dg::DPoint3D point = placement.At(pixel.x / detail, pixel.y / detail);
            line.points.push_back({Rounded(point.x), Rounded(point.y)});
        }
    }
    std::vector<double> dashes;
    for (const double dash : strokes.dashes) {
        dashes.push_back(Rounded(dash * scale));
    }
    lines->SetLines(std::move(all));
    lines->SetDashes(std::move(dashes));
    lines->SetWidth(Rounded(strokes.width * scale));
    lines->SetColor(strokes.color);
    lines->SetLineClass(strokes.lineClass);
    lines->SetPart(strokes.part);
    lines->SetTitle(strokes.title);
    if (!strokes.annotation.empty()) {
        lines->SetIDPath(du::Symbol(strokes.annotation));
    }
    return lines;
}

/// How much of the box of a picture that stands in space its width and height are, when it faces the reader in there as
/// large as fits. Those of others are their box.
dg::DVec3 ShareOfBox(luk::Annotation& annotation, const luk::SerializedContentElement& content)
{
    const luannotations::Symbol2D* const picture = AsPicture(annotation);
    if (!picture || picture->IsBillboard3D() || picture->IsScreenSpace()) {
        return {1.0, 1.0, 0.0};
    }
    const auto number = [&content](const du::Symbol& key) {
        for (const auto& property : content.GetProperties()) {
            if (const auto* const value = std::get_if<float>(&property.value); value && property.key == key) {
                return static_cast<double>(*value);
            }
        }
        return 0.0;
    };
    const dg::FVec3 own = picture->GetMarkupSize(0);
    const double ratio = number(du::Symbol("width")) * static_cast<double>(own.y) /
                         (number(du::Symbol("height")) * static_cast<double>(own.x));
    return ratio > 0.0 && std::isfinite(ratio) ? dg::DVec3{std::min(1.0, 1.0 / ratio), std::min(1.0, ratio), 0.0}
                                               : dg::DVec3{1.0, 1.0, 0.0};
}

/// A symbol of a page faces the reader, whatever it did in space.
void PlaceContent(luk::SerializedContentElement& content, const SheetPlacement& placement, const dg::DVec3& share)
{
    static const du::Symbol center("center");
    static const du::Symbol width("width");
    static const du::Symbol height("height");
    static const du::Symbol faces("isbillboard");
    static const du::Symbol isOnScreen("screenSpace");
    static const du::Symbol ownPlace("bbXform");
    auto& properties = content.GetProperties();
    std::erase_if(properties, [](const auto& property) { return property.key == ownPlace; });
    for (auto& [key, value, foreign] : properties) {
        if (auto* const point = std::get_if<dg::DPoint3D>(&value); point && key == center) {
            *point = placement.At(point->x, point->y);
        } else if (auto* const half = std::get_if<float>(&value); half && (key == width || key == height)) {
            *half = static_cast<float>(static_cast<double>(*half) * placement.GetScale() *
                                       (key == width ? share.x : share.y));
        } else if (auto* const flag = std::get_if<bool>(&value); flag && (key == faces || key == isOnScreen)) {
            *flag = key == faces;
        }
    }
}

/// Around what a camera sees of a shape, on the sheet; empty when it is not seen.
dg::DBox BoxOnSheet(const luk::ShapeInstance& instance, const dg::Camera3D& camera, const SheetPlacement& placement)
{
    dg::DBox box;
    const auto& shape = instance.GetShape();
    if (!shape || !shape->GetMesh()) {
        return box;
    }
    const dg::FBox& own = shape->GetMesh()->GetBox();
    const dg::Location& place = instance.GetLocation();
    for (const float x : {own.GetMin().x, own.GetMax().x}) {
        for (const float y : {own.GetMin().y, own.GetMax().y}) {
            for (const float z : {own.GetMin().z, own.GetMax().z}) {
                dg::DPoint2D pixel;
                if (camera.ProjectPoint(place.GetPosition() + place.GetMat() * dg::DVec3(x, y, z), pixel)) {
                    box.Enclose(placement.At(pixel.x, pixel.y));
                }
            }
        }
    }
    return box;
}

/// The common part of a flattened symbol says nothing of its place, which is given to it here.
void GivePlace(SymbolAnnotationFlattened& symbol, const std::string& id, double x, double y, double width,
               double height)
{
    luannotations::SymbolInfoFlattened record;
    record.title = symbol.GetTitle();
    record.description = symbol.GetDescription();
    record.showTooltipTitle = symbol.ShowTooltipTitle();
    record.showTooltipDescription = symbol.ShowTooltipDescription();
    record.fileName = symbol.GetFileName();
    record.name = symbol.GetName();
    record.id = du::Symbol(id);
    const auto f = [](double value) { return static_cast<float>(value); };
    record.xform = dg::FMat33(f(width), 0.0F, f(x), 0.0F, f(height), f(y), 0.0F, 0.0F, 1.0F);
    symbol.SetSymbolInfo(record);
}

/// The id of the node that the symbol had in the product.
std::string NodeIdOf(const luk::SerializedContentElement& content)
{
    static const du::Symbol id("ID");
    for (const auto& property : content.GetProperties()) {
        if (const auto* const text = std::get_if<du::Symbol>(&property.value); text && property.key == id) {
            return text->GetText();
        }
    }
    return {};
}

} // namespace

bool FlattenedView::Read(DocumentSource& source, const FlatSheet& sheet, std::string& error)
{
    const luhost::Document& document = source.GetDocument();
    m_sheet = sheet;
    if (sheet.view.view || sheet.view.isFitted) {
        // What is fitted fills the sheet.
        m_sheet.view.pixelWidth = kFittedWidth;
        m_sheet.view.pixelHeight = std::max(1, static_cast<int>(kFittedWidth * sheet.height / sheet.width));
    }
    ViewDrawing view(document, true);
    const dg::Camera3D camera = view.CameraFor(m_sheet.view);
    m_problems = view.GetProblems();
    if (view.HasShapes() && !ReadLines(view, camera, error)) {
        return false;
    }
    ReadSymbols(document, camera);
    return true;
}

bool FlattenedView::ReadLines(ViewDrawing& view, const dg::Camera3D& camera, std::string& error)
{
    const SheetPlacement placement(m_sheet, camera);
    const int detail = DetailOf(camera, placement.GetScale());
    const double scale = placement.GetScale() / detail;
    ViewPicture picture = m_sheet.view;
    picture.pixelWidth = camera.GetPixelWidth() * detail;
    picture.pixelHeight = camera.GetPixelHeight() * detail;
    picture.look.style = luhost::render::SceneDrawingOptions::Style::Lines;
    picture.look.pixelsPerMm = 1.0 / scale;
    // Its pictures are of no use here, but a fitted camera has to show them too.
    luhost::render::Drawing drawing;
    if (!view.Draw(picture, drawing, error)) {
        return false;
    }
    for (const luhost::render::DrawnStrokes& strokes : drawing.strokes) {
        m_lines.push_back(ToLines(strokes, placement, scale, detail));
    }
    return true;
}

void FlattenedView::ReadSymbols(const luhost::Document& document, const dg::Camera3D& camera)
{
    const SheetPlacement placement(m_sheet, camera);
    const dg::Pipeline pipeline(camera, 1.0);
    for (const du::SmartPtr<luk::Annotation>& annotation : document.GetAnnotations()) {
        luk::SerializedContentElement parent;
        if (document.GetPageOf(*annotation) >= 0 || !annotation->IsVisible() ||
            !annotation->Flatten(parent, {}, luk::InstanceCheck(), pipeline) || parent.GetChildCount() != 1) {
            continue;
        }
        Symbol symbol{std::move(parent.GetChild(0)), {}, annotation->GetIDPath()};
        if (const auto instance = annotation->GetShapeInstance()) {
            const dg::DBox box = BoxOnSheet(*instance, camera, placement);
            if (box.IsEmpty()) {
                continue;
            }
            symbol.box = {box.GetMin().x, box.GetMin().y, box.GetMax().x - box.GetMin().x,
                          box.GetMax().y - box.GetMin().y};
        } else {
            PlaceContent(symbol.content, placement, ShareOfBox(*annotation, symbol.content));
        }
        m_symbols.push_back(std::move(symbol));
    }
}

std::size_t FlattenedView::CountLines() const
{
    std::size_t count = 0;
    for (const du::SmartPtr<Lines2D>& lines : m_lines) {
        count += lines->GetLines().size();
    }
    return count;
}

std::size_t FlattenedView::PutOnPage(DocumentSource& source) const
{
    luhost::Document& document = source.GetDocument();
    const std::size_t page = document.AddPage({m_sheet.width, m_sheet.height});
    const du::SmartPtr<luk::illustration2d::Scene2D>& pageScene = document.GetPage(page);
    for (const du::SmartPtr<Lines2D>& lines : m_lines) {
        lines->SetLayer(pageScene->GetDocument()->GetCurrentLayer());
        pageScene->GetDocument()->AppendNode(lines);
    }
    const du::SmartPtr<luk::Scene> scene(pageScene.get());
    std::size_t count = 0;
    for (const auto& [content, box, idPath] : m_symbols) {
        const auto annotation = du::DynamicCast<luk::Annotation>(
            source.GetLibrarySource().CreateComponent("create", "annotation", content.GetName().GetText()));
        if (!annotation || !annotation->InitializeFromSerializedContent(&content)) {
            continue;
        }
        annotation->SetPageNum(static_cast<int>(page) + 1);
        annotation->SetIDPath(idPath);
        if (const auto flattened = du::DynamicCast<SymbolAnnotationFlattened>(annotation)) {
            GivePlace(*flattened, NodeIdOf(content), box.left + 0.5 * box.width, box.bottom + 0.5 * box.height,
                      box.width, box.height);
        }
        const InterruptHold hold;
        count += document.AddAnnotation(annotation, scene) ? 1U : 0U;
    }
    source.WaitForLoads();
    return count;
}

} // namespace lusym
