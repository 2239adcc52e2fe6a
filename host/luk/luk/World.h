#pragma once

#include <du/SmartPtr.h>
#include <luk/MultiRootContainer.h>
#include <luk/Preferences.h>
#include <luk/Tree.h>
#include <luk/UndoStack.h>

namespace luk
{

/// What one session works on: its preferences, its product structures, its scenes, what can be undone.
///
/// Ownership: the session holds the world; GetWorld hands out counted handles. Scenes are known, not held.
///
/// Threads: GetWorld is safe on any thread and answers null outside a session; the rest belongs to the host thread.
class LUHOST_API World : public Object, public virtual du::RefCounted
{
public:
    World();
    ~World() override;

    static du::SmartPtr<World> GetWorld();
    /// [host thread] For the session, and for tests that stand in for one.
    static void SetWorld(const du::SmartPtr<World>& world);

    du::SmartPtr<Preferences> GetPreferences() const;
    void SetPreferences(const du::SmartPtr<Preferences>& preferences);

    /// @return false, with the argument set to null, when there are none
    bool GetIllustrationPreferences(du::SmartPtr<Preferences>& preferences) const;
    void SetIllustrationPreferences(const du::SmartPtr<Preferences>& preferences);

    /// Null while no document is open.
    const du::SmartPtr<MultiRootContainer>& GetContainer() const noexcept { return m_container; }
    void SetContainer(const du::SmartPtr<MultiRootContainer>& container) { m_container = container; }

    /// The engineering tree of the primary structure; null while no document is open.
    const du::SmartPtr<Tree>& GetTree() const noexcept { return m_tree; }
    void SetTree(const du::SmartPtr<Tree>& tree) { m_tree = tree; }

    UndoStack& GetUndoStack() noexcept { return m_undoStack; }

    /// Clears the undo stack, then closes every scene of the process that is still alive.
    void CloseScenes();

private:
    du::SmartPtr<Preferences> m_preferences;
    du::SmartPtr<Preferences> m_illustrationPreferences;
    du::SmartPtr<MultiRootContainer> m_container;
    du::SmartPtr<Tree> m_tree;
    UndoStack m_undoStack;
};

} // namespace luk
