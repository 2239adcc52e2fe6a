#include <luk/illustration2d/Layer2D.h>

namespace luk::illustration2d
{

Layer2D::~Layer2D() = default;

} // namespace luk::illustration2d
