#include <luk/ShapeInstance.h>
#include <luk/ShapeSceneObserver.h>

namespace luk
{

ShapeSceneObserver::ShapeSceneObserver() = default;
ShapeSceneObserver::~ShapeSceneObserver() = default;

void ShapeSceneObserver::OnBeginUpdate() {}
void ShapeSceneObserver::OnEndUpdate() {}
void ShapeSceneObserver::OnSequenceChanged() {}
void ShapeSceneObserver::OnShapeInstanceCreate(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceRemove(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceSourceReplace(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceVisibilityChanged(const du::SmartPtr<ShapeInstance>&, bool) {}
void ShapeSceneObserver::OnShapeInstanceVisibilityFractionChanged(const du::SmartPtr<ShapeInstance>&, float) {}
void ShapeSceneObserver::OnShapeInstanceHighlight(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceLocationChanged(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceDragStart(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceColorChanged(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceViewStateChanged(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceTransparencyChanged(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceAppearanceChanged(const du::SmartPtr<ShapeInstance>&) {}
void ShapeSceneObserver::OnShapeInstanceSelectionChanged(const du::SmartPtr<ShapeInstance>&) {}

} // namespace luk
