#include <luk/illustration/CollectionInformation.h>

namespace luk::illustration
{

CollectionInformation::~CollectionInformation() = default;

} // namespace luk::illustration
