#pragma once

#include <dom/ManagedObject.h>
#include <du/RefCounted.h>
#include <du/Symbol.h>

namespace luk
{

/// Something that will be complete later: whoever does the work completes it, whoever waits overrides a hook.
///
/// Ownership: counted, from the ordinary allocator. An event that goes without having been completed calls nobody.
///
/// Threads: made, completed and destroyed on the host thread.
class LUHOST_API BaseAsyncEvent : public dom::ManagedObject, public virtual du::RefCounted
{
public:
    ~BaseAsyncEvent() override;

    /// Word that names the event's class in traces.
    virtual du::Symbol GetObjectClass() const;

    /// Delivers the event from the event pump: completes it with success unless it is complete.
    virtual void HandleEvent();

    /// The work has come closer to its end.
    virtual void OnProgress();

    /// The work is done. Called once, with IsComplete() already true; the event is kept alive meanwhile.
    /// @param status 0 for success
    virtual void OnCompleted(int status);

    /// Runs OnCompleted, the first time that it is called. @return false when the event was complete before
    bool Complete(int status = 0);

    bool IsComplete() const noexcept { return m_complete; }
    /// What the event was completed with; 0 before.
    int GetStatus() const noexcept { return m_status; }

protected:
    BaseAsyncEvent() = default;
    BaseAsyncEvent(const BaseAsyncEvent&) = delete;
    BaseAsyncEvent& operator=(const BaseAsyncEvent&) = delete;

private:
    bool m_complete = false;
    int m_status = 0;
};

} // namespace luk
