#include <luloader/ImageDecoder.h>

namespace luloader
{

ImageDecoder::~ImageDecoder() = default;

} // namespace luloader
