#include "ThumbnailDrawing.h"

#include <luhost/io/ProductImport.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/SceneDrawing.h>

#include <algorithm>
#include <utility>

namespace lusym
{

namespace
{

using luhost::render::Drawing;
using luhost::render::DrawnPicture;
using luhost::render::PreparedScene;
using luhost::render::Workers;

/// Around a shape, as a part of the thumbnail.
constexpr double kMargin = 0.06;

/// Thumbnails are made side by side, so that each is the work of one thread.
Workers OneWorker() { return Workers{1, nullptr}; }

Drawing MakeSheet(int side)
{
    Drawing drawing;
    drawing.width = side;
    drawing.height = side;
    return drawing;
}

/// Lines that are as fine as the picture is small.
luhost::render::SceneDrawingOptions ShapeStyle(int side)
{
    luhost::render::SceneDrawingOptions options;
    const double lineWidth = side < 128 ? 0.9 : 1.5;
    options.pixelsPerMm = lineWidth / options.visibleLines.widthMm;
    return options;
}

/// Whether a camera shows something of what is in the box.
bool Shows(const dg::Camera3D& camera, const dg::DBox& box)
{
    dg::DBox seen;
    for (const dg::DPoint3D& corner : luhost::render::CornersOf(box)) {
        dg::DPoint2D pixel;
        if (!camera.ProjectPoint(corner, pixel)) {
            return false;
        }
        seen.Enclose({pixel.x, pixel.y, 0.0});
    }
    return !seen.IsEmpty() && seen.GetMin().x < camera.GetPixelWidth() && seen.GetMax().x > 0.0 &&
           seen.GetMin().y < camera.GetPixelHeight() && seen.GetMax().y > 0.0;
}

/// From the front, the right and above, as large as fits.
dg::Camera3D WholeCamera(const luhost::render::SceneGeometry& geometry, luhost::render::UpAxis up, int side)
{
    const dg::Camera3D camera =
        luhost::render::MakeViewCamera(luhost::render::StandardView::Iso, up, geometry.box, side, side, kMargin);
    const dg::DPoint3D& low = geometry.box.GetMin();
    const dg::DPoint3D& high = geometry.box.GetMax();
    std::vector<dg::DPoint3D> points;
    for (const dg::FVec3& position : geometry.meshes.front().mesh->GetPositions()) {
        const dg::DPoint3D point(static_cast<double>(position.x), static_cast<double>(position.y),
                                 static_cast<double>(position.z));
        // Stray ones are not drawn.
        if (point.x >= low.x && point.x <= high.x && point.y >= low.y && point.y <= high.y && point.z >= low.z &&
            point.z <= high.z) {
            points.push_back(point);
        }
    }
    return luhost::render::FitCamera(camera, points, kMargin);
}

ThumbnailPicture DrawShape(const PreparedScene& scene, const dg::Camera3D& camera, int side)
{
    ThumbnailPicture thumbnail;
    Drawing drawing;
    if (luhost::render::DrawScene(scene, camera, ShapeStyle(side), OneWorker(), drawing, thumbnail.problem)) {
        luhost::render::WritePng(drawing, side, side, thumbnail.png, thumbnail.problem);
    }
    return thumbnail;
}

} // namespace

PictureThumbnails::PictureThumbnails(std::string_view bytes, const PictureLook& look, const PictureDecoders& decoders)
    : m_look(look), m_pngs(std::make_unique<luhost::render::PngSeries>()), m_problem("it is no picture of a known kind")
{
    const auto decoder = std::ranges::find_if(decoders, [&](const auto& each) { return each->Recognises(bytes); });
    if (decoder == decoders.end()) {
        return;
    }
    m_problem.clear();
    m_picture = (*decoder)->Decode(bytes, m_problem);
    if (m_picture && look.quarterTurns % 4 != 0) {
        m_picture = m_picture->CreateCWRotated(look.quarterTurns);
    }
}

PictureThumbnails::~PictureThumbnails() = default;

ThumbnailPicture PictureThumbnails::Draw(int side) const
{
    if (!m_picture) {
        return {{}, m_problem.empty() ? "it cannot be read" : m_problem, {}};
    }
    const double width = m_picture->GetWidth();
    const double height = m_picture->GetHeight();
    const double fitting = side / std::max({width, height, 1.0});
    const double scale = m_picture->GetVectorSource() ? fitting : std::min(fitting, 1.0);
    double left = 0.5 * (side - scale * width);
    double top = 0.5 * (side - scale * height);
    double right = side - left;
    double bottom = side - top;
    if (m_look.isFlippedHorizontally) {
        std::swap(left, right);
    }
    if (m_look.isFlippedVertically) {
        std::swap(top, bottom);
    }
    Drawing drawing = MakeSheet(side);
    DrawnPicture& picture = drawing.pictures.emplace_back();
    picture.corners = {dg::DPoint2D{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    picture.image = m_picture;
    ThumbnailPicture thumbnail;
    m_pngs->Write(drawing, side, side, thumbnail.png, thumbnail.problem);
    if (const std::string missing = m_pngs->FindProblem(); thumbnail.problem.empty() && !missing.empty()) {
        thumbnail.problem = "it cannot be drawn: " + missing;
    }
    return thumbnail;
}

ShapeThumbnails::ShapeThumbnails(const std::string& path, const ShapeLook& look, const luhost::io::ModelReader& reader)
    : m_look(look)
{
    const du::SmartPtr<luk::Mesh> mesh = reader.Read(path, m_problem);
    if (!mesh) {
        return;
    }
    luhost::render::SceneGeometry geometry = luhost::render::SceneGeometry::Of(mesh);
    if (geometry.shapes.empty()) {
        m_problem = "it has no faces";
        return;
    }
    m_scene = PreparedScene::Prepare(std::move(geometry), {}, OneWorker(), m_problem);
}

ShapeThumbnails::~ShapeThumbnails() = default;

ThumbnailPicture ShapeThumbnails::Draw(int side) const
{
    if (!m_scene) {
        return {{}, m_problem.empty() ? "it cannot be read" : m_problem, {}};
    }
    if (m_look.camera) {
        dg::Camera3D camera = *m_look.camera;
        camera.SetViewport(side, side);
        if (Shows(camera, m_scene->geometry.box)) {
            return DrawShape(*m_scene, camera, side);
        }
    }
    ThumbnailPicture thumbnail = DrawShape(*m_scene, WholeCamera(m_scene->geometry, m_look.up, side), side);
    thumbnail.remark = m_look.camera ? "its camera shows nothing of it, so that it is shown from above" : "";
    return thumbnail;
}

} // namespace lusym
