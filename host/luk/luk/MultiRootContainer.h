#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Object.h>
#include <luk/Structure.h>

namespace luk
{

/// The structures of a document.
///
/// Threads: belongs to the host thread.
class LUHOST_API MultiRootContainer : public Object, public virtual du::RefCounted
{
public:
    MultiRootContainer() = default;
    ~MultiRootContainer() override;

    /// May be null.
    const du::SmartPtr<Structure>& GetPrimaryStructure() const noexcept { return m_primary; }
    void SetPrimaryStructure(const du::SmartPtr<Structure>& structure) { m_primary = structure; }

private:
    du::SmartPtr<Structure> m_primary;
};

} // namespace luk
