#pragma once

#include <luhost/io/PictureDecoders.h>

namespace luhost::io
{

/// WebP: still pictures and animations, lossy and lossless.
class WebPDecoder : public luloader::ImageDecoder
{
public:
    explicit WebPDecoder(const PictureLimits& limits) : m_limits(limits) {}

    bool Recognises(std::string_view bytes) const override;
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string& problem) const override;

private:
    PictureLimits m_limits;
};

} // namespace luhost::io
