#pragma once

#include <du/RefCounted.h>
#include <luk/Object.h>

namespace luk
{

/// One thing that was done and can be undone.
///
/// Threads: belongs to the host thread.
class LUHOST_API OperationStep : public Object, public virtual du::RefCounted
{
public:
    ~OperationStep() override;

    /// Whether a recorded animation may show the step.
    virtual bool Recordable() const = 0;
    /// A number for each kind of step.
    virtual int Type() const = 0;
    virtual void Undo() = 0;
    virtual void Redo() = 0;
};

} // namespace luk
