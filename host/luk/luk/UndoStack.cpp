#include <luk/UndoStack.h>

#include <utility>

namespace luk
{

// Operations are let go of only after they have left the lists: what ends with them may call the stack again.

void UndoStack::Push(const du::SmartPtr<Operation>& operation)
{
    if (m_busy || !operation || operation->GetStepCount() == 0) {
        return;
    }
    m_done.push_back(operation);
    const List outdated = std::exchange(m_undone, {});
}

bool UndoStack::Undo()
{
    return Carry(m_done, m_undone, [](Operation& operation) { operation.Undo(); });
}

bool UndoStack::Redo()
{
    return Carry(m_undone, m_done, [](Operation& operation) { operation.Redo(); });
}

bool UndoStack::Carry(List& from, List& to, void (*run)(Operation&))
{
    if (m_busy || from.empty()) {
        return false;
    }
    const du::SmartPtr<Operation> operation = std::move(from.back());
    from.pop_back();
    m_busy = true;
    m_clearedMeanwhile = false;
    run(*operation);
    m_busy = false;
    if (!m_clearedMeanwhile) {
        to.push_back(operation);
    }
    return true;
}

void UndoStack::Clear()
{
    m_clearedMeanwhile = true;
    const List done = std::exchange(m_done, {});
    const List undone = std::exchange(m_undone, {});
}

} // namespace luk
