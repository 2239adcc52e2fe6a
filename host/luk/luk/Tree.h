#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/Instance.h>
#include <luk/Object.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace luk
{

class Structure;

/// All occurrences of the components of a structure: the engineering tree of the product. It follows its structure.
///
/// Ownership: holds the structure and the instances.
///
/// Threads: belongs to the host thread.
///
/// Cost: a look-up is constant, whatever the size of the tree; adding and removing is linear in what comes and goes.
class LUHOST_API Tree : public Object, public virtual du::RefCounted
{
public:
    /// Told of every instance that comes and goes, parents before children when they come, children first when they go.
    ///
    /// The tree itself has changed completely before the first call. A removed instance still knows its parent, its tree and
    /// its service node when its removal is told, and no longer afterwards.
    class LUHOST_API Listener
    {
    public:
        virtual ~Listener();
        /// Frame what one change of the structure brings about.
        virtual void OnBeginChange();
        virtual void OnEndChange();
        virtual void OnInstanceAdded(Instance& instance) = 0;
        virtual void OnInstanceRemoved(Instance& instance) = 0;
        /// Its use was placed elsewhere; those below it move along without a call of their own.
        virtual void OnInstanceMoved(Instance& instance) = 0;
    };

    explicit Tree(const du::SmartPtr<Structure>& structure);
    ~Tree() override;

    const du::SmartPtr<Structure>& GetStructure() const noexcept { return m_structure; }
    /// Null for a structure without a root.
    const du::SmartPtr<Instance>& GetRoot() const noexcept { return m_root; }
    /// Without the root.
    std::size_t GetInstanceCount() const noexcept;

    /// @param path "/a/b"; null, "", "/" and a path into nowhere give null
    du::SmartPtr<Instance> FindInstance(const du::Symbol& path) const;
    /// Where a use is, or the first such place when the component that has it is used several times itself.
    /// @return null for a use that is in no component of this tree
    du::SmartPtr<Instance> FindOccurrence(const ComponentInstance& use) const;

    /// Not owned; takes itself out before it goes. May be called from a listener.
    void AddListener(Listener* listener);
    void RemoveListener(Listener* listener);

private:
    friend class ComponentNode;
    friend class ComponentInstance;
    friend class Instance;
    class Index;
    struct Removal;
    using Instances = std::vector<du::SmartPtr<Instance>>;

    /// What becomes of all trees when a use of a component has come, has gone, or was placed elsewhere.
    static void FollowAdded(ComponentNode& parent, ComponentInstance& use);
    static void FollowRemoved(ComponentNode& parent, ComponentInstance& use);
    static void FollowMoved(ComponentNode& parent, const ComponentInstance& use);

    template <class Tell, class Afterwards>
    static void TellAll(const Instances& instances, const Tell& tell, const Afterwards& afterwards);

    Instance& Insert(Instance& parent, ComponentInstance& use);
    void Grow(Instance& parent, ComponentInstance& use, Instances& grown);
    void Cut(Instance& top, Removal& removal);
    static du::SmartPtr<Instance> FindOccurrence(const Instance& parent, const ComponentInstance& use);
    static void CutLinks(Instance& instance);
    static void Forget(Instance& instance);

    du::SmartPtr<Structure> m_structure;
    du::SmartPtr<ComponentNode> m_rootNode; ///< as it was when the tree was made
    du::SmartPtr<Instance> m_root;
    std::unique_ptr<Index> m_index;
};

} // namespace luk
