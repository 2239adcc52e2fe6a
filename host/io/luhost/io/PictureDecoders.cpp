#include <luhost/io/BmpDecoder.h>
#include <luhost/io/GifDecoder.h>
#include <luhost/io/JpegDecoder.h>
#include <luhost/io/PictureDecoders.h>
#include <luhost/io/PngDecoder.h>
#include <luhost/io/SvgDecoder.h>
#include <luhost/io/TiffDecoder.h>
#include <luhost/io/WebPDecoder.h>

namespace luhost::io
{

std::vector<std::shared_ptr<const luloader::ImageDecoder>> MakePictureDecoders(const PictureLimits& limits,
                                                                               VectorPictures vectors)
{
    std::vector<std::shared_ptr<const luloader::ImageDecoder>> decoders{
        std::make_shared<PngDecoder>(limits),  std::make_shared<JpegDecoder>(limits),
        std::make_shared<GifDecoder>(limits),  std::make_shared<WebPDecoder>(limits),
        std::make_shared<TiffDecoder>(limits), std::make_shared<BmpDecoder>(limits)};
    decoders.push_back(std::make_shared<SvgDecoder>(limits, decoders, vectors));
    return decoders;
}

} // namespace luhost::io
