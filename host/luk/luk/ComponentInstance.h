#pragma once

#include <dg/Location.h>
#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/Object.h>

namespace luk
{

class ComponentNode;

/// One use of a component in another: which component, under which id, and where.
///
/// Ownership: holds the component that is used; the component that uses it holds this.
///
/// Threads: belongs to the host thread.
class LUHOST_API ComponentInstance : public Object, public virtual du::RefCounted
{
public:
    ComponentInstance(const du::Symbol& id, const du::SmartPtr<ComponentNode>& node);
    ~ComponentInstance() override;

    /// One component of an id path, unique among the uses in one component.
    const du::Symbol& GetId() const noexcept { return m_id; }
    const du::SmartPtr<ComponentNode>& GetNode() const noexcept { return m_node; }

    /// Placement in the component that uses it; the identity at first.
    const dg::Location& GetLocation() const noexcept { return m_location; }
    /// Moves every occurrence and all below them in every scene, unless they have been placed in the scene by themselves.
    void SetLocation(const dg::Location& location);

    /// The component that uses it; null once it has been removed there.
    ComponentNode* GetParentNode() const noexcept { return m_parent; }

private:
    friend class ComponentNode;
    friend class Tree;

    du::Symbol m_id;
    du::SmartPtr<ComponentNode> m_node;
    dg::Location m_location = dg::Location::IDENTITY;
    ComponentNode* m_parent = nullptr;
    ComponentInstance* m_previous = nullptr; ///< among the uses in one component; kept by that component
    ComponentInstance* m_next = nullptr;
};

} // namespace luk
