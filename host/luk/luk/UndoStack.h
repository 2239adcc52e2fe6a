#pragma once

#include <du/SmartPtr.h>
#include <luk/Operation.h>

#include <cstddef>
#include <vector>

namespace luk
{

/// The operations that can be undone, and those undone that can be done again.
///
/// Ownership: holds its operations, and with them the annotations that their steps hold; cleared before scenes close.
///
/// Threads: belongs to the host thread.
class LUHOST_API UndoStack
{
public:
    /// Takes in what was just done, unless it has no steps; what had been undone can no longer be done again. What is
    /// pushed in the middle of Undo or Redo is part of that and is not taken in.
    void Push(const du::SmartPtr<Operation>& operation);

    /// @return false when there is nothing to undo (do again), and in the middle of either
    bool Undo();
    bool Redo();

    /// Safe in the middle of Undo and Redo: the operation under way is forgotten as well.
    void Clear();
    std::size_t GetUndoCount() const noexcept { return m_done.size(); }
    std::size_t GetRedoCount() const noexcept { return m_undone.size(); }

private:
    using List = std::vector<du::SmartPtr<Operation>>;

    bool Carry(List& from, List& to, void (*run)(Operation&));

    List m_done;
    List m_undone;
    bool m_busy = false;
    bool m_clearedMeanwhile = false;
};

} // namespace luk
