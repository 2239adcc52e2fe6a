#include <luk/Operation.h>

namespace luk
{

Operation::~Operation() = default;

void Operation::AddStep(const du::SmartPtr<OperationStep>& step)
{
    if (step) {
        m_steps.push_back(step);
    }
}

// What a step does may reach this operation again and add to it, hence the copies.

void Operation::Undo()
{
    const std::vector<du::SmartPtr<OperationStep>> steps = m_steps;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        (*step)->Undo();
    }
}

void Operation::Redo()
{
    const std::vector<du::SmartPtr<OperationStep>> steps = m_steps;
    for (const du::SmartPtr<OperationStep>& step : steps) {
        step->Redo();
    }
}

} // namespace luk
