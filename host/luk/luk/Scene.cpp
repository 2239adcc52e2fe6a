#include <luk/Scene.h>

namespace luk
{

Scene::~Scene() = default;

} // namespace luk
