#include <du/OrderedSet.h>
#include <luk/AnnoSet.h>
#include <luk/Annotation.h>
#include <luk/Scene.h>
#include <luk/View.h>

#include <algorithm>
#include <list>
#include <mutex>
#include <new>

namespace luk
{

namespace
{

/// The scenes of the process that are not closed, without holding them. Scenes that have nothing to do with each other may
/// belong to different threads, hence the lock. Lives until the process ends, since a scene may be the last object of all
/// to go.
class OpenScenes
{
public:
    using Place = std::list<Scene*>::iterator;

    static OpenScenes& Get()
    {
        static auto* const s_openScenes = new OpenScenes;
        return *s_openScenes;
    }

    Place Enter(Scene& scene)
    {
        const std::lock_guard lock(m_mutex);
        return m_scenes.insert(m_scenes.end(), &scene);
    }

    void Leave(Place place)
    {
        const std::lock_guard lock(m_mutex);
        m_scenes.erase(place);
    }

    Scene* GetFirst() const
    {
        const std::lock_guard lock(m_mutex);
        return m_scenes.empty() ? nullptr : m_scenes.front();
    }

private:
    mutable std::mutex m_mutex;
    std::list<Scene*> m_scenes;
};

} // namespace

namespace
{

/// A scene has to be able to close when memory has run out. An annotation that needs some for its leaving does not hold the
/// scene any more at least.
template <class Detach>
void DetachFor(Annotation& annotation, const Detach& detach)
{
    try {
        detach();
    } catch (const std::bad_alloc&) {
        annotation.Annotation::DetachScene();
    }
}

} // namespace

class Scene::Registry : public du::OrderedSet<du::SmartPtr<Annotation>>
{
public:
    explicit Registry(Scene& scene) : m_place(OpenScenes::Get().Enter(scene)) {}

    void LeaveOpenScenes() { OpenScenes::Get().Leave(m_place); }

private:
    OpenScenes::Place m_place;
};

Scene::Scene() : m_annoSet(du::MakeCounted<AnnoSet>()), m_registry(std::make_unique<Registry>(*this)) {}

// Annotations that hold their scene keep it from coming here: those that are left hold none and need no detaching.
Scene::~Scene()
{
    if (!IsClosed()) {
        m_registry->LeaveOpenScenes();
    }
    ForgetRegistered();
}

bool Scene::RegisterAnnotation(const du::SmartPtr<Annotation>& annotation)
{
    if (!annotation || IsClosed()) {
        return false;
    }
    if (m_registry->Add(annotation)) {
        if (annotation->m_registeredWith) {
            annotation->m_registeredWith->UnregisterAnnotation(*annotation);
        }
        annotation->m_registeredWith = this;
        m_modified = m_modified || !annotation->CreatedFromFile();
    }
    return true;
}

bool Scene::UnregisterAnnotation(Annotation& annotation)
{
    const du::SmartPtr<Annotation> taken = m_registry->Take(&annotation);
    if (!taken && annotation.m_registeredWith != this) {
        return false;
    }
    annotation.m_registeredWith = nullptr;
    m_modified = m_modified || !IsClosed();
    return true;
}

std::vector<du::SmartPtr<Annotation>> Scene::GetRegisteredAnnotations() const { return m_registry->GetAll(); }

bool Scene::AddMarkup(const du::SmartPtr<Markup>& markup)
{
    const bool isNew = !HoldsMarkup(markup.get());
    const bool isHeld = AddAnnotationMarkup(markup);
    m_modified = m_modified || (isNew && isHeld);
    return isHeld;
}

bool Scene::AddAnnotationMarkup(const du::SmartPtr<Markup>& markup)
{
    if (!markup || IsClosed()) {
        return false;
    }
    if (HoldMarkup(markup)) {
        MarkViewsDirty();
    }
    return true;
}

void Scene::OnMarkupRemoved()
{
    m_modified = m_modified || !IsClosed();
    MarkViewsDirty();
}

du::SmartPtr<View> Scene::GetView(std::size_t index) const
{
    return index < m_views.size() ? m_views[index] : du::SmartPtr<View>();
}

void Scene::AddView(const du::SmartPtr<View>& view)
{
    if (view && !IsClosed() && std::find(m_views.begin(), m_views.end(), view) == m_views.end()) {
        m_views.push_back(view);
    }
}

void Scene::MarkViewsDirty()
{
    for (const du::SmartPtr<View>& view : m_views) {
        view->SetDirty(true);
    }
}

void Scene::Close()
{
    if (IsClosed()) {
        return;
    }
    const du::SmartPtr<Scene> keptAlive(GetReferenceCount() > 0 ? this : nullptr);
    m_registry->LeaveOpenScenes();
    const du::SmartPtr<AnnoSet> annoSet = std::move(m_annoSet);
    while (const du::SmartPtr<Annotation> member = annoSet->GetFirst()) {
        DetachFor(*member, [&] { annoSet->RemoveAnnotationFromSet(member); });
    }
    DetachRegistered();
    OnClose();
    RemoveAllMarkups();
    const std::vector<du::SmartPtr<View>> views = std::exchange(m_views, {});
}

void Scene::DetachRegistered()
{
    const auto registered = m_registry->TakeAll();
    for (const du::SmartPtr<Annotation>& annotation : registered) {
        if (annotation->m_registeredWith == this) { // one detached before may have taken it along
            DetachFor(*annotation, [&] { annotation->DetachScene(); });
            annotation->m_registeredWith = nullptr;
        }
    }
}

void Scene::ForgetRegistered()
{
    const auto forgotten = m_registry->TakeAll();
    for (const du::SmartPtr<Annotation>& annotation : forgotten) {
        annotation->m_registeredWith = nullptr;
    }
}

void Scene::CloseAll()
{
    while (Scene* const scene = OpenScenes::Get().GetFirst()) {
        scene->Close();
    }
}

} // namespace luk
