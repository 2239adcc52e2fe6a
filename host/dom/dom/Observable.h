#pragma once

#include <du/SmartPtr.h>

#include <atomic>
#include <cstddef>
#include <functional>

namespace dom
{

class Observer;

/// A subject: keeps its observers in order of registration and tells them about changes.
///
/// Ownership: holds a counted handle of every registered observer.
///
/// Threads and locks: every call is safe on any thread. A notification runs over a snapshot with no lock held, so that
/// observers may register and unregister themselves and others meanwhile: one unregistered since is skipped, one
/// registered since is not called. The snapshot keeps observers alive until the notification ends.
///
/// Copies: observers belong to the subject, not to its value; a copy starts without any.
///
/// Cost: a subject that never had an observer is a pointer. Constant for registering and unregistering; a notification
/// visits each observer once, and copies the list only when it has changed since the last one.
class LUHOST_API Observable
{
public:
    Observable() noexcept;
    Observable(const Observable&) noexcept;
    Observable& operator=(const Observable&) noexcept { return *this; }

    /// @return false for null, and for an observer that is registered already
    bool RegisterObserver(const du::SmartPtr<Observer>& observer);

    /// Tells the observer that it is detached. @return false when it was not registered
    bool UnregisterObserver(const Observer* observer);

    std::size_t GetObserverCount() const;

protected:
    /// Detaches every observer that is left.
    virtual ~Observable();

    void NotifyObservers(const std::function<void(Observer&)>& notify) const;
    void DetachAllObservers();

private:
    class Registry;

    Registry& HaveRegistry();

    std::atomic<Registry*> m_registry{nullptr}; ///< made for the first observer, and then kept
};

} // namespace dom
