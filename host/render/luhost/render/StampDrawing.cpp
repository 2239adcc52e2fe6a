#include <dg/Camera3D.h>
#include <luhost/render/StampDrawing.h>
#include <luk/AnnoSet.h>
#include <luk/Annotation.h>
#include <luk/illustration2d/Document2D.h>
#include <luk/illustration2d/Lines2D.h>
#include <luk/illustration2d/Stamp2D.h>
#include <luk/Scene.h>
#include <lumk/Stamp.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace luhost::render
{

namespace
{

using Corners = std::array<dg::DPoint2D, 4>;

/// Corners of the box, from its upper left one on, as corners of the picture.
Corners Flip(const Corners& box, bool topToBottom, bool leftToRight)
{
    Corners corners = box;
    if (topToBottom) {
        std::swap(corners[0], corners[3]);
        std::swap(corners[1], corners[2]);
    }
    if (leftToRight) {
        std::swap(corners[0], corners[1]);
        std::swap(corners[3], corners[2]);
    }
    return corners;
}

Corners UprightBox(double left, double top, double right, double bottom)
{
    return {dg::DPoint2D{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

bool AreFinite(const Corners& corners)
{
    return std::all_of(corners.begin(), corners.end(),
                       [](const dg::DPoint2D& corner) { return std::isfinite(corner.x) && std::isfinite(corner.y); });
}

DrawnPicture DrawStamp2D(const luk::illustration2d::Stamp2D& stamp, double pageHeight)
{
    const dg::DPoint2D& lower = stamp.GetExtents().GetMin();
    const dg::DPoint2D& upper = stamp.GetExtents().GetMax();
    DrawnPicture picture;
    picture.corners = Flip(UprightBox(lower.x, pageHeight - upper.y, upper.x, pageHeight - lower.y),
                           stamp.GetFlipVertically(), stamp.GetFlipHorizontally());
    if (stamp.GetImage()) {
        picture.image = stamp.GetImage()->GetImageData();
    }
    picture.id = stamp.GetIDPath().GetText();
    picture.title = stamp.GetUseTitle() ? stamp.GetTitle() : std::string();
    picture.description = stamp.GetUseDescription() ? stamp.GetDescription() : std::string();
    return picture;
}

DrawnStrokes DrawLines2D(const luk::illustration2d::Lines2D& lines, double pageHeight)
{
    DrawnStrokes drawn;
    drawn.strokes.reserve(lines.GetLines().size());
    for (const luk::illustration2d::Lines2D::Line& line : lines.GetLines()) {
        DrawnStrokes::Stroke& stroke = drawn.strokes.emplace_back();
        stroke.closed = line.isClosed;
        stroke.points.reserve(line.points.size());
        for (const dg::DPoint2D& point : line.points) {
            stroke.points.push_back({point.x, pageHeight - point.y});
        }
    }
    drawn.width = lines.GetWidth();
    drawn.dashes = lines.GetDashes();
    drawn.color = lines.GetColor();
    drawn.lineClass = lines.GetLineClass();
    drawn.part = lines.GetPart();
    drawn.annotation = lines.GetIDPath().GetText();
    drawn.title = lines.GetTitle();
    return drawn;
}

/// Where a stamp stands in space: the box reaches from centre - right - up to centre + right + up.
struct StampPlace {
    dg::DPoint3D center;
    dg::DVec3 right;
    dg::DVec3 up;

    std::array<dg::DPoint3D, 4> GetCorners() const noexcept
    {
        return {center - right + up, center + right + up, center + right - up, center - right - up};
    }
};

bool IsSeen(const lumk::Stamp& stamp) { return stamp.GetWidth() > 0.0F && stamp.GetHeight() > 0.0F; }

bool FacesTheViewer(const lumk::Stamp& stamp) { return stamp.IsBillboard() || !stamp.GetLocation(); }

/// Of a stamp that is not on the screen. One that faces the viewer lies along the screen, every point of it as far away as
/// the centre.
StampPlace PlaceOf(const lumk::Stamp& stamp, const dg::Camera3D& camera)
{
    const auto halfWidth = static_cast<double>(stamp.GetWidth());
    const auto halfHeight = static_cast<double>(stamp.GetHeight());
    if (FacesTheViewer(stamp)) {
        return {stamp.GetCenter(), camera.GetU() * halfWidth, camera.GetV() * halfHeight};
    }
    const dg::FMat33& axes = stamp.GetLocation()->GetMat();
    return {stamp.GetCenter(), axes.GetColumn(0) * halfWidth, axes.GetColumn(1) * halfHeight};
}

bool FindCornersOnScreen(const lumk::Stamp& stamp, Corners& corners)
{
    const dg::DPoint3D& center = stamp.GetCenter();
    const auto halfWidth = static_cast<double>(stamp.GetWidth());
    const auto halfHeight = static_cast<double>(stamp.GetHeight());
    corners = UprightBox(center.x - halfWidth, center.y - halfHeight, center.x + halfWidth, center.y + halfHeight);
    return AreFinite(corners);
}

/// Where the box of a stamp appears; false when it appears nowhere.
bool FindCorners(const lumk::Stamp& stamp, const dg::Camera3D& camera, Corners& corners)
{
    if (!IsSeen(stamp)) {
        return false;
    }
    if (stamp.IsScreenSpace()) {
        return FindCornersOnScreen(stamp, corners);
    }
    const std::array<dg::DPoint3D, 4> inSpace = PlaceOf(stamp, camera).GetCorners();
    for (std::size_t i = 0; i < inSpace.size(); ++i) {
        if (!camera.ProjectPoint(inSpace[i], corners[i])) {
            return false;
        }
    }
    if (FacesTheViewer(stamp)) {
        // Upright to the last bit.
        corners = UprightBox(corners[0].x, corners[0].y, corners[2].x, corners[2].y);
    }
    return true;
}

/// Opaque where the transparency is not a number.
double OpacityOf(float transparency)
{
    return transparency > 0.0F ? std::max(1.0 - static_cast<double>(transparency), 0.0) : 1.0;
}

/// A stamp and its place among the others.
struct Entry {
    const lumk::Stamp* stamp;
    const luk::Annotation* annotation; ///< null when none of the scene's set controls it
    std::size_t rank;                  ///< of the annotation in the set
};

std::vector<Entry> CollectStamps(const std::vector<du::SmartPtr<luk::Markup>>& markups,
                                 const std::vector<du::SmartPtr<luk::Annotation>>& annotations)
{
    std::unordered_map<const luk::MarkupController*, std::size_t> ranks;
    for (std::size_t i = 0; i < annotations.size(); ++i) {
        ranks.emplace(annotations[i].get(), i);
    }
    std::vector<Entry> entries;
    for (const du::SmartPtr<luk::Markup>& markup : markups) {
        const auto* stamp = dynamic_cast<const lumk::Stamp*>(markup.get());
        if (!stamp || !stamp->IsVisible()) {
            continue;
        }
        const auto rank = ranks.find(stamp->GetController());
        if (rank == ranks.end()) {
            entries.push_back({stamp, nullptr, std::numeric_limits<std::size_t>::max()});
        } else {
            entries.push_back({stamp, annotations[rank->second].get(), rank->second});
        }
    }
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return std::pair(a.stamp->GetLayer(), a.rank) < std::pair(b.stamp->GetLayer(), b.rank);
    });
    return entries;
}

} // namespace

Drawing DrawPage(const luk::illustration2d::Document2D& page)
{
    Drawing drawing;
    drawing.width = page.GetWidth();
    drawing.height = page.GetHeight();
    drawing.unit = Drawing::Unit::Millimetre;
    for (const du::SmartPtr<luk::illustration2d::Node2D>& node : page.GetNodesInDrawingOrder()) {
        if (const auto* stamp = dynamic_cast<const luk::illustration2d::Stamp2D*>(node.get())) {
            DrawnPicture picture = DrawStamp2D(*stamp, page.GetHeight());
            if (AreFinite(picture.corners)) {
                drawing.pictures.push_back(std::move(picture));
            }
        } else if (const auto* lines = dynamic_cast<const luk::illustration2d::Lines2D*>(node.get())) {
            drawing.strokes.push_back(DrawLines2D(*lines, page.GetHeight()));
        }
    }
    return drawing;
}

std::vector<dg::DPoint3D> StampCorners(const luk::Scene& scene, const dg::Camera3D& camera)
{
    std::vector<dg::DPoint3D> corners;
    for (const Entry& entry : CollectStamps(scene.GetMarkups(), {})) {
        if (IsSeen(*entry.stamp) && !entry.stamp->IsScreenSpace()) {
            for (const dg::DPoint3D& corner : PlaceOf(*entry.stamp, camera).GetCorners()) {
                corners.push_back(corner);
            }
        }
    }
    std::erase_if(corners, [](const dg::DPoint3D& corner) { return corner.IsBad(); });
    return corners;
}

Drawing DrawView(const luk::Scene& scene, const dg::Camera3D& camera, const WordsOf& wordsOf)
{
    Drawing drawing;
    drawing.width = camera.GetPixelWidth();
    drawing.height = camera.GetPixelHeight();
    // A closed scene has no set.
    const auto annotations =
        scene.GetAnnoSet() ? scene.GetAnnoSet()->GetAnnotations() : std::vector<du::SmartPtr<luk::Annotation>>();
    const auto markups = scene.GetMarkups();
    for (const Entry& entry : CollectStamps(markups, annotations)) {
        const lumk::Stamp& stamp = *entry.stamp;
        DrawnPicture picture;
        Corners box;
        if (!FindCorners(stamp, camera, box)) {
            continue;
        }
        picture.corners = Flip(box, stamp.GetReverse(), stamp.GetFlipHorizontally());
        if (!stamp.IsScreenSpace()) {
            const StampPlace place = PlaceOf(stamp, camera);
            picture.plane = DrawnPlane{place.center, place.right.Cross(place.up)};
        }
        picture.image = stamp.GetImage();
        picture.fillColor = stamp.GetFillColor();
        picture.lineColor = stamp.GetLineColor();
        picture.lineWidth = std::max(stamp.GetFrameWidth(), 0);
        picture.opacity = OpacityOf(stamp.GetTransparency());
        if (entry.annotation && wordsOf) {
            Words words = wordsOf(*entry.annotation);
            picture.id = std::move(words.id);
            picture.title = std::move(words.title);
            picture.description = std::move(words.description);
            picture.link = std::move(words.link);
        }
        drawing.pictures.push_back(std::move(picture));
    }
    return drawing;
}

} // namespace luhost::render
