#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/ComponentInstance.h>
#include <luk/Object.h>

#include <vector>

namespace luk::illustration
{
class SbomInstance;
class SbomTree;
} // namespace luk::illustration

namespace luk
{

class ShapeScene;
class Tree;

/// One occurrence of a component in a product tree, known by its id path: "/" and the ids of the uses on the way from the
/// root, joined by "/".
///
/// Ownership: its tree holds it. It knows its tree, its parent and its children by plain pointers, and none of them any more
/// once it has been removed.
///
/// Threads: belongs to the host thread.
class LUHOST_API Instance : public Object, public virtual du::RefCounted
{
public:
    ~Instance() override;

    /// What ids of symbols begin with, by which they are told from parts of the product.
    static const du::Symbol s_content_symbolPrefix;

    /// "/" for the root.
    const du::Symbol& GetIdPath() const noexcept { return m_idPath; }
    /// Null for the root.
    const du::SmartPtr<ComponentInstance>& GetComponentInstance() const noexcept { return m_componentInstance; }
    /// The component of which this is an occurrence; null once it has been removed from its tree.
    du::SmartPtr<ComponentNode> GetNode() const;

    /// Null for the root, and once it has been removed.
    Instance* GetParent() const noexcept { return m_parent; }
    /// Null once it has been removed.
    Tree* GetTree() const noexcept { return m_tree; }

    du::SmartPtr<Instance> FindChild(const du::Symbol& id) const;
    std::vector<du::SmartPtr<Instance>> GetChildren() const;

    /// The node of the service tree that stands for this part; null when there is none.
    du::SmartPtr<illustration::SbomInstance> GetSbomInstance() const;

private:
    friend class ComponentNode;
    friend class ShapeScene;
    friend class Tree;
    friend class illustration::SbomInstance;
    friend class illustration::SbomTree;
    Instance(Tree& tree, Instance* parent, const du::SmartPtr<ComponentInstance>& componentInstance);

    void DropService() noexcept;

    du::Symbol m_idPath;
    du::SmartPtr<ComponentInstance> m_componentInstance;
    Instance* m_parent;
    Tree* m_tree;
    Instance* m_firstChild = nullptr;
    Instance* m_lastChild = nullptr;
    Instance* m_previous = nullptr; ///< among the children of one parent
    Instance* m_next = nullptr;
    Instance* m_previousOccurrence = nullptr; ///< among the occurrences of one component
    Instance* m_nextOccurrence = nullptr;
    illustration::SbomInstance* m_sbomInstance = nullptr; ///< kept by the service tree
};

} // namespace luk
