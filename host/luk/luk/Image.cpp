#include <luk/Image.h>

namespace luk
{

Image::~Image() = default;

} // namespace luk
