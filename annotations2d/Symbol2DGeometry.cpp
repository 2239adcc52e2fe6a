#include "annotations2d/Symbol2D.h"

#include <dg/Camera3D.h>
#include <dg/Pipeline.h>
#include <luannotations/MoveOperationStep.h>
#include <luannotations/SizeOperationStep.h>
#include <luk/MarkupShadow.h>
#include <luk/Operation.h>
#include <luk/Scene.h>
#include <luk/ShapeView.h>
#include <lumk/Stamp.h>
#include <lumk/StampShadow.h>

#include <algorithm>
#include <cmath>

namespace luannotations
{

namespace
{

/// False as well where a value is NaN: nothing has changed that could be undone.
bool Differ(double a, double b) { return a < b || a > b; }

bool Differ(const dg::DPoint3D& a, const dg::DPoint3D& b)
{
    return Differ(a.x, b.x) || Differ(a.y, b.y) || Differ(a.z, b.z);
}

} // namespace

dg::DBox Symbol2D::GetBBox() const
{
    const dg::DVec3 toCorner(m_info.width, m_info.height, 0.0);
    dg::DBox box = dg::DBox::EMPTY;
    box.Enclose(m_info.center + toCorner);
    box.Enclose(m_info.center - toCorner);
    return box;
}

luk::Annotation::ManipulationType Symbol2D::GetManipulationTypes() const
{
    constexpr ManipulationType kOfBillboard{21};
    constexpr ManipulationType kOfPlacedStamp{42};
    if (m_info.screenSpace) {
        return MANIPULATION_NONE;
    }
    return m_info.isBillboard3D ? kOfBillboard : kOfPlacedStamp;
}

bool Symbol2D::MarkupUpdated(const du::SmartPtr<luk::Markup>& markup, const du::SmartPtr<luk::MarkupShadow>& shadow,
                             const du::SmartPtr<luk::Operation>& operation)
{
    if (!m_markup || markup != m_markup) {
        return true;
    }
    dg::DPoint3D oldCenter = m_info.center;
    dg::FVec3 oldSize(m_info.width, m_info.height, 0.0F);
    if (const auto stampShadow = du::DynamicCast<lumk::StampShadow>(shadow)) {
        oldCenter = stampShadow->GetOldCenter();
        oldSize = {m_markup->GetWidth(), m_markup->GetHeight(), 0.0F};
        m_info.width = stampShadow->GetWidth();
        m_info.height = stampShadow->GetHeight();
        m_info.center = m_markup->GetCenter();
        m_markup->SetWidth(m_info.width);
        m_markup->SetHeight(m_info.height);
        UpdateStamp2DExtents();
    }
    if (!operation) {
        return true;
    }
    const du::SmartPtr<luk::Annotation> self(this);
    if (Differ(m_info.center, oldCenter)) {
        const dg::Location after = GetMarkupLocation(0);
        const dg::Location before(after.GetMat(), oldCenter);
        operation->AddStep(du::MakeCounted<MoveOperationStep>(self, 0U, before, after, true));
    }
    if (Differ(m_info.width, oldSize.x) || Differ(m_info.height, oldSize.y)) {
        operation->AddStep(du::MakeCounted<SizeOperationStep>(self, 0U, oldSize, GetMarkupSize(0), true));
    }
    return true;
}

dg::FVec3 Symbol2D::GetMarkupSize(unsigned int) const { return {m_info.width, m_info.height, 0.0F}; }

void Symbol2D::SetMarkupSize(unsigned int, const dg::FVec3& size)
{
    m_info.width = size.x;
    m_info.height = size.y;
    if (m_markup) {
        m_markup->SetWidth(m_info.width);
        m_markup->SetHeight(m_info.height);
    }
    UpdateStamp2DExtents();
}

dg::Location Symbol2D::GetMarkupLocation(unsigned int) const
{
    const dg::Location* const own = m_markup ? m_markup->GetLocation() : nullptr;
    return {own ? own->GetMat() : dg::FMat33::IDENTITY, m_info.center};
}

void Symbol2D::SetMarkupLocation(unsigned int, const dg::Location& location)
{
    m_info.center = location.GetPosition();
    if (m_markup) {
        m_markup->SetCenter(m_info.center);
        m_markup->SetLocationMat(location.GetMat());
        m_markup->SetLocationPosition(location.GetPosition());
        m_markup->CycleShadow();
        m_markup->NotifyContentChanged();
    }
    UpdateStamp2DExtents();
}

du::SmartPtr<luk::MarkupShadow> Symbol2D::GetMarkupShadow(unsigned int)
{
    return m_markup ? m_markup->GetShadow() : nullptr;
}

dg::DBox2D Symbol2D::GetMarkupPixelBBox(const dg::Pipeline& pipeline, const lucontext::Context2D&, int) const
{
    const dg::DVec3 right = GetAxis(pipeline.GetCamera(), 0) * m_info.width;
    const dg::DVec3 up = GetAxis(pipeline.GetCamera(), 1) * m_info.height;
    const dg::DPoint3D& center = m_info.center;
    dg::DBox box = dg::DBox::EMPTY;
    for (const dg::DPoint3D& corner :
         {center - right - up, center + right - up, center + right + up, center - right + up}) {
        dg::DPoint2D pixel{corner.x, corner.y};
        if (!m_info.screenSpace && !pipeline.ProjectPoint(corner, pixel)) {
            return {};
        }
        box.Enclose({pixel.x, pixel.y, 0.0});
    }
    if (box.IsEmpty()) {
        return {};
    }
    // The frame is drawn along the edge, one half of it outside.
    const double frame = m_markup ? m_markup->GetFrameWidth() * 0.5 : 0.0;
    return {{box.GetMin().x - frame, box.GetMin().y - frame}, {box.GetMax().x + frame, box.GetMax().y + frame}};
}

/// Direction of the stamp's width (0) or height (1): on the screen for a stamp that lies there, in the scene otherwise.
dg::DVec3 Symbol2D::GetAxis(const dg::Camera3D& camera, int axis) const
{
    if (m_info.screenSpace) {
        return dg::FMat33::IDENTITY.GetColumn(axis);
    }
    const dg::Location* const own = m_markup ? m_markup->GetLocation() : nullptr;
    if (own && !m_info.isBillboard3D) {
        return own->GetMat().GetColumn(axis);
    }
    return axis == 0 ? camera.GetU() : camera.GetV();
}

void Symbol2D::ApplyExtents2D(const dg::DBox2D& box)
{
    m_info.center = {box.GetCenter().x, box.GetCenter().y, 0.0};
    if (m_markup) {
        m_markup->SetCenter(m_info.center);
    }
    SetMarkupSize(0, {static_cast<float>(box.GetWidth() * 0.5), static_cast<float>(box.GetHeight() * 0.5), 0.0F});
}

void Symbol2D::SetMarkupSizeAsImage()
{
    const auto view = du::DynamicCast<luk::ShapeView>(m_scene ? m_scene->GetView(0) : nullptr);
    if (!view || !(m_origWidth > 0.0F && m_origHeight > 0.0F)) {
        return;
    }
    const float aspect = m_origWidth / m_origHeight;
    const dg::Camera3D& camera = view->GetCamera();
    dg::DPoint2D screen;
    dg::DPoint3D origin;
    dg::DVec3 direction;
    dg::DPoint3D hit;
    if (!camera.ProjectPoint(m_info.center, screen) ||
        !camera.ScreenXYToNormalizedRay(screen.x - m_origWidth * 0.5, screen.y, origin, direction) ||
        !camera.IntersectRayWithPlane(origin, direction, m_info.center, camera.GetU().Cross(camera.GetV()), hit)) {
        return;
    }
    const auto width = static_cast<float>(2.0 * (hit - m_info.center).Length());
    const float height = width / aspect;
    if (width > 0.0F && height > 0.0F && std::isfinite(width) && std::isfinite(height)) {
        SetMarkupSize(0, {width, height, 0.0F});
    }
}

void Symbol2D::SetToOriginalSize()
{
    const float halfPixelWidth = static_cast<float>(GetImageWidth()) * 0.5F;
    const float halfPixelHeight = static_cast<float>(GetImageHeight()) * 0.5F;
    // The height stands in both conditions: of pictures with their natural size, square ones alone take this road.
    if (m_origHeight == halfPixelHeight && m_origWidth == halfPixelHeight) {
        SetMarkupSize(0, {halfPixelWidth, halfPixelHeight, 0.0F});
    } else {
        SetMarkupSize(0, {m_origWidth, m_origHeight, 0.0F});
    }
    if (m_markup) {
        m_markup->CycleShadow();
    }
}

bool Symbol2D::IsOriginalSize() const
{
    const dg::FVec3 size = GetMarkupSize(0);
    return size.x == m_origWidth && size.y == m_origHeight;
}

} // namespace luannotations
