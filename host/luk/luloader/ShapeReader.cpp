#include <luloader/ShapeReader.h>

namespace luloader
{

ShapeReader::~ShapeReader() = default;

} // namespace luloader
