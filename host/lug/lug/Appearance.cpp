#include <lug/Appearance.h>

namespace lug
{

Appearance::~Appearance() = default;

} // namespace lug
