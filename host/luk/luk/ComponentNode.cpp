#include <du/PlaceMap.h>
#include <luk/ComponentNode.h>
#include <luk/IdPath.h>
#include <luk/Tree.h>

#include <unordered_set>
#include <utility>

namespace luk
{

/// The uses of other components here, by id and in order.
class ComponentNode::Links
{
public:
    ComponentInstance* Find(const du::Symbol& id) const
    {
        const du::SmartPtr<ComponentInstance>* const found = m_byId.Find(id);
        return found ? found->get() : nullptr;
    }

    void Add(const du::SmartPtr<ComponentInstance>& use)
    {
        m_byId.TryEmplace(use->m_id, use);
        use->m_previous = m_last;
        (m_last ? m_last->m_next : m_first) = use.get();
        m_last = use.get();
    }

    void Remove(ComponentInstance& use)
    {
        (use.m_previous ? use.m_previous->m_next : m_first) = use.m_next;
        (use.m_next ? use.m_next->m_previous : m_last) = use.m_previous;
        use.m_previous = nullptr;
        use.m_next = nullptr;
        m_byId.Take(use.m_id);
    }

    ComponentInstance* GetFirst() const noexcept { return m_first; }
    ComponentInstance* GetLast() const noexcept { return m_last; }
    std::size_t GetCount() const noexcept { return m_byId.GetCount(); }

private:
    du::PlaceMap<du::Symbol, du::SmartPtr<ComponentInstance>> m_byId;
    ComponentInstance* m_first = nullptr;
    ComponentInstance* m_last = nullptr;
};

ComponentNode::ComponentNode(const du::Symbol& name) : m_name(name) {}

// A deep product would overflow the stack if each component ended inside the end of the one that uses it: children that
// nobody else holds are handed up and end one after the other.
ComponentNode::~ComponentNode()
{
    du::SmartPtr<ComponentNode> released;
    ReleaseChildren(released);
    while (const du::SmartPtr<ComponentNode> node = std::move(released)) {
        released = std::move(node->m_nextReleased);
        node->ReleaseChildren(released);
    }
}

/// Puts in front of the chain the components that end with their last use, which was here. Needs no memory.
void ComponentNode::ReleaseChildren(du::SmartPtr<ComponentNode>& released)
{
    if (!m_links) {
        return;
    }
    while (ComponentInstance* const use = m_links->GetFirst()) {
        const du::SmartPtr<ComponentNode> node = use->m_node;
        --node->m_useCount;
        use->m_parent = nullptr;
        m_links->Remove(*use);
        if (node->GetReferenceCount() == 1) {
            node->m_nextReleased = std::move(released);
            released = node;
        }
    }
}

bool ComponentNode::AddChild(const du::SmartPtr<ComponentNode>& node, const du::Symbol& id,
                             du::SmartPtr<ComponentInstance>& componentInstance)
{
    if (!node || !IdPath::IsComponent(id) || FindChild(id) || WouldContainItself(*node)) {
        return false;
    }
    if (!m_links) {
        m_links = std::make_unique<Links>();
    }
    const auto use = du::MakeCounted<ComponentInstance>(id, node);
    use->m_parent = this;
    ++use->m_node->m_useCount;
    m_links->Add(use);
    componentInstance = use;
    Tree::FollowAdded(*this, *use);
    return true;
}

bool ComponentNode::RemoveChild(const du::Symbol& id)
{
    const du::SmartPtr<ComponentInstance> use = FindChild(id);
    if (!use) {
        return false;
    }
    m_links->Remove(*use);
    --use->m_node->m_useCount;
    use->m_parent = nullptr;
    Tree::FollowRemoved(*this, *use);
    return true;
}

du::SmartPtr<ComponentInstance> ComponentNode::FindChild(const du::Symbol& id) const
{
    return du::SmartPtr<ComponentInstance>(m_links ? m_links->Find(id) : nullptr);
}

std::vector<du::SmartPtr<ComponentInstance>> ComponentNode::GetChildren() const
{
    std::vector<du::SmartPtr<ComponentInstance>> children;
    children.reserve(GetChildCount());
    for (ComponentInstance* use = GetFirstUse(); use; use = use->m_next) {
        children.emplace_back(use);
    }
    return children;
}

std::size_t ComponentNode::GetChildCount() const noexcept { return m_links ? m_links->GetCount() : 0; }

ComponentInstance* ComponentNode::GetFirstUse() const noexcept { return m_links ? m_links->GetFirst() : nullptr; }

ComponentInstance* ComponentNode::GetLastUse() const noexcept { return m_links ? m_links->GetLast() : nullptr; }

/// The first one knows the last one as its previous, so that they stay in order without another pointer here.
void ComponentNode::AddOccurrence(Instance& instance) noexcept
{
    if (!m_firstOccurrence) {
        m_firstOccurrence = &instance;
        instance.m_previousOccurrence = &instance;
        return;
    }
    Instance* const last = m_firstOccurrence->m_previousOccurrence;
    last->m_nextOccurrence = &instance;
    instance.m_previousOccurrence = last;
    m_firstOccurrence->m_previousOccurrence = &instance;
}

void ComponentNode::RemoveOccurrence(Instance& instance) noexcept
{
    Instance* const next = instance.m_nextOccurrence;
    (&instance == m_firstOccurrence ? m_firstOccurrence : instance.m_previousOccurrence->m_nextOccurrence) = next;
    if (Instance* const after = next ? next : m_firstOccurrence) {
        after->m_previousOccurrence = instance.m_previousOccurrence;
    }
    instance.m_previousOccurrence = nullptr;
    instance.m_nextOccurrence = nullptr;
}

bool ComponentNode::WouldContainItself(const ComponentNode& child) const
{
    return &child == this || (m_useCount > 0 && child.GetFirstUse() && child.Contains(*this));
}

bool ComponentNode::Contains(const ComponentNode& sought) const
{
    std::unordered_set<const ComponentNode*> seen;
    std::vector<const ComponentNode*> due{this};
    while (!due.empty()) {
        const ComponentNode* const node = due.back();
        due.pop_back();
        for (const ComponentInstance* use = node->GetFirstUse(); use; use = use->m_next) {
            if (use->m_node.get() == &sought) {
                return true;
            }
            if (seen.insert(use->m_node.get()).second) {
                due.push_back(use->m_node.get());
            }
        }
    }
    return false;
}

} // namespace luk
