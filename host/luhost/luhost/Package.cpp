#include <luhost/Package.h>

namespace luhost
{

PackageFormat::~PackageFormat() = default;

} // namespace luhost
