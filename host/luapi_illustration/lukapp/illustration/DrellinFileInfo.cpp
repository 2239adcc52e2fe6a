#include <lukapp/illustration/DrellinFileInfo.h>

namespace lukapp::illustration
{

DrellinFileInfo::~DrellinFileInfo() = default;

} // namespace lukapp::illustration
