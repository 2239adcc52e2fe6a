#include "annotations3d/SymbolAnnotationEvents.h"

#include <luk/illustration/AssociativeObject.h>
#include <luk/ShapeScene.h>

#include <utility>

namespace luannotations
{

SymbolAnnotation::MyLoadEvent::MyLoadEvent(const du::SmartPtr<SymbolAnnotation>& symbol) : m_symbol(symbol) {}

// Dropped without having been completed, as when the loader stops.
SymbolAnnotation::MyLoadEvent::~MyLoadEvent()
{
    if (m_symbol && m_symbol->m_loadEvent == this) {
        m_symbol->m_loadEvent = nullptr;
    }
}

du::Symbol SymbolAnnotation::MyLoadEvent::GetObjectClass() const
{
    static const du::Symbol s_class("luannotations::MyLoadEvent");
    return s_class;
}

void SymbolAnnotation::MyLoadEvent::OnCompleted(int status)
{
    const du::SmartPtr<SymbolAnnotation> symbol = std::exchange(m_symbol, nullptr);
    if (symbol && !m_cancelled) {
        symbol->m_loadEvent = nullptr;
        symbol->OnShapeLoaded(status == kExpectedStatus);
    }
}

SymbolAnnotation::LoadingConnectPartEvent::LoadingConnectPartEvent(const du::SmartPtr<SymbolAnnotation>& symbol,
                                                                   const du::SmartPtr<luk::ShapeInstance>& part,
                                                                   bool mode, bool second, const dg::Location& location)
    : m_symbol(symbol), m_part(part), m_mode(mode), m_second(second), m_location(location)
{
}

SymbolAnnotation::LoadingConnectPartEvent::~LoadingConnectPartEvent() = default;

du::Symbol SymbolAnnotation::LoadingConnectPartEvent::GetObjectClass() const
{
    static const du::Symbol s_class("luannotations::LoadingConnectPartEvent");
    return s_class;
}

void SymbolAnnotation::LoadingConnectPartEvent::OnCompleted(int)
{
    const du::SmartPtr<SymbolAnnotation> symbol = std::exchange(m_symbol, nullptr);
    if (!symbol) {
        return;
    }
    // A symbol that was detached meanwhile has no shape instance, and each of these then does nothing.
    if (!m_mode) {
        symbol->UpdateOffsetsSoon();
    } else if (m_second) {
        symbol->UpdateSymbolLocationByOffset(m_part, m_location);
    } else {
        symbol->ApplyDeltaByConnectedPart(m_part);
    }
}

SymbolAnnotation::ShapeSceneObserver::~ShapeSceneObserver() = default;

du::Symbol SymbolAnnotation::ShapeSceneObserver::GetObjectClass() const
{
    static const du::Symbol s_class("luannotations::ShapeSceneObserver");
    return s_class;
}

void SymbolAnnotation::ShapeSceneObserver::LeaveScene()
{
    m_symbol = nullptr;
    if (luk::ShapeScene* const scene = std::exchange(m_scene, nullptr)) {
        scene->UnregisterObserver(this);
    }
}

void SymbolAnnotation::ShapeSceneObserver::OnDetached()
{
    m_symbol = nullptr;
    m_scene = nullptr;
}

void SymbolAnnotation::ShapeSceneObserver::OnEndUpdate()
{
    // Showing or hiding the annotation opens a batch of its own, whose end comes back here before the mark is cleared.
    if (!m_symbol || !m_appearanceModified || m_isEnding) {
        return;
    }
    const du::SmartPtr<SymbolAnnotation> symbol(m_symbol);
    m_isEnding = true;
    symbol->OnShapeInstancesAppearanceModified();
    m_appearanceModified = false;
    m_isEnding = false;
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceCreate(const du::SmartPtr<luk::ShapeInstance>& instance)
{
    const du::SmartPtr<luk::ShapeInstance> follower = FollowerOf(instance);
    if (!follower) {
        return;
    }
    const du::SmartPtr<SymbolAnnotation> symbol(m_symbol);
    follower->SetVisibility(instance->IsVisible(), false);
    symbol->m_triedParts.erase(symbol->GetConnectedPartEntry(instance)->partId);
    symbol->OnShapeInstanceCreate(instance, true, false, dg::Location());
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceRemove(const du::SmartPtr<luk::ShapeInstance>& instance)
{
    if (m_symbol) {
        const du::SmartPtr<SymbolAnnotation> symbol(m_symbol);
        symbol->OnShapeInstanceRemove(instance);
    }
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceVisibilityChanged(
    const du::SmartPtr<luk::ShapeInstance>& instance, bool visible)
{
    MarkAppearanceChange(instance);
    const du::SmartPtr<luk::ShapeInstance> follower = FollowerOf(instance);
    if (follower && !(visible && IsAnnotationHidden())) {
        // Silently: a notification would hide the annotation itself, which could then not be shown with the part again.
        follower->SetVisibility(visible, false);
    }
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceVisibilityFractionChanged(
    const du::SmartPtr<luk::ShapeInstance>& instance, float fraction)
{
    MarkAppearanceChange(instance);
    const du::SmartPtr<luk::ShapeInstance> follower = FollowerOf(instance);
    const bool isFadedOut = fraction == 0.0F;
    if (follower && (isFadedOut || !IsAnnotationHidden())) {
        follower->SetVisibilityFraction(fraction, false);
    }
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceLocationChanged(
    const du::SmartPtr<luk::ShapeInstance>& instance)
{
    if (FollowerOf(instance)) {
        const du::SmartPtr<SymbolAnnotation> symbol(m_symbol);
        symbol->ApplyDeltaByConnectedPart(instance);
    }
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceColorChanged(const du::SmartPtr<luk::ShapeInstance>& instance)
{
    MarkAppearanceChange(instance);
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceTransparencyChanged(
    const du::SmartPtr<luk::ShapeInstance>& instance)
{
    MarkAppearanceChange(instance);
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceAppearanceChanged(
    const du::SmartPtr<luk::ShapeInstance>& instance)
{
    MarkAppearanceChange(instance);
}

void SymbolAnnotation::ShapeSceneObserver::OnShapeInstanceSelectionChanged(
    const du::SmartPtr<luk::ShapeInstance>& instance)
{
    MarkAppearanceChange(instance);
}

void SymbolAnnotation::ShapeSceneObserver::MarkAppearanceChange(const du::SmartPtr<luk::ShapeInstance>& instance)
{
    if (m_symbol && instance && instance.get() == m_symbol->m_shapeInstance.get()) {
        m_appearanceModified = true;
    }
}

du::SmartPtr<luk::ShapeInstance>
SymbolAnnotation::ShapeSceneObserver::FollowerOf(const du::SmartPtr<luk::ShapeInstance>& part) const
{
    const bool isFollowed = m_symbol && !m_symbol->m_nodeIsForeign && part.get() != m_symbol->m_shapeInstance.get() &&
                            m_symbol->isConnectedPart(part);
    return isFollowed ? m_symbol->m_shapeInstance : nullptr;
}

bool SymbolAnnotation::ShapeSceneObserver::IsAnnotationHidden() const
{
    return !m_symbol->luk::Annotation::IsVisible();
}

SymbolAnnotation::SymbolTemplateObserver::~SymbolTemplateObserver() = default;

void SymbolAnnotation::SymbolTemplateObserver::OnDetached() { m_symbol = nullptr; }

void SymbolAnnotation::SymbolTemplateObserver::OnAssociativeObjectChanged(
    const du::SmartPtr<luk::illustration::AssociativeObject>& object)
{
    // By the id, since a reload may have replaced the entry. Without an object any entry may have changed.
    if (m_symbol && (!object || object->GetId() == m_symbol->m_templateId)) {
        const du::SmartPtr<SymbolAnnotation> symbol(m_symbol);
        symbol->CheckForTemplateUpdate(nullptr);
    }
}

} // namespace luannotations
