#pragma once

#include <du/SmartPtr.h>
#include <luk/Observer.h>

namespace luk
{

class ShapeInstance;

/// Observer of a shape scene. The base operations do nothing.
///
/// Threads: called on the host thread with no lock of the scene held. Notifications come in batches: OnBeginUpdate before
/// the first one that reaches the observer, OnEndUpdate after the last.
class LUHOST_API ShapeSceneObserver : public Observer
{
public:
    ShapeSceneObserver();
    ~ShapeSceneObserver() override;

    virtual void OnBeginUpdate();
    virtual void OnEndUpdate();
    virtual void OnSequenceChanged();
    virtual void OnShapeInstanceCreate(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceRemove(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceSourceReplace(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceVisibilityChanged(const du::SmartPtr<ShapeInstance>& instance, bool visible);
    virtual void OnShapeInstanceVisibilityFractionChanged(const du::SmartPtr<ShapeInstance>& instance, float fraction);
    virtual void OnShapeInstanceHighlight(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceLocationChanged(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceDragStart(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceColorChanged(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceViewStateChanged(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceTransparencyChanged(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceAppearanceChanged(const du::SmartPtr<ShapeInstance>& instance);
    virtual void OnShapeInstanceSelectionChanged(const du::SmartPtr<ShapeInstance>& instance);
};

} // namespace luk
