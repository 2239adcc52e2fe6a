#include <dg/Camera3D.h>
#include <luhost/render/StampDrawing.h>
#include <luk/AnnoSet.h>
#include <luk/Annotation.h>
#include <luk/illustration2d/Document2D.h>
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

/// Where the box of a stamp appears; false when it appears nowhere.
class StampProjection
{
public:
    StampProjection(const lumk::Stamp& stamp, const dg::Camera3D& camera)
        : m_center(stamp.GetCenter()), m_halfWidth(static_cast<double>(stamp.GetWidth())),
          m_halfHeight(static_cast<double>(stamp.GetHeight())), m_camera(camera)
    {
    }

    bool OnScreen(Corners& corners) const
    {
        corners = UprightBox(m_center.x - m_halfWidth, m_center.y - m_halfHeight, m_center.x + m_halfWidth,
                             m_center.y + m_halfHeight);
        return AreFinite(corners);
    }

    /// In a plane along the screen, every point of which is as far away as the centre: the box stays upright.
    bool FacingTheViewer(Corners& corners) const
    {
        dg::DPoint2D upperLeft;
        dg::DPoint2D lowerRight;
        const dg::DVec3 right = m_camera.GetU() * m_halfWidth;
        const dg::DVec3 up = m_camera.GetV() * m_halfHeight;
        if (!m_camera.ProjectPoint(m_center - right + up, upperLeft) ||
            !m_camera.ProjectPoint(m_center + right - up, lowerRight)) {
            return false;
        }
        corners = UprightBox(upperLeft.x, upperLeft.y, lowerRight.x, lowerRight.y);
        return true;
    }

    bool InSpace(const dg::FMat33& axes, Corners& corners) const
    {
        const dg::DVec3 right = axes.GetColumn(0) * m_halfWidth;
        const dg::DVec3 up = axes.GetColumn(1) * m_halfHeight;
        return m_camera.ProjectPoint(m_center - right + up, corners[0]) &&
               m_camera.ProjectPoint(m_center + right + up, corners[1]) &&
               m_camera.ProjectPoint(m_center + right - up, corners[2]) &&
               m_camera.ProjectPoint(m_center - right - up, corners[3]);
    }

private:
    dg::DPoint3D m_center;
    double m_halfWidth;
    double m_halfHeight;
    const dg::Camera3D& m_camera;
};

bool FindCorners(const lumk::Stamp& stamp, const dg::Camera3D& camera, Corners& corners)
{
    if (!(stamp.GetWidth() > 0.0F && stamp.GetHeight() > 0.0F)) {
        return false;
    }
    const StampProjection projection(stamp, camera);
    if (stamp.IsScreenSpace()) {
        return projection.OnScreen(corners);
    }
    return stamp.IsBillboard() || !stamp.GetLocation() ? projection.FacingTheViewer(corners)
                                                       : projection.InSpace(stamp.GetLocation()->GetMat(), corners);
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
        }
    }
    return drawing;
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
        }
        drawing.pictures.push_back(std::move(picture));
    }
    return drawing;
}

} // namespace luhost::render
