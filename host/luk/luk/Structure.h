#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Anchor.h>
#include <luk/ComponentNode.h>
#include <luk/Object.h>

namespace luk
{

/// A product: its parts, and where its files are.
///
/// Threads: belongs to the host thread.
class LUHOST_API Structure : public Object, public virtual du::RefCounted
{
public:
    Structure() = default;
    ~Structure() override;

    /// May be null. The occurrences in trees are made when a tree is.
    const du::SmartPtr<ComponentNode>& GetRoot() const noexcept { return m_root; }
    void SetRoot(const du::SmartPtr<ComponentNode>& root) { m_root = root; }

    /// A component of this structure that is used nowhere yet.
    du::SmartPtr<ComponentNode> CreateComponentNode(const du::Symbol& name);

    /// Null for a structure without files.
    const du::SmartPtr<Anchor>& GetAnchor() const noexcept { return m_anchor; }
    void SetAnchor(const du::SmartPtr<Anchor>& anchor) { m_anchor = anchor; }

private:
    du::SmartPtr<ComponentNode> m_root;
    du::SmartPtr<Anchor> m_anchor;
};

} // namespace luk
