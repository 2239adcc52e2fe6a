#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/Object.h>

#include <string>
#include <vector>

namespace luk
{
class Instance;
}

namespace luk::illustration
{

class SbomTree;

/// A node of the service tree: the same parts, grouped as they are serviced.
///
/// Ownership: its tree holds it. It knows its parent, its children and the part that it stands for by plain pointers, and
/// none of them any more once these have gone or it has itself been removed.
///
/// Threads: belongs to the host thread.
class LUHOST_API SbomInstance : public luk::Object, public virtual du::RefCounted
{
public:
    ~SbomInstance() override;

    const du::Symbol& GetIdPath() const noexcept { return m_idPath; }
    const du::Symbol& GetId() const noexcept { return m_id; }
    const std::string& GetName() const noexcept { return m_name; }

    /// The part that it stands for; null for a group, and once the part is gone.
    du::SmartPtr<luk::Instance> GetEbomInstance() const;
    /// Null for the root, and once it has been removed.
    SbomInstance* GetParent() const noexcept { return m_parent; }
    std::vector<du::SmartPtr<SbomInstance>> GetChildren() const;

private:
    friend class luk::Instance;
    friend class SbomTree;

    SbomInstance(SbomInstance* parent, const du::Symbol& id, std::string name);

    void DropPart() noexcept;

    du::Symbol m_id;
    du::Symbol m_idPath;
    std::string m_name;
    SbomInstance* m_parent;
    SbomInstance* m_firstChild = nullptr;
    SbomInstance* m_lastChild = nullptr;
    SbomInstance* m_previous = nullptr; ///< among the children of one parent
    SbomInstance* m_next = nullptr;
    luk::Instance* m_ebomInstance = nullptr;
};

} // namespace luk::illustration
