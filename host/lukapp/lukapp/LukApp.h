#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Object.h>

namespace lukapp
{

/// The running application.
///
/// Ownership: the session holds the application; Get hands out counted handles.
///
/// Threads: Get is safe on any thread and answers null outside a session.
class LUHOST_API LukApp : public luk::Object, public virtual du::RefCounted
{
public:
    ~LukApp() override;

    static du::SmartPtr<LukApp> Get();
    /// [host thread] For the session, and for tests that stand in for one.
    static void Set(const du::SmartPtr<LukApp>& app);

protected:
    LukApp();
};

} // namespace lukapp
