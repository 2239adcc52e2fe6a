#include "annotations3d/SymbolAnnotation.h"

#include "annotations3d/SymbolAnnotationEvents.h"

#include <dp/ReadLockGuard.h>
#include <dp/WriteLockGuard.h>
#include <luannotations/ConstStrings.h>
#include <lug/Appearance.h>
#include <luk/AnnoSet.h>
#include <luk/ComponentInstance.h>
#include <luk/illustration/SymbolTemplate.h>
#include <luk/InstanceInterest.h>
#include <luk/Scene.h>
#include <luk/ShapeInstance.h>
#include <luk/View.h>

namespace luannotations
{

SymbolAnnotation::SymbolAnnotation() : m_interest(du::MakeCounted<luk::InstanceInterest>())
{
    SetClass(ConstStrings::luSymbol3D);
}

// What belongs to the original alone stays with it: its observers, its events, its lock, its interest and the right to
// remove the node.
SymbolAnnotation::SymbolAnnotation(const SymbolAnnotation& other)
    : du::RefCounted(other), SymbolAnnotationBase(other), m_symbolLoaded(other.m_symbolLoaded),
      m_shapeInstance(other.m_shapeInstance), m_legacy(other.m_legacy),
      m_hasAppearanceOverride(other.m_hasAppearanceOverride), m_hasColorOverride(other.m_hasColorOverride),
      m_overrideAppearance(other.m_overrideAppearance), m_overrideTransparency(other.m_overrideTransparency),
      m_symbolScale(other.m_symbolScale), m_location(other.m_location), m_recordOrientation(other.m_recordOrientation),
      m_recordScale(other.m_recordScale), m_initLocation(other.m_initLocation), m_selectedCsys(other.m_selectedCsys),
      m_partCsys(other.m_partCsys), m_tempDir(other.m_tempDir), m_axisId(other.m_axisId),
      m_distanceFromCsys(other.m_distanceFromCsys), m_isAnnotationSymbol(other.m_isAnnotationSymbol),
      m_useCurrentOrientation(other.m_useCurrentOrientation), m_connectedParts(other.m_connectedParts),
      m_cameraPreviewLocation(other.m_cameraPreviewLocation), m_sequencerTags(other.m_sequencerTags),
      m_templateId(other.m_templateId), m_hasTemplate(other.m_hasTemplate),
      m_needToCheckForTemplateUpdate(other.m_needToCheckForTemplateUpdate), m_templateHolder(other.m_templateHolder),
      m_interest(du::MakeCounted<luk::InstanceInterest>()), m_partIndex(other.m_partIndex),
      m_nodeIsForeign(other.m_nodeIsForeign)
{
}

SymbolAnnotation::~SymbolAnnotation()
{
    DropSceneObserver();
    ReleaseTemplate();
    DeleteTempDir();
}

du::SmartPtr<luk::Annotation> SymbolAnnotation::Clone()
{
    const dp::ReadLockGuard lock(GetLock());
    return du::SmartPtr<luk::Annotation>(new SymbolAnnotation(*this));
}

bool SymbolAnnotation::CanAnimate(du::SmartPtr<luk::OperationStep>) { return true; }

bool SymbolAnnotation::IsVisible() const
{
    const dp::ReadLockGuard lock(GetLock());
    return m_shapeInstance && m_shapeInstance->IsVisible() && luk::Annotation::IsVisible();
}

du::SmartPtr<luk::ShapeInstance> SymbolAnnotation::GetShapeInstance() { return m_shapeInstance; }

void SymbolAnnotation::AdditionalInit() { UpdateOffsetWithConnectedParts(); }

void SymbolAnnotation::SetEvent(du::SmartPtr<luk::AsyncEvent> event) { m_pendingEvent = std::move(event); }

void SymbolAnnotation::GetConnectedPartInfo(std::vector<ConnectedPartInfo>& parts)
{
    UpdateOffsetWithConnectedParts();
    parts = m_connectedParts;
}

void SymbolAnnotation::HideAnnotation()
{
    if (m_shapeInstance && !m_nodeIsForeign && m_shapeInstance->IsVisible()) {
        m_shapeInstance->SetVisibility(false);
    }
}

void SymbolAnnotation::OnSetSelected(bool selected, const du::SmartPtr<luk::View>&)
{
    if (m_shapeInstance && !m_nodeIsForeign) {
        m_shapeInstance->SetSelected(selected);
    }
}

bool SymbolAnnotation::HasContent() const { return m_shapeInstance != nullptr; }

void SymbolAnnotation::SetSymbolInfo(const SymbolInfo& info)
{
    const dp::WriteLockGuard lock(GetLock());
    _SetSymbolInfo(info);
    m_location.Set(info.locPosition, info.locOrientation, info.locScale);
    m_recordOrientation = info.locOrientation;
    m_recordScale = info.locScale;
    m_legacy = true;
    m_partCsys = info.hasSymbolCsysLocation ? info.symbolCsysLocation : dg::Location::IDENTITY;
    m_initLocation = info.hasSymbolInitLocation ? info.symbolInitLocation : dg::Location::IDENTITY;
    m_sequencerTags = info.sequencerTags;
    m_isAnnotationSymbol = info.isAnnotationSymbol;
    AddConnectedPartsByPath(info.connectedParts);
    m_hasAppearanceOverride = info.hasAppearanceOverride;
    if (info.hasAppearanceOverride) {
        m_overrideAppearance = du::MakeCounted<lug::Appearance>(
            lug::Material(info.ambient, info.diffuse, info.emissive, info.specular, info.shininess));
    }
    m_appearanceIsDue = true;
    AssignTemplate(info.templateIndex);
}

void SymbolAnnotation::NotifySymbolChanged()
{
    const du::SmartPtr<luk::Scene> scene = GetScene();
    // Whoever is told may close the scene while its set is at work.
    if (const du::SmartPtr<luk::AnnoSet> set = scene ? scene->GetAnnoSet() : nullptr) {
        set->AnnotationModified(du::SmartPtr<luk::Annotation>(this), true);
    }
}

void SymbolAnnotation::SetDirty()
{
    const du::SmartPtr<luk::Scene> scene = GetScene();
    if (const du::SmartPtr<luk::View> view = scene ? scene->GetView(0) : nullptr) {
        view->SetDirty(true);
    }
}

void SymbolAnnotation::OnShapeInstanceRemove(const du::SmartPtr<luk::ShapeInstance>& instance)
{
    // Leaving the set detaches the annotation, which takes the write lock, and may be its end.
    const du::SmartPtr<luk::Annotation> self(this);
    luk::AnnoSet* set = nullptr;
    {
        const dp::ReadLockGuard lock(GetLock());
        set = instance && instance.get() == m_shapeInstance.get() ? GetAnnoSet() : nullptr;
    }
    if (set) {
        set->RemoveAnnotationFromSet(self);
    }
}

void SymbolAnnotation::OnShapeInstancesAppearanceModified()
{
    const du::SmartPtr<luk::ShapeInstance> instance = m_shapeInstance;
    if (!instance || m_nodeIsForeign) {
        return;
    }
    const bool isShown = luk::Annotation::IsVisible();
    if (instance->IsVisible() && !isShown) {
        Show(true, nullptr);
    } else if (!instance->IsVisible() && isShown) {
        Hide(true, nullptr, 0);
    }
}

} // namespace luannotations
