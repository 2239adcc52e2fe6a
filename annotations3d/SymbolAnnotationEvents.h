#pragma once

#include "annotations3d/SymbolAnnotation.h"

#include <luk/AsyncEvent.h>
#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/ShapeInstance.h>
#include <luk/ShapeSceneObserver.h>

namespace luannotations
{

/// The symbol's own shape is being loaded. A symbol that is detached meanwhile cancels it.
class LUSYMBOLS_LOCAL SymbolAnnotation::MyLoadEvent : public luk::AsyncEvent
{
public:
    explicit MyLoadEvent(const du::SmartPtr<SymbolAnnotation>& symbol);
    ~MyLoadEvent() override;

    du::Symbol GetObjectClass() const override;
    void OnCompleted(int status) override;
    void Cancel() noexcept { m_cancelled = true; }

private:
    static constexpr int kExpectedStatus = 0;

    du::SmartPtr<SymbolAnnotation> m_symbol;
    bool m_cancelled = false;
};

/// The shape of a connected part is being loaded; the symbol follows up afterwards.
class LUSYMBOLS_LOCAL SymbolAnnotation::LoadingConnectPartEvent : public luk::AsyncEvent
{
public:
    LoadingConnectPartEvent(const du::SmartPtr<SymbolAnnotation>& symbol, const du::SmartPtr<luk::ShapeInstance>& part,
                            bool mode, bool second, const dg::Location& location);
    ~LoadingConnectPartEvent() override;

    du::Symbol GetObjectClass() const override;
    void OnCompleted(int status) override;

private:
    du::SmartPtr<SymbolAnnotation> m_symbol;
    du::SmartPtr<luk::ShapeInstance> m_part;
    bool m_mode;
    bool m_second;
    dg::Location m_location;
};

/// Tells a symbol what happens in its scene. Its way back is cleared when the symbol lets go of it.
class LUSYMBOLS_LOCAL SymbolAnnotation::ShapeSceneObserver : public luk::ShapeSceneObserver
{
public:
    ShapeSceneObserver(SymbolAnnotation& symbol, luk::ShapeScene& scene) : m_symbol(&symbol), m_scene(&scene) {}
    ~ShapeSceneObserver() override;

    /// The symbol lets go.
    void LeaveScene();

    du::Symbol GetObjectClass() const override;
    void OnDetached() override;
    void OnEndUpdate() override;
    void OnShapeInstanceCreate(const du::SmartPtr<luk::ShapeInstance>& instance) override;
    void OnShapeInstanceRemove(const du::SmartPtr<luk::ShapeInstance>& instance) override;
    void OnShapeInstanceVisibilityChanged(const du::SmartPtr<luk::ShapeInstance>& instance, bool visible) override;
    void OnShapeInstanceVisibilityFractionChanged(const du::SmartPtr<luk::ShapeInstance>& instance,
                                                  float fraction) override;
    void OnShapeInstanceLocationChanged(const du::SmartPtr<luk::ShapeInstance>& instance) override;
    void OnShapeInstanceColorChanged(const du::SmartPtr<luk::ShapeInstance>& instance) override;
    void OnShapeInstanceTransparencyChanged(const du::SmartPtr<luk::ShapeInstance>& instance) override;
    void OnShapeInstanceAppearanceChanged(const du::SmartPtr<luk::ShapeInstance>& instance) override;
    void OnShapeInstanceSelectionChanged(const du::SmartPtr<luk::ShapeInstance>& instance) override;

private:
    void MarkAppearanceChange(const du::SmartPtr<luk::ShapeInstance>& instance);
    /// The symbol's own shape instance, when `part` is one of the parts that the symbol is attached to.
    du::SmartPtr<luk::ShapeInstance> FollowerOf(const du::SmartPtr<luk::ShapeInstance>& part) const;
    bool IsAnnotationHidden() const;

    SymbolAnnotation* m_symbol;
    luk::ShapeScene* m_scene; ///< null once it is gone or has been left
    bool m_appearanceModified = false;
    bool m_isEnding = false;
};

/// Tells a symbol that the library has changed. Its way back is cleared when the symbol lets go of it.
class LUSYMBOLS_LOCAL SymbolAnnotation::SymbolTemplateObserver : public luk::illustration::AssociativeObjectObserver
{
public:
    explicit SymbolTemplateObserver(SymbolAnnotation& symbol) : AssociativeObjectObserver(0), m_symbol(&symbol) {}
    ~SymbolTemplateObserver() override;

    void OnDetached() override;
    void OnAssociativeObjectChanged(const du::SmartPtr<luk::illustration::AssociativeObject>& object) override;

private:
    SymbolAnnotation* m_symbol;
};

} // namespace luannotations
