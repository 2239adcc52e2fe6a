#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Object.h>
#include <luk/View.h>

namespace lukapp
{

/// Knows which view the user works in.
///
/// Threads: belongs to the host thread.
class LUHOST_API SceneManager : public luk::Object, public virtual du::RefCounted
{
public:
    SceneManager() = default;
    ~SceneManager() override;

    /// May be null.
    const du::SmartPtr<luk::View>& GetActiveView() const noexcept { return m_activeView; }
    void SetActiveView(const du::SmartPtr<luk::View>& view) { m_activeView = view; }

private:
    du::SmartPtr<luk::View> m_activeView;
};

} // namespace lukapp
