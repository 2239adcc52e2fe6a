#include <dg/DMat33.h>
#include <dg/DMat44.h>
#include <dp/ReadLockGuard.h>
#include <dp/WriteLockGuard.h>
#include <luk/Annotation.h>
#include <luk/MarkupShadow.h>
#include <luk/Scene.h>
#include <luk/SerializedContentElement.h>
#include <luk/ShapeInstance.h>

namespace luk
{

namespace
{

std::unique_ptr<SerializedContentElement> CopyOf(const std::unique_ptr<SerializedContentElement>& content)
{
    std::unique_ptr<SerializedContentElement> copy;
    if (content) {
        copy = std::make_unique<SerializedContentElement>(*content);
    }
    return copy;
}

} // namespace

Annotation::Annotation() = default;

Annotation::Annotation(const Annotation& other)
    : du::RefCounted(other), MarkupController(other), Observable(other), m_class(other.m_class),
      m_preselectionCursor(other.m_preselectionCursor), m_objectName(other.m_objectName), m_idPath(other.m_idPath),
      m_unknownContent(CopyOf(other.m_unknownContent)), m_visible(other.m_visible),
      m_createdFromFile(other.m_createdFromFile)
{
}

Annotation& Annotation::operator=(const Annotation& other)
{
    m_class = other.m_class;
    m_preselectionCursor = other.m_preselectionCursor;
    m_objectName = other.m_objectName;
    m_idPath = other.m_idPath;
    m_unknownContent = CopyOf(other.m_unknownContent);
    m_visible = other.m_visible;
    m_createdFromFile = other.m_createdFromFile;
    return *this;
}

Annotation::~Annotation() = default;

du::Symbol Annotation::GetObjectClass() const { return m_class; }

bool Annotation::IsZoomable() const { return false; }

bool Annotation::AllowGroupDrag() const { return false; }

du::SmartPtr<Annotation> Annotation::Clone() { return nullptr; }

bool Annotation::AttachScene(const du::SmartPtr<Scene>& scene)
{
    if (scene && scene->IsClosed()) {
        return false;
    }
    du::SmartPtr<Scene> dropped;
    const dp::WriteLockGuard lock(GetLock());
    if (scene) {
        dropped = std::exchange(m_scene, scene);
    }
    return true;
}

bool Annotation::InitializeFromSerializedContent(const SerializedContentElement* element) { return element != nullptr; }

bool Annotation::InitializeFromSerializedContent(const SerializedContentElement* element,
                                                 du::SmartPtr<AnnoIdPathMapper>)
{
    return InitializeFromSerializedContent(element);
}

bool Annotation::DetachScene()
{
    // The scene may be the last to hold the annotation, whose end has to come after the lock's release. At the end of the
    // annotation itself nobody registers it any more.
    const du::SmartPtr<Annotation> keptAlive(GetReferenceCount() > 0 ? this : nullptr);
    du::SmartPtr<Scene> dropped;
    const dp::WriteLockGuard lock(GetLock());
    std::swap(dropped, m_scene);
    if (m_registeredWith) {
        m_registeredWith->UnregisterAnnotation(*this);
    }
    return true;
}

bool Annotation::CanAnimate(du::SmartPtr<OperationStep>) { return false; }

du::Symbol Annotation::GetIconName() const { return {}; }

bool Annotation::IsVisible() const
{
    const dp::ReadLockGuard lock(GetLock());
    return m_visible;
}

std::string Annotation::GetObjectDescription() const { return m_objectName.GetText(); }

dg::DBox Annotation::GetBBox() const { return dg::DBox::EMPTY; }

Annotation::ManipulationType Annotation::GetManipulationTypes() const { return MANIPULATION_NONE; }

bool Annotation::MarkupUpdated(const du::SmartPtr<Markup>&, const du::SmartPtr<MarkupShadow>&,
                               const du::SmartPtr<Operation>&)
{
    return true;
}

bool Annotation::Flatten(SerializedContentElement&, const FlattenMatrices&, const InstanceCheck&, const dg::Pipeline&)
{
    return false;
}

void Annotation::CreateAnnotation2D(const du::SmartPtr<Scene>&) {}

void Annotation::CompleteAnnotation2D(const du::SmartPtr<Scene>&, const du::SmartPtr<AsyncEvent>&) {}

du::SmartPtr<ShapeInstance> Annotation::GetShapeInstance() { return nullptr; }

void Annotation::AdditionalInit() {}

void Annotation::SetEvent(du::SmartPtr<AsyncEvent>) {}

void Annotation::SetCsysPos(dg::DPoint3D&, bool) {}

void Annotation::GetConnectedPartInfo(std::vector<luannotations::ConnectedPartInfo>&) {}

void Annotation::UpdateAnnotationLocation(const dg::Location&) {}

void Annotation::HideAnnotation() {}

void Annotation::ShowAnnotation() {}

void Annotation::OnSetSelected(bool, const du::SmartPtr<View>&) {}

void Annotation::OnViewActivated() {}

void Annotation::OnViewDeactivated() {}

int Annotation::GetPageNum() const { return 0; }

void Annotation::SetPageNum(int) {}

unsigned int Annotation::NumberOfMarkups() const { return 0; }

std::string Annotation::GetMarkupName(unsigned int) const { return {}; }

dg::FVec3 Annotation::GetMarkupSize(unsigned int) const { return {}; }

void Annotation::SetMarkupSize(unsigned int, const dg::FVec3&) {}

dg::Location Annotation::GetMarkupLocation(unsigned int) const { return {}; }

void Annotation::SetMarkupLocation(unsigned int, const dg::Location&) {}

du::SmartPtr<MarkupShadow> Annotation::GetMarkupShadow(unsigned int) { return nullptr; }

dg::DBox2D Annotation::GetMarkupPixelBBox(const dg::Pipeline&, const lucontext::Context2D&, int) const { return {}; }

bool Annotation::HasContent() const { return true; }

void Annotation::Show(bool notify, const du::SmartPtr<View>&)
{
    const bool changed = SetOwnVisibility(true);
    ShowAnnotation();
    if (changed && notify) {
        PostObservableEvent(EVENT_VISIBILITY_CHANGED);
    }
}

void Annotation::Hide(bool notify, const du::SmartPtr<View>&, int)
{
    const bool changed = SetOwnVisibility(false);
    HideAnnotation();
    if (changed && notify) {
        PostObservableEvent(EVENT_VISIBILITY_CHANGED);
    }
}

bool Annotation::SetOwnVisibility(bool visible)
{
    const dp::WriteLockGuard lock(GetLock());
    return std::exchange(m_visible, visible) != visible;
}

void Annotation::SetSelected(bool selected, const du::SmartPtr<View>& view)
{
    m_selected = selected;
    OnSetSelected(selected, view);
}

du::SmartPtr<Scene> Annotation::GetScene() const
{
    const dp::ReadLockGuard lock(GetLock());
    return m_scene;
}

} // namespace luk
