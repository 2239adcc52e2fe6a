#include <luk/Object.h>

namespace luk
{

Object::~Object() = default;

du::Symbol Object::GetObjectClass() const { return du::Symbol("luk::Object"); }

} // namespace luk
