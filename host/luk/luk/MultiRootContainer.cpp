#include <luk/MultiRootContainer.h>

namespace luk
{

MultiRootContainer::~MultiRootContainer() = default;

} // namespace luk
