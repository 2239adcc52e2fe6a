#include <luk/illustration2d/Stamp2D.h>

namespace luk::illustration2d
{

Stamp2D::~Stamp2D() = default;

} // namespace luk::illustration2d
