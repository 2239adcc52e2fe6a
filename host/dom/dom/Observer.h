#pragma once

#include <dom/ManagedObject.h>
#include <du/RefCounted.h>

namespace dom
{

/// Somebody who wants to be told about changes of a subject.
///
/// Ownership: a subject holds a counted handle of each observer for as long as it is registered. An observer keeps its
/// own way back to whom it serves as a plain pointer, and clears it in OnDetached.
class LUHOST_API Observer : public ManagedObject, public virtual du::RefCounted
{
public:
    ~Observer() override;

    /// [any thread] Whether the observer wants each batch of notifications framed by a begin and an end.
    virtual bool RequiresBeginEnd() const;

    /// [any thread] Called once it is no longer registered, also because the subject has come to its end.
    virtual void OnDetached();
};

} // namespace dom
