#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Object.h>
#include <luk/OperationStep.h>

#include <cstddef>
#include <vector>

namespace luk
{

/// What a user did in one go: its steps are undone together, the last one first.
///
/// Threads: belongs to the host thread.
class LUHOST_API Operation : public Object, public virtual du::RefCounted
{
public:
    Operation() = default;
    ~Operation() override;

    /// Null is left out.
    void AddStep(const du::SmartPtr<OperationStep>& step);
    std::size_t GetStepCount() const noexcept { return m_steps.size(); }

    void Undo();
    void Redo();

private:
    std::vector<du::SmartPtr<OperationStep>> m_steps;
};

} // namespace luk
