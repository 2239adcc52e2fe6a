#include <luk/ShapeInstance.h>

namespace luk
{

ShapeInstance::~ShapeInstance() = default;

} // namespace luk
