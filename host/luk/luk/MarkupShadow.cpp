#include <luk/MarkupShadow.h>

namespace luk
{

MarkupShadow::~MarkupShadow() = default;

} // namespace luk
