#pragma once

#include <du/SmartPtr.h>
#include <luk/Preferences.h>

namespace luk
{

/// What one session works on: its preferences, later its trees and documents.
///
/// Ownership: the session holds the world; GetWorld hands out counted handles.
///
/// Threads: GetWorld is safe on any thread and answers null outside a session.
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

private:
    du::SmartPtr<Preferences> m_preferences;
    du::SmartPtr<Preferences> m_illustrationPreferences;
};

} // namespace luk
