#pragma once

#include <dom/Observable.h>
#include <du/RefCounted.h>
#include <luk/ObjectWithRWLock.h>

namespace luk
{

class Observer;

/// Kernel object that can be observed.
///
/// Threads and locks: observers may be registered under the object's own write lock, and registering calls nobody back;
/// unregistering tells the observer itself, by OnDetached. Events are posted to the kernel and delivered from its event pump.
class LUHOST_API Observable : private dom::Observable, public ObjectWithRWLock
{
public:
    enum EventKind : int {
        EVENT_VISIBILITY_CHANGED = 1,
        EVENT_MEASUREMENT_DISPLAYED = 2,
        EVENT_ANNOTATION_MODIFIED = 3, ///< of a set: something about a member is different
    };

    ~Observable() override;

    bool RegisterObserver(const du::SmartPtr<Observer>& observer);
    bool UnregisterObserver(const Observer* observer);
    using dom::Observable::GetObserverCount;

    /// [any thread] Posts and never waits. The object is kept alive until the event has been delivered; without a kernel
    /// nobody is told.
    void PostObservableEvent(int kind);

protected:
    /// The same for a class that knows its own count, which is not looked for then.
    void PostObservableEvent(int kind, du::RefCounted& self);
    Observable();
    Observable(const Observable&);
    Observable& operator=(const Observable&) noexcept;
};

} // namespace luk
