#include <lukapp/SceneManager.h>

namespace lukapp
{

SceneManager::~SceneManager() = default;

} // namespace lukapp
