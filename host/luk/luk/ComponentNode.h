#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/ComponentInstance.h>
#include <luk/Object.h>
#include <luk/ShapeSource.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace luk
{

class Instance;

/// A component of a product: a part or an assembly, defined once however often it is used.
///
/// Ownership: holds its uses of other components, and these the components. Occurrences in trees are known, not held.
///
/// Errors: a use that would make a component contain itself is refused, so that every tree is finite.
///
/// Threads: belongs to the host thread.
///
/// Cost: constant for each child looked up, added or removed, times the occurrences of this component. Refusing a ring costs
/// a walk over the components below the new child; nothing when that has no children, or when this component is used
/// nowhere yet.
class LUHOST_API ComponentNode : public Object, public virtual du::RefCounted
{
public:
    explicit ComponentNode(const du::Symbol& name);
    ~ComponentNode() override;

    const du::Symbol& GetName() const noexcept { return m_name; }
    void SetName(const du::Symbol& name) { m_name = name; }

    /// Null for an assembly.
    const du::SmartPtr<ShapeSource>& GetShapeSource() const noexcept { return m_shapeSource; }
    /// Occurrences in scenes keep the shape that they have until it is replaced there.
    void SetShapeSource(const du::SmartPtr<ShapeSource>& source) { m_shapeSource = source; }

    /// Uses a component here, in every occurrence of this one.
    /// @param id one component of an id path, not empty and without '/'
    /// @param[out] componentInstance the new use; untouched when the result is false
    /// @return false when the id is taken or none, the node null, or the product would contain itself
    bool AddChild(const du::SmartPtr<ComponentNode>& node, const du::Symbol& id,
                  du::SmartPtr<ComponentInstance>& componentInstance);
    /// @return false when there is no such child
    bool RemoveChild(const du::Symbol& id);

    /// Null when there is none.
    du::SmartPtr<ComponentInstance> FindChild(const du::Symbol& id) const;
    /// In the order in which they were added.
    std::vector<du::SmartPtr<ComponentInstance>> GetChildren() const;
    std::size_t GetChildCount() const noexcept;

private:
    friend class Tree;
    class Links;

    ComponentInstance* GetFirstUse() const noexcept;
    ComponentInstance* GetLastUse() const noexcept;
    bool WouldContainItself(const ComponentNode& child) const;
    bool Contains(const ComponentNode& sought) const;
    void ReleaseChildren(du::SmartPtr<ComponentNode>& released);
    void AddOccurrence(Instance& instance) noexcept;
    void RemoveOccurrence(Instance& instance) noexcept;

    du::Symbol m_name;
    du::SmartPtr<ShapeSource> m_shapeSource;
    std::unique_ptr<Links> m_links;             ///< null as long as there was no child
    du::SmartPtr<ComponentNode> m_nextReleased; ///< while it ends
    Instance* m_firstOccurrence = nullptr;      ///< kept by the trees
    std::size_t m_useCount = 0;
};

} // namespace luk
