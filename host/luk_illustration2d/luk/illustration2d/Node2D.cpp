#include <luk/illustration2d/Node2D.h>

namespace luk::illustration2d
{

Node2D::~Node2D() = default;

} // namespace luk::illustration2d
