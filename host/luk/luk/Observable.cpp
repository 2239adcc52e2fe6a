#include <luk/Kernel.h>
#include <luk/Observable.h>
#include <luk/Observer.h>

namespace luk
{

Observable::Observable() = default;
Observable::Observable(const Observable&) = default;
Observable& Observable::operator=(const Observable&) noexcept = default;
Observable::~Observable() = default;

bool Observable::RegisterObserver(const du::SmartPtr<Observer>& observer)
{
    return dom::Observable::RegisterObserver(observer);
}

bool Observable::UnregisterObserver(const Observer* observer) { return dom::Observable::UnregisterObserver(observer); }

void Observable::PostObservableEvent(int kind)
{
    if (auto* const self = dynamic_cast<du::RefCounted*>(this)) {
        PostObservableEvent(kind, *self);
    }
}

void Observable::PostObservableEvent(int kind, du::RefCounted& self)
{
    const du::SmartPtr<Kernel> kernel = Kernel::GetKernel();
    // Nobody can have an observer at an object that nobody holds, and a handle of it would be its end.
    if (!kernel || self.GetReferenceCount() == 0) {
        return;
    }
    kernel->PostEvent([this, kind, keptAlive = du::SmartPtr<du::RefCounted>(&self)] {
        NotifyObservers(
            [this, kind](dom::Observer& observer) { static_cast<Observer&>(observer).OnObservableEvent(*this, kind); });
    });
}

} // namespace luk
