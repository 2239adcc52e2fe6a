#include <luk/CurrentHandle.h>
#include <luk/Scene.h>
#include <luk/World.h>

namespace luk
{

World::World() = default;
World::~World() = default;

du::SmartPtr<World> World::GetWorld() { return CurrentHandle<World>::GetSlot().Get(); }

void World::SetWorld(const du::SmartPtr<World>& world) { CurrentHandle<World>::GetSlot().Set(world); }

du::SmartPtr<Preferences> World::GetPreferences() const { return m_preferences; }

void World::SetPreferences(const du::SmartPtr<Preferences>& preferences) { m_preferences = preferences; }

bool World::GetIllustrationPreferences(du::SmartPtr<Preferences>& preferences) const
{
    preferences = m_illustrationPreferences;
    return preferences != nullptr;
}

void World::SetIllustrationPreferences(const du::SmartPtr<Preferences>& preferences)
{
    m_illustrationPreferences = preferences;
}

void World::CloseScenes()
{
    m_undoStack.Clear();
    Scene::CloseAll();
}

} // namespace luk
