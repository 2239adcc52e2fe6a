#include <luk/illustration/AssociativeObjectLoader.h>

namespace luk::illustration
{

AssociativeObjectLoader::AssociativeObjectLoader() = default;
AssociativeObjectLoader::AssociativeObjectLoader(const AssociativeObjectLoader&) = default;
AssociativeObjectLoader& AssociativeObjectLoader::operator=(const AssociativeObjectLoader&) = default;
AssociativeObjectLoader::~AssociativeObjectLoader() = default;

void AssociativeObjectLoader::SetPreferences(const du::SmartPtr<luk::Preferences>& preferences)
{
    m_preferences = preferences;
}

} // namespace luk::illustration
