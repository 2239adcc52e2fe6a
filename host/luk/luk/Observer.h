#pragma once

#include <dom/Observer.h>
#include <du/Symbol.h>

namespace luk
{

class Observable;

/// Observer of a kernel object.
///
/// Ownership: counted, from the ordinary allocator, as events are: observers belong to those who watch.
class LUHOST_API Observer : public dom::Observer
{
public:
    ~Observer() override;

    /// Word that names the observer's class in traces.
    virtual du::Symbol GetObjectClass() const;

    /// [host thread] An event that the subject posted.
    /// @param kind one of Observable::EventKind
    virtual void OnObservableEvent(Observable& subject, int kind);
};

} // namespace luk
