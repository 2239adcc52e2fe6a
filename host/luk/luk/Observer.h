#pragma once

#include <dom/Observer.h>
#include <luk/Object.h>

namespace luk
{

class Observable;

/// Observer of a kernel object.
class LUHOST_API Observer : public Object, public dom::Observer
{
public:
    ~Observer() override;

    /// [host thread] An event that the subject posted.
    /// @param kind one of Observable::EventKind
    virtual void OnObservableEvent(Observable& subject, int kind);
};

} // namespace luk
