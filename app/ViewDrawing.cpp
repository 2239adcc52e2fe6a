#include "ViewDrawing.h"

#include "Interrupt.h"
#include "SymbolState.h"
#include "TextValues.h"

#include <luhost/Document.h>
#include <luhost/render/PictureCover.h>
#include <luhost/render/StampDrawing.h>
#include <luhost/render/SymbolsForward.h>
#include <luk/Annotation.h>
#include <luk/Instance.h>
#include <luk/ShapeInstance.h>
#include <luk/ShapeScene.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <functional>
#include <system_error>
#include <thread>
#include <unordered_map>

namespace lusym
{

namespace
{

using luhost::render::Drawing;
using luhost::render::PreparedScene;
using luhost::render::SceneGeometry;
using luhost::render::SceneShape;

constexpr int kUsualWidth = 1280;
constexpr int kUsualHeight = 800;
/// Around what is fitted, as a part of the shorter side.
constexpr double kFitMargin = 0.04;

/// Work that starts threads, in a thread that takes no signal, and so in threads that take none.
///
/// *Rationale:* held in the thread of the signals itself, they would wait until a large product is drawn.
void RunWithoutSignals(const std::function<void()>& work)
{
    std::exception_ptr thrown; // such as that there is no memory, which would end the program in another thread
    const auto run = [&] {
        try {
            work();
        } catch (...) {
            thrown = std::current_exception();
        }
    };
    std::thread worker;
    {
        const InterruptHold hold;
        try {
            worker = std::thread(run);
        } catch (const std::system_error&) {
            run();
        }
    }
    if (worker.joinable()) {
        worker.join();
    }
    if (thrown) {
        std::rethrow_exception(thrown);
    }
}

/// The document's camera, with as many pixels as are asked for. A camera shows its whole width, so that another shape of
/// the picture shows more or less above and below.
dg::Camera3D SizedCamera(const luhost::Document& document, const ViewPicture& picture)
{
    dg::Camera3D camera = document.GetCamera();
    const bool hasPixels = camera.GetPixelWidth() > 0 && camera.GetPixelHeight() > 0;
    int width = hasPixels ? camera.GetPixelWidth() : kUsualWidth;
    int height = hasPixels ? camera.GetPixelHeight() : kUsualHeight;
    const double heightPerWidth = static_cast<double>(height) / static_cast<double>(width);
    if (picture.pixelWidth != 0) {
        width = picture.pixelWidth;
        height = static_cast<int>(std::ceil(picture.pixelWidth * heightPerWidth));
    }
    if (picture.pixelHeight != 0) {
        height = picture.pixelHeight;
        width = picture.pixelWidth != 0 ? width : static_cast<int>(std::ceil(picture.pixelHeight / heightPerWidth));
    }
    camera.SetViewport(width, height);
    return camera;
}

luhost::render::Words WordsOf(const luhost::Document& document, const luk::Annotation& annotation)
{
    // The drawing only lends what it shows; the state is read through operations that are not const.
    const SymbolState state = StateOf(document, const_cast<luk::Annotation&>(annotation));
    return {state.id, state.showsTitle ? state.title : std::string(),
            state.showsDescription ? state.description : std::string(), FindLink(state.description)};
}

} // namespace

ViewDrawing::ViewDrawing(const luhost::Document& document, bool isSameEverywhere)
    : m_document(document), m_geometry(SceneGeometry::Collect(*document.GetShapeScene()))
{
    m_options.isSameEverywhere = isSameEverywhere;
}

ViewDrawing::~ViewDrawing() = default;

dg::Camera3D ViewDrawing::CameraFor(const ViewPicture& picture) const
{
    const dg::Camera3D saved = SizedCamera(m_document, picture);
    if (!picture.view && !picture.isFitted) {
        return saved;
    }
    const dg::Camera3D camera = picture.view
                                    ? luhost::render::MakeViewCamera(*picture.view, picture.up, {},
                                                                     saved.GetPixelWidth(), saved.GetPixelHeight(), 0.0)
                                    : saved;
    std::vector<dg::DPoint3D> points = picture.hasPictures
                                           ? luhost::render::StampCorners(*m_document.GetScene(), camera)
                                           : std::vector<dg::DPoint3D>();
    for (const SceneShape& shape : m_geometry.shapes) {
        const std::vector<dg::DPoint3D> corners = luhost::render::CornersOf(shape.box);
        points.insert(points.end(), corners.begin(), corners.end());
    }
    return luhost::render::FitCamera(camera, points, kFitMargin);
}

bool ViewDrawing::Draw(const ViewPicture& picture, Drawing& drawing, std::string& error)
{
    const dg::Camera3D camera = CameraFor(picture);
    drawing = {};
    drawing.width = camera.GetPixelWidth();
    drawing.height = camera.GetPixelHeight();
    if (HasShapes() && !DrawShapes(picture, camera, drawing, error)) {
        return false;
    }
    if (!picture.hasPictures) {
        return true;
    }
    AddPictures(camera, drawing);
    return picture.covering != ViewPicture::Covering::All || !HasShapes() ||
           CoverPictures(picture, camera, drawing, error);
}

bool ViewDrawing::DrawShapes(const ViewPicture& picture, const dg::Camera3D& camera, Drawing& drawing,
                             std::string& error)
{
    luhost::render::SceneDrawingOptions look = picture.look;
    look.up = luhost::render::UpVector(picture.up);
    bool isDrawn = false;
    RunWithoutSignals([&] {
        std::unique_ptr<PreparedScene> ofThisView;
        if (picture.covering == ViewPicture::Covering::None && HasSymbols()) {
            SceneGeometry geometry = m_geometry;
            luhost::render::BringSymbolsForward(geometry, camera);
            ofThisView = PreparedScene::Prepare(std::move(geometry), m_options, {}, error);
        }
        const PreparedScene* const scene = ofThisView ? ofThisView.get() : Prepare(error);
        isDrawn = scene != nullptr && luhost::render::DrawScene(*scene, camera, look, {}, drawing, error);
    });
    NameSymbols(drawing);
    return isDrawn;
}

bool ViewDrawing::HasSymbols() const
{
    return std::ranges::count(m_geometry.shapes, SceneShape::Kind::Symbol, &SceneShape::kind) > 0;
}

const PreparedScene* ViewDrawing::Prepare(std::string& error)
{
    if (!m_scene) {
        m_scene = PreparedScene::Prepare(m_geometry, m_options, {}, error);
    }
    return m_scene.get();
}

/// Lines of symbols are known by the symbols, not by the nodes that these have among the parts.
void ViewDrawing::NameSymbols(Drawing& drawing) const
{
    std::unordered_map<std::string, luhost::render::Words> words;
    for (const du::SmartPtr<luk::Annotation>& annotation : m_document.GetAnnotations()) {
        if (const auto shape = annotation->GetShapeInstance()) {
            words.emplace(shape->GetInstance()->GetIdPath().GetText(), WordsOf(m_document, *annotation));
        }
    }
    for (luhost::render::DrawnStrokes& strokes : drawing.strokes) {
        if (const auto found = words.find(strokes.part); found != words.end()) {
            strokes.part.clear();
            strokes.annotation = found->second.id;
            strokes.title = found->second.title.empty() ? strokes.title : found->second.title;
            strokes.link = found->second.link;
        }
    }
}

void ViewDrawing::AddPictures(const dg::Camera3D& camera, Drawing& drawing) const
{
    drawing.pictures =
        luhost::render::DrawView(*m_document.GetScene(), camera, [this](const luk::Annotation& annotation) {
            return WordsOf(m_document, annotation);
        }).pictures;
}

bool ViewDrawing::CoverPictures(const ViewPicture& picture, const dg::Camera3D& camera, Drawing& drawing,
                                std::string& error)
{
    const bool hasLines = picture.look.style != luhost::render::SceneDrawingOptions::Style::Shaded;
    const double margin = hasLines ? 0.5 * picture.look.visibleLines.widthMm * picture.look.pixelsPerMm : 0.0;
    bool isDone = false;
    RunWithoutSignals([&] {
        if (const PreparedScene* const scene = Prepare(error)) {
            error = ToText(luhost::render::CoverPictures(*scene, camera, margin, {}, drawing));
            isDone = error.empty();
        }
    });
    return isDone;
}

} // namespace lusym
