#include "annotations2d/Symbol2D.h"

#include <dp/WriteLockGuard.h>
#include <luk/AnnoSet.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration2d/Document2D.h>
#include <luk/illustration2d/Kernel2D.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/illustration2d/Stamp2D.h>
#include <luk/Scene.h>
#include <luk/View.h>
#include <lumk/Stamp.h>

#include <algorithm>
#include <utility>

namespace luannotations
{

namespace
{

using luk::illustration2d::Scene2D;

constexpr int kFrameWidthPixels = 1;
constexpr int kStampLayer = 1;
constexpr int kStampMinorZOrder = 700;

/// Whether there is anything in the location but zeros, which stand for none given; what is no number says nothing.
bool IsGiven(const dg::Location& location)
{
    const auto isGiven = [](double value) { return value < 0.0 || value > 0.0; };
    const auto& entries = location.GetMat().GetEntries();
    const dg::DPoint3D& position = location.GetPosition();
    return std::any_of(entries.begin(), entries.end(), isGiven) || isGiven(position.x) || isGiven(position.y) ||
           isGiven(position.z);
}

} // namespace

bool Symbol2D::AttachScene(const du::SmartPtr<luk::Scene>& scene)
{
    // Those who are told that the symbol follows its template may let go of it, and the lock is its own.
    const du::SmartPtr<Symbol2D> self(GetReferenceCount() > 0 ? this : nullptr);
    du::SmartPtr<luk::Scene> previousScene;
    const dp::WriteLockGuard lock(GetLock());
    if (!scene || scene == m_scene) {
        return true;
    }
    if (m_scene && m_markup) {
        m_scene->RemoveMarkup(m_markup);
    }
    if (!m_markup) {
        const bool inShapeScene = dynamic_cast<Scene2D*>(scene.get()) == nullptr;
        m_markup = new lumk::Stamp(m_info.screenSpace, kFrameWidthPixels, inShapeScene, kStampLayer);
    }
    ConfigureStamp();
    previousScene = std::exchange(m_scene, scene);
    m_scene->RegisterAnnotation(du::SmartPtr<luk::Annotation>(this));

    if (m_hasTemplate) {
        BindTemplateAtAttach();
    }
    if (!m_sourceUpdated) {
        LoadImage(m_pendingEvent.get());
    } else {
        m_templateLoad.waiting = m_pendingEvent;
    }
    return true;
}

void Symbol2D::ConfigureStamp()
{
    m_markup->SetVisibility(false);
    m_markup->SetCenter(m_info.center);
    m_markup->SetBillboard(m_info.isBillboard3D);
    m_markup->SetWidth(m_info.width);
    m_markup->SetHeight(m_info.height);
    m_markup->SetPageNum(m_info.pageNum);
    m_markup->SetLineColor(m_info.lineColor);
    m_markup->SetFillColor(m_info.fillColor);
    m_markup->SetTransparency(m_info.transparency);
    m_markup->SetReverse(m_info.reverse);
    m_markup->SetFlipHorizontally(m_info.flipHorizontally);
    if (CreatedFromFile() && IsGiven(m_info.location)) {
        m_markup->SetLocationMat(m_info.location.GetMat());
        m_markup->SetLocationPosition(m_info.location.GetPosition());
    }
}

bool Symbol2D::DetachScene()
{
    // The scene may hold the last handle of the symbol, and what is let go of must not end under the lock.
    const du::SmartPtr<Symbol2D> self(GetReferenceCount() > 0 ? this : nullptr);
    du::SmartPtr<luk::Scene> scene;
    du::SmartPtr<luk::AsyncEvent> pendingEvent;
    du::SmartPtr<luk::AsyncEvent> waiting;
    const dp::WriteLockGuard lock(GetLock());
    if (m_markup) {
        m_markup->SetController(nullptr);
    }
    std::swap(scene, m_scene);
    if (scene && m_markup) {
        scene->RemoveMarkup(m_markup);
    }
    ReleaseTemplate();
    std::swap(pendingEvent, m_pendingEvent);
    std::swap(waiting, m_templateLoad.waiting);
    return luk::Annotation::DetachScene();
}

void Symbol2D::SetEvent(du::SmartPtr<luk::AsyncEvent> event) { m_pendingEvent = event; }

void Symbol2D::CreateAnnotation2D(const du::SmartPtr<luk::Scene>& scene)
{
    const du::SmartPtr<Scene2D> page = du::DynamicCast<Scene2D>(scene);
    if (!page || !IsVisible() || !m_info.isBillboard3D) {
        return;
    }
    const du::SmartPtr<luk::illustration2d::Kernel2D> kernel = luk::illustration2d::Kernel2D::GetSingleton();
    const du::SmartPtr<luk::illustration2d::BaseKernelFactory> factory =
        kernel ? kernel->GetFactory(luk::illustration2d::Kernel2D::BASE_KERNEL_FACTORY) : nullptr;
    const du::SmartPtr<luk::illustration2d::Stamp2D> element = factory ? factory->CreateStamp2D() : nullptr;
    if (!element) {
        return;
    }
    const du::SmartPtr<luk::illustration2d::Document2D>& document = page->GetDocument();
    document->AppendNode(element);
    element->SetMinorZOrder(kStampMinorZOrder);
    element->SetLayer(document->GetCurrentLayer());
    element->SetIDPath(GetIDPath());
    element->SetDerivedFromSymbol(true);
    element->SetFlipVertically(m_info.reverse);
    element->SetFlipHorizontally(m_info.flipHorizontally);
    m_stamp2D = element;
    UpdateStamp2DTexts();
    // The picture may have been there before the page was made.
    if (m_info.image->GetImageData()) {
        UpdateStamp2DPicture(m_info.image);
        UpdateStamp2DExtents();
    }
}

void Symbol2D::CompleteAnnotation2D(const du::SmartPtr<luk::Scene>& scene, const du::SmartPtr<luk::AsyncEvent>& event)
{
    luk::Annotation::CompleteAnnotation2D(scene, event);
}

void Symbol2D::UpdateStamp2DTexts()
{
    if (m_stamp2D) {
        m_stamp2D->SetDescription(GetDescription());
        m_stamp2D->SetTitle(GetTitle());
        m_stamp2D->SetUseDescription(m_info.showTooltipDescription);
        m_stamp2D->SetUseTitle(m_info.showTooltipTitle);
    }
}

void Symbol2D::UpdateStamp2DPicture(const du::SmartPtr<luk::Image>& image)
{
    if (m_stamp2D) {
        m_stamp2D->SetImage(image);
        m_stamp2D->SetImageFileName(m_info.imageFileName);
    }
}

void Symbol2D::UpdateStamp2DExtents()
{
    if (m_stamp2D) {
        const dg::DPoint3D& center = m_info.center;
        const double width = m_info.width;
        const double height = m_info.height;
        m_stamp2D->SetExtents(dg::DBox2D({center.x - width, center.y - height}, {center.x + width, center.y + height}));
    }
}

void Symbol2D::NotifySymbolChanged()
{
    if (m_scene && m_scene->GetAnnoSet()) {
        // Observers may close the scene while its set is at work.
        const du::SmartPtr<luk::AnnoSet> set = m_scene->GetAnnoSet();
        set->AnnotationModified(du::SmartPtr<luk::Annotation>(this), true);
    }
}

void Symbol2D::SetDirty()
{
    if (const du::SmartPtr<luk::View> view = m_scene ? m_scene->GetView(0) : nullptr) {
        view->SetDirty(true);
    }
}

} // namespace luannotations
