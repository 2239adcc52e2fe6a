#pragma once

#include <du/RefCounted.h>
#include <luk/Object.h>

namespace luk
{

/// Window onto a scene.
///
/// Threads: belongs to the host thread.
class LUHOST_API View : public Object, public virtual du::RefCounted
{
public:
    View() = default;
    ~View() override;

    /// Whether what is shown is out of date.
    bool IsDirty() const noexcept { return m_dirty; }
    void SetDirty(bool dirty) noexcept { m_dirty = dirty; }

private:
    bool m_dirty = false;
};

} // namespace luk
