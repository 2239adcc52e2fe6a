#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/illustration/SbomInstance.h>
#include <luk/Object.h>

#include <cstddef>
#include <memory>
#include <string>

namespace luk::illustration
{

/// The service tree of a product, beside its engineering tree.
///
/// Threads: belongs to the host thread.
///
/// Cost: each look-up is constant.
class LUHOST_API SbomTree : public luk::Object, public virtual du::RefCounted
{
public:
    SbomTree();
    ~SbomTree() override;

    const du::SmartPtr<SbomInstance>& GetRoot() const noexcept { return m_root; }
    /// Without the root.
    std::size_t GetInstanceCount() const noexcept;

    /// Null, "", "/" and a path into nowhere give null.
    du::SmartPtr<SbomInstance> FindInstance(const du::Symbol& path) const;

    /// @param parent null for the root
    /// @param id one component of an id path, not empty and without '/'
    /// @param part the part that it stands for; null for a group
    /// @return null when the id is none or taken, when the parent is of another tree, and for a part that is in no tree or
    /// that another node stands for already
    du::SmartPtr<SbomInstance> AddInstance(const du::SmartPtr<SbomInstance>& parent, const du::Symbol& id,
                                           const std::string& name, const du::SmartPtr<luk::Instance>& part);
    /// With all below it. @return false for the root and for what is not in this tree
    bool RemoveInstance(const du::SmartPtr<SbomInstance>& instance);

private:
    class Index;

    bool IsHere(const SbomInstance& instance) const;

    du::SmartPtr<SbomInstance> m_root;
    std::unique_ptr<Index> m_index;
};

} // namespace luk::illustration
