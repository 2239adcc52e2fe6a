#include <du/PlaceMap.h>
#include <luk/ComponentNode.h>
#include <luk/Structure.h>
#include <luk/Tree.h>

#include <algorithm>
#include <utility>

namespace luk
{

namespace
{

constexpr auto kNothing = [](Instance&) {};

} // namespace

class Tree::Index
{
public:
    template <class Call>
    void ForEachListener(const Call& call)
    {
        ++m_calling;
        const std::size_t count = m_listeners.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (Listener* const listener = m_listeners[i]) {
                call(*listener);
            }
        }
        if (--m_calling == 0) {
            std::erase(m_listeners, nullptr);
        }
    }

    void Add(Listener* listener)
    {
        if (listener && std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end()) {
            m_listeners.push_back(listener);
        }
    }

    /// Leaves a gap while listeners are being called, so that none is skipped.
    void Remove(const Listener* listener)
    {
        const auto found = std::find(m_listeners.begin(), m_listeners.end(), listener);
        if (listener && found != m_listeners.end()) {
            *found = nullptr;
        }
        if (m_calling == 0) {
            std::erase(m_listeners, nullptr);
        }
    }

    du::PlaceMap<du::Symbol, du::SmartPtr<Instance>> byPath; ///< all but the root

private:
    std::vector<Listener*> m_listeners;
    int m_calling = 0;
};

/// What has been taken out of trees, children first, and whatever a removed instance may still ask for until its removal
/// has been told.
struct Tree::Removal {
    Instances instances;
    Instances parents;
    std::vector<du::SmartPtr<Tree>> trees;
};

Tree::Listener::~Listener() = default;

void Tree::Listener::OnBeginChange() {}

void Tree::Listener::OnEndChange() {}

Tree::Tree(const du::SmartPtr<Structure>& structure) : m_structure(structure), m_index(std::make_unique<Index>())
{
    if (m_structure) {
        m_rootNode = m_structure->GetRoot();
    }
    if (!m_rootNode) {
        return;
    }
    m_root = du::SmartPtr<Instance>(new Instance(*this, nullptr, {}));
    m_rootNode->AddOccurrence(*m_root);
    Instances grown;
    for (ComponentInstance* use = m_rootNode->GetFirstUse(); use; use = use->m_next) {
        Grow(*m_root, *use, grown);
    }
}

Tree::~Tree()
{
    m_index->byPath.ForEach([](const du::Symbol&, const du::SmartPtr<Instance>& instance) {
        CutLinks(*instance);
        Forget(*instance);
    });
    if (m_root) {
        CutLinks(*m_root);
        Forget(*m_root);
    }
}

std::size_t Tree::GetInstanceCount() const noexcept { return m_index->byPath.GetCount(); }

du::SmartPtr<Instance> Tree::FindInstance(const du::Symbol& path) const
{
    const du::SmartPtr<Instance>* const found = m_index->byPath.Find(path);
    return found ? *found : nullptr;
}

void Tree::AddListener(Listener* listener) { m_index->Add(listener); }

void Tree::RemoveListener(Listener* listener) { m_index->Remove(listener); }

Instance& Tree::Insert(Instance& parent, ComponentInstance& use)
{
    const du::SmartPtr<Instance> made(new Instance(*this, &parent, du::SmartPtr<ComponentInstance>(&use)));
    m_index->byPath.TryEmplace(made->m_idPath, made);
    made->m_previous = parent.m_lastChild;
    (parent.m_lastChild ? parent.m_lastChild->m_next : parent.m_firstChild) = made.get();
    parent.m_lastChild = made.get();
    use.m_node->AddOccurrence(*made);
    return *made;
}

void Tree::Grow(Instance& parent, ComponentInstance& use, Instances& grown)
{
    struct Step {
        Instance* parent;
        ComponentInstance* use;
    };
    std::vector<Step> due;
    const auto insert = [&](const Step& step) {
        Instance& made = Insert(*step.parent, *step.use);
        grown.emplace_back(&made);
        for (ComponentInstance* below = step.use->m_node->GetLastUse(); below; below = below->m_previous) {
            due.push_back({&made, below});
        }
    };
    insert({&parent, &use});
    while (!due.empty()) {
        const Step step = due.back();
        due.pop_back();
        insert(step);
    }
}

