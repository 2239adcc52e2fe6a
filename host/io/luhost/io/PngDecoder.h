#pragma once

#include <luhost/io/PictureDecoders.h>

namespace luhost::io
{

/// PNG: every colour type and depth, as 8 bits a channel. Sample values are taken as they are, without colour management.
class PngDecoder : public luloader::ImageDecoder
{
public:
    explicit PngDecoder(const PictureLimits& limits) : m_limits(limits) {}

    bool Recognises(std::string_view bytes) const override;
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string& problem) const override;

private:
    PictureLimits m_limits;
};

} // namespace luhost::io
