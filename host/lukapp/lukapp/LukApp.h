#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Object.h>
#include <lukapp/SceneManager.h>

namespace lukapp
{

/// The running application.
///
/// Ownership: the session holds the application; Get hands out counted handles.
///
/// Threads: Get is safe on any thread and answers null outside a session; the rest belongs to the host thread.
class LUHOST_API LukApp : public luk::Object, public virtual du::RefCounted
{
public:
    ~LukApp() override;

    static du::SmartPtr<LukApp> Get();
    /// [host thread] For the session, and for tests that stand in for one.
    static void Set(const du::SmartPtr<LukApp>& app);

    /// Never null.
    const du::SmartPtr<SceneManager>& GetSceneManager() const noexcept { return m_sceneManager; }

protected:
    LukApp();

private:
    du::SmartPtr<SceneManager> m_sceneManager;
};

} // namespace lukapp