void Tree::Cut(Instance& top, Removal& removal)
{
    removal.trees.emplace_back(this);
    removal.parents.emplace_back(top.m_parent);
    const std::size_t first = removal.instances.size();
    // From the last to the first, parents before their children; turned round that is the order wanted.
    Instance* at = &top;
    while (at) {
        removal.instances.emplace_back(at);
        if (at->m_lastChild) {
            at = at->m_lastChild;
            continue;
        }
        while (at != &top && !at->m_previous) {
            at = at->m_parent;
        }
        at = at == &top ? nullptr : at->m_previous;
    }
    std::reverse(removal.instances.begin() + static_cast<std::ptrdiff_t>(first), removal.instances.end());

    Instance& parent = *top.m_parent;
    (top.m_previous ? top.m_previous->m_next : parent.m_firstChild) = top.m_next;
    (top.m_next ? top.m_next->m_previous : parent.m_lastChild) = top.m_previous;
    for (std::size_t i = first; i < removal.instances.size(); ++i) {
        CutLinks(*removal.instances[i]);
        m_index->byPath.Take(removal.instances[i]->m_idPath);
    }
}

/// Takes it out of the lists of its parent's children and of its component's occurrences, both as a whole.
void Tree::CutLinks(Instance& instance)
{
    instance.m_firstChild = nullptr;
    instance.m_lastChild = nullptr;
    instance.m_previous = nullptr;
    instance.m_next = nullptr;
    instance.GetNode()->RemoveOccurrence(instance);
}

void Tree::Forget(Instance& instance)
{
    instance.DropService();
    instance.m_parent = nullptr;
    instance.m_tree = nullptr;
}

template <class Tell, class Afterwards>
void Tree::TellAll(const Instances& instances, const Tell& tell, const Afterwards& afterwards)
{
    du::SmartPtr<Tree> tree;
    const auto endChange = [&tree] {
        if (tree) {
            tree->m_index->ForEachListener([](Listener& listener) { listener.OnEndChange(); });
        }
    };
    for (const du::SmartPtr<Instance>& instance : instances) {
        if (!instance->m_tree) {
            continue; // removed again by a listener
        }
        if (tree.get() != instance->m_tree) {
            endChange();
            tree = instance->m_tree;
            tree->m_index->ForEachListener([](Listener& listener) { listener.OnBeginChange(); });
        }
        tree->m_index->ForEachListener([&](Listener& listener) {
            if (instance->m_tree) {
                tell(listener, *instance);
            }
        });
        afterwards(*instance);
    }
    endChange();
}

void Tree::FollowAdded(ComponentNode& parent, ComponentInstance& use)
{
    Instances grown;
    for (Instance* occurrence = parent.m_firstOccurrence; occurrence; occurrence = occurrence->m_nextOccurrence) {
        occurrence->m_tree->Grow(*occurrence, use, grown);
    }
    TellAll(
        grown, [](Listener& listener, Instance& instance) { listener.OnInstanceAdded(instance); }, kNothing);
}

void Tree::FollowRemoved(ComponentNode& parent, ComponentInstance& use)
{
    Removal removal;
    for (Instance* occurrence = parent.m_firstOccurrence; occurrence; occurrence = occurrence->m_nextOccurrence) {
        if (const du::SmartPtr<Instance> top = occurrence->FindChild(use.m_id)) {
            occurrence->m_tree->Cut(*top, removal);
        }
    }
    TellAll(
        removal.instances, [](Listener& listener, Instance& instance) { listener.OnInstanceRemoved(instance); },
        Forget);
}

/// That of a use below an occurrence of the component which has it.
du::SmartPtr<Instance> Tree::FindOccurrence(const Instance& parent, const ComponentInstance& use)
{
    // A component that is used once needs no look-up.
    Instance* const first = use.m_node->m_firstOccurrence;
    const bool isThat = first && first->m_parent == &parent && first->m_componentInstance.get() == &use;
    return isThat ? du::SmartPtr<Instance>(first) : parent.FindChild(use.m_id);
}

du::SmartPtr<Instance> Tree::FindOccurrence(const ComponentInstance& use) const
{
    const ComponentNode* const component = use.GetParentNode();
    for (Instance* parent = component ? component->m_firstOccurrence : nullptr; parent;
         parent = parent->m_nextOccurrence) {
        if (parent->m_tree == this) {
            return FindOccurrence(*parent, use);
        }
    }
    return {};
}

void Tree::FollowMoved(ComponentNode& parent, const ComponentInstance& use)
{
    Instances moved;
    for (Instance* occurrence = parent.m_firstOccurrence; occurrence; occurrence = occurrence->m_nextOccurrence) {
        if (du::SmartPtr<Instance> instance = FindOccurrence(*occurrence, use)) {
            moved.push_back(std::move(instance));
        }
    }
    TellAll(
        moved, [](Listener& listener, Instance& instance) { listener.OnInstanceMoved(instance); }, kNothing);
}

} // namespace luk
