#include <luhost/render/DrawingOutput.h>
#include <luhost/render/FlatStretches.h>
#include <luhost/render/LineCover.h>
#include <luhost/render/PiercingLines.h>
#include <luhost/render/SceneDrawing.h>
#include <luhost/render/Shading.h>
#include <luhost/render/StrokeJoining.h>
#include <luhost/render/Strokes.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace luhost::render
{

namespace
{

constexpr std::array<LineKind, kLineKinds> kKinds{LineKind::Piercing, LineKind::PartBoundary, LineKind::Crease,
                                                  LineKind::Border, LineKind::Silhouette};

std::string_view NameOf(LineKind kind)
{
    switch (kind) {
    case LineKind::Silhouette:
        return "silhouette";
    case LineKind::Border:
        return "border";
    case LineKind::PartBoundary:
        return "boundary";
    case LineKind::Piercing:
        return "intersection";
    case LineKind::Crease:
        break;
    }
    return "crease";
}

using StrokesOfShapes = std::vector<std::vector<Stroke>>;

/// Adds what of a stroke lies beside those that were added before.
void AddUncovered(Stroke& stroke, LineCover& cover, std::vector<Stroke>& kept)
{
    for (Stroke& beside : cover.BesideOf(stroke)) {
        cover.Add(beside);
        kept.push_back(std::move(beside));
    }
}

/// Seen edge-on a shape has lines upon lines, which would look bolder than others. What stands out most stays.
std::vector<Stroke> DropDoubles(const ViewFrame& view, std::vector<Stroke> strokes)
{
    std::stable_sort(strokes.begin(), strokes.end(), [](const Stroke& a, const Stroke& b) { return a.kind < b.kind; });
    LineCover cover(view.pixelWidth, view.pixelHeight);
    std::vector<Stroke> kept;
    for (Stroke& stroke : strokes) {
        if (stroke.isVisible) {
            AddUncovered(stroke, cover, kept);
        } else {
            kept.push_back(std::move(stroke));
        }
    }
    return kept;
}

/// @param withHidden whether the hidden ones are wanted too
Outcome FindStrokes(const PreparedScene& scene, const ViewFrame& view, bool withHidden, const Workers& workers,
                    StrokesOfShapes& strokes)
{
    std::vector<std::vector<FeatureLine>> piercing;
    if (const Outcome outcome = FindPiercingLines(scene, view, workers, piercing); outcome != Outcome::Done) {
        return outcome;
    }
    const auto strokesOf = [&](const std::vector<FeatureLine>& lines) {
        return MakeStrokes(lines, FindLineSpans(scene, lines, view));
    };
    strokes.resize(scene.shapes.size());
    return RunParallel(scene.shapes.size(), workers, [&](std::size_t shape) {
        std::vector<Stroke> all = strokesOf(FindFeatureLines(scene, shape, view));
        std::ranges::move(strokesOf(piercing[shape]), std::back_inserter(all));
        if (!withHidden) {
            std::erase_if(all, [](const Stroke& stroke) { return !stroke.isVisible; });
        }
        strokes[shape] = DropFlatStretches(scene, shape, view, DropDoubles(view, std::move(all)));
    });
}

std::size_t CountSegments(const StrokesOfShapes& strokes)
{
    std::size_t count = 0;
    for (const std::vector<Stroke>& ofShape : strokes) {
        for (const Stroke& stroke : ofShape) {
            count += stroke.points.size();
        }
    }
    return count;
}

/// Edges of parts that lie upon one another are one line, of the part that comes first.
void DropDoublesOfParts(const SceneGeometry& geometry, const ViewFrame& view, StrokesOfShapes& strokes)
{
    // In a picture of more, nobody sees how bold a line is.
    constexpr std::size_t kMostSegments = 200'000;
    if (CountSegments(strokes) > kMostSegments) {
        return;
    }
    LineCover cover(view.pixelWidth, view.pixelHeight);
    for (std::size_t shape = 0; shape < strokes.size(); ++shape) {
        if (geometry.shapes[shape].kind != SceneShape::Kind::Product) {
            continue;
        }
        std::vector<Stroke> kept;
        for (Stroke& stroke : strokes[shape]) {
            if (stroke.isVisible) {
                AddUncovered(stroke, cover, kept);
            } else {
                kept.push_back(std::move(stroke));
            }
        }
        strokes[shape] = std::move(kept);
    }
    TakeSlivers(strokes,
                [&geometry](std::size_t shape) { return geometry.shapes[shape].kind == SceneShape::Kind::Product; });
}

/// Leaves out what of the hidden lines lies exactly behind visible ones, or behind hidden ones before them.
void UncoverHiddenStrokes(const ViewFrame& view, StrokesOfShapes& strokes)
{
    LineCover cover(view.pixelWidth, view.pixelHeight);
    for (const std::vector<Stroke>& ofShape : strokes) {
        for (const Stroke& stroke : ofShape) {
            if (stroke.isVisible) {
                cover.Add(stroke);
            }
        }
    }
    for (std::vector<Stroke>& ofShape : strokes) {
        std::vector<Stroke> kept;
        for (Stroke& stroke : ofShape) {
            if (stroke.isVisible) {
                kept.push_back(std::move(stroke));
            } else {
                AddUncovered(stroke, cover, kept);
            }
        }
        ofShape = std::move(kept);
    }
}

/// What of all strokes is drawn alike.
struct Layer {
    bool isVisible;
    SceneShape::Kind shapes;
    const LineStyle* style;
    std::array<double, kKinds.size()> widthsMm; ///< by kind; 0: as the style has it
};

class StrokeLayers
{
public:
    StrokeLayers(const SceneGeometry& geometry, StrokesOfShapes& strokes, double pixelsPerMm, Drawing& drawing)
        : m_geometry(geometry), m_strokes(strokes), m_pixelsPerMm(pixelsPerMm), m_drawing(drawing)
    {
    }

    void Add(const Layer& layer)
    {
        for (std::size_t shape = 0; shape < m_strokes.size(); ++shape) {
            if (m_geometry.shapes[shape].kind == layer.shapes) {
                for (const LineKind kind : kKinds) {
                    AddKind(layer, shape, kind);
                }
            }
        }
    }

private:
    void AddKind(const Layer& layer, std::size_t shape, LineKind kind)
    {
        DrawnStrokes drawn;
        for (Stroke& stroke : m_strokes[shape]) {
            if (stroke.kind == kind && stroke.isVisible == layer.isVisible) {
                drawn.strokes.push_back({std::move(stroke.points), stroke.isClosed});
            }
        }
        if (drawn.strokes.empty()) {
            return;
        }
        const double widthMm = layer.widthsMm[static_cast<std::size_t>(kind)];
        drawn.width = (widthMm > 0.0 ? widthMm : layer.style->widthMm) * m_pixelsPerMm;
        for (const double dash : layer.style->dashesMm) {
            drawn.dashes.push_back(dash * m_pixelsPerMm);
        }
        drawn.color = layer.style->color;
        drawn.lineClass.append(layer.isVisible ? "visible " : "hidden ").append(NameOf(kind));
        drawn.lineClass.append(layer.shapes == SceneShape::Kind::Symbol ? " symbol" : "");
        drawn.part = m_geometry.shapes[shape].idPath.GetText();
        drawn.title = m_geometry.shapes[shape].name.GetText();
        m_drawing.strokes.push_back(std::move(drawn));
    }

    const SceneGeometry& m_geometry;
    StrokesOfShapes& m_strokes;
    double m_pixelsPerMm;
    Drawing& m_drawing;
};

Outcome AddLines(const PreparedScene& scene, const ViewFrame& view, const SceneDrawingOptions& options,
                 const Workers& workers, Drawing& drawing)
{
    StrokesOfShapes strokes;
    Outcome outcome = FindStrokes(scene, view, options.showsHiddenLines, workers, strokes);
    if (outcome == Outcome::Done) {
        DropDoublesOfParts(scene.geometry, view, strokes);
        if (options.showsHiddenLines) {
            UncoverHiddenStrokes(view, strokes);
        }
        outcome = RunParallel(strokes.size(), workers, [&strokes](std::size_t shape) { JoinStrokes(strokes[shape]); });
    }
    if (outcome == Outcome::Done) {
        StrokeLayers layers(scene.geometry, strokes, options.pixelsPerMm, drawing);
        if (options.showsHiddenLines) {
            layers.Add({false, SceneShape::Kind::Product, &options.hiddenLines, {}});
            layers.Add({false, SceneShape::Kind::Symbol, &options.hiddenLines, {}});
        }
        layers.Add({true, SceneShape::Kind::Product, &options.visibleLines, options.visibleWidthsMm});
        layers.Add({true, SceneShape::Kind::Symbol, &options.symbolLines, {}});
    }
    return outcome;
}

Outcome AddShading(const PreparedScene& scene, const ViewFrame& view, const SceneDrawingOptions& options,
                   const Workers& workers, Drawing& drawing)
{
    ShadingOptions shading;
    GroundShadow shadow;
    if (options.castsGroundShadow) {
        if (const Outcome outcome = shadow.Cast(scene, options.up, workers); outcome != Outcome::Done) {
            return outcome;
        }
        shading.shadow = &shadow;
    }
    drawing.underlay = std::make_shared<Raster>();
    return ShadeView(scene, view, shading, workers, *drawing.underlay);
}

Outcome AddAll(const PreparedScene& scene, const ViewFrame& view, const SceneDrawingOptions& options,
               const Workers& workers, Drawing& drawing)
{
    using Style = SceneDrawingOptions::Style;
    Outcome outcome = Outcome::Done;
    if (options.style != Style::Lines) {
        outcome = AddShading(scene, view, options, workers, drawing);
    }
    if (outcome == Outcome::Done && options.style != Style::Shaded) {
        outcome = AddLines(scene, view, options, workers, drawing);
    }
    return outcome;
}

} // namespace

bool SceneDrawingOptions::SetLineWidth(std::string_view kind, double widthMm)
{
    if (kind == "all") {
        visibleLines.widthMm = symbolLines.widthMm = widthMm;
        visibleWidthsMm = {};
    } else if (kind == "symbol") {
        symbolLines.widthMm = widthMm;
    } else if (kind == "hidden") {
        hiddenLines.widthMm = widthMm;
    } else {
        const auto* const known = std::ranges::find(kKinds, kind, NameOf);
        if (known == kKinds.end()) {
            return false;
        }
        visibleWidthsMm[static_cast<std::size_t>(*known)] = widthMm;
    }
    return true;
}

bool DrawScene(const PreparedScene& scene, const dg::Camera3D& camera, const SceneDrawingOptions& options,
               const Workers& workers, Drawing& drawing, std::string& error)
{
    const auto view = ViewFrame::Make(camera, scene.geometry.frame);
    if (!view) {
        error = "the camera shows nothing";
        return false;
    }
    if (1.0 * view->pixelWidth * view->pixelHeight > kMaximumPixels || view->pixelWidth > kMaximumSide ||
        view->pixelHeight > kMaximumSide) {
        error = "the picture is too large";
        return false;
    }
    try {
        drawing = {};
        drawing.width = view->pixelWidth;
        drawing.height = view->pixelHeight;
        const Outcome outcome = AddAll(scene, *view, options, workers, drawing);
        error = ToText(outcome);
        return outcome == Outcome::Done;
    } catch (const std::bad_alloc&) {
        error = ToText(Outcome::NoMemory);
        return false;
    }
}

} // namespace luhost::render
