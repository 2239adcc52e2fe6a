#include <du/PlaceMap.h>
#include <luk/ComponentNode.h>
#include <luk/SameValue.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>
#include <luk/ShapeSceneObservers.h>
#include <luk/View.h>

#include <utility>
#include <vector>

namespace luk
{

/// The shape instances, each kept in step with its instance of the tree. One that was unloaded leaves another in its place,
/// which is no part of the scene but remembers where it stands, so that what is below it keeps its frame.
class ShapeScene::Content final : public Tree::Listener
{
public:
    explicit Content(ShapeScene& scene);

    /// The shape instance or what an unloaded one has left.
    ShapeInstance* Find(const Instance* instance) const;
    /// Null for one that is unloaded.
    ShapeInstance* FindPart(const Instance* instance) const;
    std::size_t GetPartCount() const noexcept { return m_partCount; }

    dg::Location LocationOf(const Instance& instance) const;

    void Move(ShapeInstance& part, const dg::Location& location, bool notify);
    void Show(ShapeInstance& part, bool shown, bool notify);
    void Unload(const du::SmartPtr<ShapeInstance>& part);
    void Load(const du::SmartPtr<ShapeInstance>& part);
    void FetchShape(ShapeInstance& part) const;

    void TellChanged(const du::SmartPtr<ShapeInstance>& part, const TellPart& tell);
    void MarkViewsDirty() { m_scene.MarkViewsDirty(); }
    void Close();

    void OnBeginChange() override;
    void OnEndChange() override;
    void OnInstanceAdded(Instance& instance) override;
    void OnInstanceRemoved(Instance& instance) override;
    void OnInstanceMoved(Instance& instance) override;

    ShapeSceneObservers observers;

private:
    static Instance* GetNext(Instance& instance, const Instance& top, bool withChildren);

    du::SmartPtr<ShapeInstance> Make(Instance& instance);
    void Retire(const du::SmartPtr<ShapeInstance>& part);
    dg::Location LocationFromAbove(const Instance& instance) const;
    bool IsVisibleFromAbove(const Instance& instance) const;

    template <class Follow>
    void Finish(ShapeInstance& top, bool notify, const Follow& follow, const TellPart& tell);

