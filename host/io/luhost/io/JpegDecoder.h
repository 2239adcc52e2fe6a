#pragma once

#include <luhost/io/PictureDecoders.h>

namespace luhost::io
{

/// JPEG: grey, YCbCr, RGB, CMYK and YCCK, turned as the camera's orientation note says.
class JpegDecoder : public luloader::ImageDecoder
{
public:
    explicit JpegDecoder(const PictureLimits& limits) : m_limits(limits) {}

    bool Recognises(std::string_view bytes) const override;
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string& problem) const override;

private:
    PictureLimits m_limits;
};

} // namespace luhost::io
