#pragma once

#include <dom/ManagedObject.h>
#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Object.h>

#include <cstddef>
#include <functional>
#include <memory>

namespace luk
{

class BaseAsyncEvent;

/// Heart of a session: the event queue, and the books of all managed objects.
///
/// Use: workers post what they have finished; the host thread delivers it with ProcessEvents.
///
/// Ownership: the session holds the kernel; GetKernel hands out counted handles and null outside a session. A posted
/// event owns what it needs; one that is dropped releases that and calls nobody.
///
/// Threads and locks: PostEvent and GetKernel are safe on any thread. Events run on the host thread, which is the one
/// that made the kernel, with no lock held.
///
/// Errors: what an event throws, which is std::bad_alloc at most, passes through ProcessEvents; the events behind it are
/// delivered by the next call.
///
/// Cost: constant for each event. What is posted while ProcessEvents runs comes with the next call, so that an event that
/// posts itself again does not keep the host from its other work.
class LUHOST_API Kernel : public Object, public dom::ManagedObject, public virtual du::RefCounted
{
public:
    using Event = std::function<void()>;

    Kernel();
    ~Kernel() override;

    static du::SmartPtr<Kernel> GetKernel();
    /// [host thread] For the session, and for tests that stand in for one.
    static void SetKernel(const du::SmartPtr<Kernel>& kernel);

    void PostEvent(Event event);
    /// The same for an event that is to be handled, which needs no memory of its own for it.
    void PostEvent(const du::SmartPtr<BaseAsyncEvent>& event);

    /// [host thread] Delivers the event when the ProcessEvents that is running, or the next one, has delivered all others:
    /// for work that many events ask for and that needs doing once.
    void PostAfterEvents(Event event);

    /// [host thread] Delivers everything posted before the call. @return how many; 0 on another thread and when called
    /// from an event, since events keep their order
    std::size_t ProcessEvents();
    /// [host thread] Delivers the oldest event alone, so that a test can look at the state in between.
    bool ProcessOneEvent();

    std::size_t GetPendingEventCount() const;

    /// [host thread] Forgets all pending events, and from now on every posted one. @return how many were pending
    std::size_t Close();

private:
    class Queue;
    std::unique_ptr<Queue> m_queue;
};

} // namespace luk