    ShapeScene& m_scene;
    du::PlaceMap<const Instance*, du::SmartPtr<ShapeInstance>> m_parts;
    std::size_t m_partCount = 0; ///< without the unloaded ones
    int m_openChanges = 0;
};

ShapeScene::Content::Content(ShapeScene& scene) : m_scene(scene)
{
    if (!scene.m_tree) {
        return;
    }
    scene.m_tree->AddListener(this);
    m_parts.Reserve(scene.m_tree->GetInstanceCount() + 1);
    Instance* const root = scene.m_tree->GetRoot().get();
    for (Instance* at = root; at; at = GetNext(*at, *root, true)) {
        Make(*at);
    }
}

ShapeInstance* ShapeScene::Content::Find(const Instance* instance) const
{
    const du::SmartPtr<ShapeInstance>* const found = m_parts.Find(instance);
    return found ? found->get() : nullptr;
}

ShapeInstance* ShapeScene::Content::FindPart(const Instance* instance) const
{
    ShapeInstance* const part = Find(instance);
    return part && part->m_isPart ? part : nullptr;
}

/// By the first one on the way up that has a shape instance, which is itself but for moments within a change.
dg::Location ShapeScene::Content::LocationOf(const Instance& instance) const
{
    std::vector<const Instance*> fromBelow;
    const Instance* at = &instance;
    const ShapeInstance* part = Find(at);
    while (at && !part) {
        fromBelow.push_back(at);
        at = at->m_parent;
        part = Find(at);
    }
    dg::Location location = part ? part->m_location : dg::Location::IDENTITY;
    for (auto below = fromBelow.rbegin(); below != fromBelow.rend(); ++below) {
        if (const auto& use = (*below)->m_componentInstance) {
            location = location * use->GetLocation();
        }
    }
    return location;
}

dg::Location ShapeScene::Content::LocationFromAbove(const Instance& instance) const
{
    return instance.m_parent ? LocationOf(*instance.m_parent) * instance.m_componentInstance->GetLocation()
                             : dg::Location::IDENTITY;
}

bool ShapeScene::Content::IsVisibleFromAbove(const Instance& instance) const
{
    const ShapeInstance* above = nullptr;
    for (const Instance* at = instance.m_parent; at && !above; at = at->m_parent) {
        above = Find(at);
    }
    return !above || above->m_visible;
}

/// The one after an instance at or below the top, parents first.
Instance* ShapeScene::Content::GetNext(Instance& instance, const Instance& top, bool withChildren)
{
    if (withChildren && instance.m_firstChild) {
        return instance.m_firstChild;
    }
    Instance* at = &instance;
    while (at != &top && !at->m_next) {
        at = at->m_parent;
    }
    return at == &top ? nullptr : at->m_next;
}

/// Carries a change of the top down as far as it reaches, and then tells of all that have changed.
/// @param follow brings one below into line; false when nothing changed by that, nor does below it
template <class Follow>
void ShapeScene::Content::Finish(ShapeInstance& top, bool notify, const Follow& follow, const TellPart& tell)
{
    const bool wanted = notify && !observers.IsEmpty();
    const du::SmartPtr<ShapeInstance> keptAlive(&top);
    std::vector<du::SmartPtr<ShapeInstance>> changedBelow;
    Instance& topInstance = *top.m_instance;
    bool reached = true;
    for (Instance* at = GetNext(topInstance, topInstance, true); at; at = GetNext(*at, topInstance, reached)) {
        ShapeInstance* const part = Find(at);
        reached = !part || follow(*part);
        if (wanted && reached && part && part->m_isPart) {
            changedBelow.emplace_back(part);
        }
    }
    MarkViewsDirty();
    if (wanted) {
        const UpdateBatch batch(m_scene);
        TellChanged(keptAlive, tell);
        for (const du::SmartPtr<ShapeInstance>& part : changedBelow) {
            TellChanged(part, tell);
        }
    }
}

void ShapeScene::Content::Move(ShapeInstance& part, const dg::Location& location, bool notify)
{
    const auto moveTo = [](ShapeInstance& moved, const dg::Location& target) {
        return !IsSame(std::exchange(moved.m_location, target), target);
    };
    if (!moveTo(part, location)) {
        return;
    }
    Finish(
        part, notify,
        [&](ShapeInstance& below) { return !below.m_placed && moveTo(below, LocationFromAbove(*below.m_instance)); },
        [](ShapeSceneObserver& observer, const du::SmartPtr<ShapeInstance>& changed) {
            observer.OnShapeInstanceLocationChanged(changed);
        });
}

void ShapeScene::Content::Show(ShapeInstance& part, bool shown, bool notify)
{
    const auto update = [this](ShapeInstance& updated) {
        const bool visible = updated.m_shown && IsVisibleFromAbove(*updated.m_instance);
        return std::exchange(updated.m_visible, visible) != visible;
    };
    part.m_shown = shown;
    if (!update(part)) {
        return;
    }
    Finish(part, notify, update, [](ShapeSceneObserver& observer, const du::SmartPtr<ShapeInstance>& changed) {
        observer.OnShapeInstanceVisibilityChanged(changed, changed->IsVisible());
    });
}

void ShapeScene::Content::TellChanged(const du::SmartPtr<ShapeInstance>& part, const TellPart& tell)
{
    if (!observers.Reach(*part->m_instance)) {
        return;
    }
    const UpdateBatch batch(m_scene);
    observers.Tell(
        *part->m_instance, [&part] { return part->m_isPart; },
        [&](ShapeSceneObserver& observer) { tell(observer, part); });
}

void ShapeScene::Content::FetchShape(ShapeInstance& part) const
{
    const du::SmartPtr<ComponentNode> node = part.m_instance->GetNode();
    part.m_shape = node ? Shape::Get(node->GetShapeSource()) : du::SmartPtr<Shape>();
}

du::SmartPtr<ShapeInstance> ShapeScene::Content::Make(Instance& instance)
{
    du::SmartPtr<ShapeInstance> part(new ShapeInstance(m_scene, du::SmartPtr<Instance>(&instance)));
    FetchShape(*part);
    part->m_location = LocationFromAbove(instance);
    part->m_visible = IsVisibleFromAbove(instance);
    part->m_isPart = true;
    m_parts.TryEmplace(&instance, part);
    ++m_partCount;
    return part;
}

/// Ends a part that is no longer among the scene's, and tells so.
void ShapeScene::Content::Retire(const du::SmartPtr<ShapeInstance>& part)
{
    part->m_isPart = false;
    --m_partCount;
    MarkViewsDirty();
    const UpdateBatch batch(m_scene);
    observers.Tell(
        *part->m_instance, [] { return true; },
        [&part](ShapeSceneObserver& observer) { observer.OnShapeInstanceRemove(part); });
    part->m_scene = nullptr;
}

void ShapeScene::Content::Unload(const du::SmartPtr<ShapeInstance>& part)
{
    const du::SmartPtr<ShapeInstance> left(new ShapeInstance(m_scene, part->m_instance));
    left->TakeOver(*part);
    left->m_scene = nullptr;
    *m_parts.Find(part->m_instance.get()) = left;
    Retire(part);
}

void ShapeScene::Content::Load(const du::SmartPtr<ShapeInstance>& part)
{
    part->m_scene = &m_scene;
    part->m_isPart = true;
    ++m_partCount;
    FetchShape(*part);
    MarkViewsDirty();
    TellChanged(part, [](ShapeSceneObserver& observer, const du::SmartPtr<ShapeInstance>& created) {
        observer.OnShapeInstanceCreate(created);
    });
}

void ShapeScene::Content::Close()
{
    if (m_scene.m_tree) {
        m_scene.m_tree->RemoveListener(this);
    }
    const auto parts = std::exchange(m_parts, {});
    m_partCount = 0;
    parts.ForEach([](const Instance*, const du::SmartPtr<ShapeInstance>& part) {
        part->m_scene = nullptr;
        part->m_isPart = false;
    });
    observers.Close();
}

void ShapeScene::Content::OnBeginChange()
{
    const du::SmartPtr<ShapeScene> keptAlive(&m_scene);
    ++m_openChanges;
    observers.OpenBatch();
}

/// A scene that was made within the change has not been told its begin.
void ShapeScene::Content::OnEndChange()
{
    if (m_openChanges > 0) {
        const du::SmartPtr<ShapeScene> keptAlive(&m_scene);
        --m_openChanges;
        observers.CloseBatch();
    }
}

void ShapeScene::Content::OnInstanceAdded(Instance& instance)
{
    if (!Find(&instance)) {
        const du::SmartPtr<ShapeInstance> part = Make(instance);
        MarkViewsDirty();
        TellChanged(part, [](ShapeSceneObserver& observer, const du::SmartPtr<ShapeInstance>& created) {
            observer.OnShapeInstanceCreate(created);
        });
    }
}

void ShapeScene::Content::OnInstanceRemoved(Instance& instance)
{
    const du::SmartPtr<ShapeInstance> taken = m_parts.Take(&instance);
    if (taken && taken->m_isPart) {
        Retire(taken);
    }
}

void ShapeScene::Content::OnInstanceMoved(Instance& instance)
{
    ShapeInstance* const part = Find(&instance);
    if (part && !part->m_placed) {
        Move(*part, LocationFromAbove(instance), true);
    }
}

ShapeScene::ShapeScene(const du::SmartPtr<Tree>& tree) : m_tree(tree), m_content(std::make_unique<Content>(*this)) {}

ShapeScene::~ShapeScene() { m_content->Close(); }

void ShapeScene::OnClose()
{
    Scene::OnClose();
    m_content->Close();
}

bool ShapeScene::RegisterObserver(const du::SmartPtr<ShapeSceneObserver>& observer,
                                  const du::SmartPtr<InstanceInterest>& interest, bool batched)
{
    return m_content->observers.Register(observer, interest, batched);
}

bool ShapeScene::UnregisterObserver(const ShapeSceneObserver* observer)
{
    return m_content->observers.Unregister(observer);
}

du::SmartPtr<ShapeInstance> ShapeScene::GetShapeInstance(const du::SmartPtr<Instance>& instance) const
{
    return du::SmartPtr<ShapeInstance>(m_content->FindPart(instance.get()));
}

std::size_t ShapeScene::GetShapeInstanceCount() const noexcept { return m_content->GetPartCount(); }

dg::Location ShapeScene::GetInstanceLocation(const du::SmartPtr<Instance>& instance) const
{
    return instance && m_tree && instance->GetTree() == m_tree.get() ? m_content->LocationOf(*instance)
                                                                     : dg::Location();
}

bool ShapeScene::UnloadShapeInstance(const du::SmartPtr<Instance>& instance)
{
    const du::SmartPtr<ShapeInstance> part = GetShapeInstance(instance);
    if (part) {
        m_content->Unload(part);
    }
    return part != nullptr;
}

du::SmartPtr<ShapeInstance> ShapeScene::LoadShapeInstance(const du::SmartPtr<Instance>& instance)
{
    du::SmartPtr<ShapeInstance> part(m_content->Find(instance.get()));
    if (part && !part->m_isPart) {
        m_content->Load(part);
    }
    return part;
}

bool ShapeScene::RecreateShapeInstance(const du::SmartPtr<ShapeInstance>& instance)
{
    if (!instance || instance->m_scene != this || !instance->m_isPart) {
        return false;
    }
    m_content->FetchShape(*instance);
    m_content->MarkViewsDirty();
    return true;
}

bool ShapeScene::ReplaceShapeInstanceShape(const du::SmartPtr<ShapeInstance>& instance,
                                           const du::SmartPtr<Shape>& shape)
{
    if (!instance || instance->m_scene != this || !instance->m_isPart) {
        return false;
    }
    if (!(instance->m_shape == shape)) {
        instance->m_shape = shape;
        Changed(*instance, true, &ShapeSceneObserver::OnShapeInstanceSourceReplace);
    }
    return true;
}

void ShapeScene::SetRoutingEnabled(bool enabled) noexcept { m_content->observers.SetRoutingEnabled(enabled); }

void ShapeScene::Place(ShapeInstance& part, const dg::Location& location, bool notify)
{
    m_content->Move(part, location, notify);
}

void ShapeScene::Show(ShapeInstance& part, bool shown, bool notify) { m_content->Show(part, shown, notify); }

void ShapeScene::Changed(ShapeInstance& part, bool notify, const TellPart& tell)
{
    m_content->MarkViewsDirty();
    if (notify) {
        m_content->TellChanged(du::SmartPtr<ShapeInstance>(&part), tell);
    }
}

ShapeScene::UpdateBatch::UpdateBatch(ShapeScene& scene) : m_scene(&scene) { scene.m_content->observers.OpenBatch(); }

ShapeScene::UpdateBatch::~UpdateBatch() { m_scene->m_content->observers.CloseBatch(); }

} // namespace luk
