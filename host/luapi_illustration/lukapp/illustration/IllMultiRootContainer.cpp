#include <lukapp/illustration/IllMultiRootContainer.h>

namespace lukapp::illustration
{

IllMultiRootContainer::IllMultiRootContainer() : m_fileInfo(du::MakeCounted<DrellinFileInfo>()) {}

IllMultiRootContainer::~IllMultiRootContainer() = default;

} // namespace lukapp::illustration
