#include <luk/illustration2d/Lines2D.h>

namespace luk::illustration2d
{

Lines2D::~Lines2D() = default;

} // namespace luk::illustration2d
