#pragma once

#include <luhost/io/PictureDecoders.h>

namespace luhost::io
{

/// BMP: 1, 4, 8, 16, 24 and 32 bits, bit fields and both run-length codes.
class BmpDecoder : public luloader::ImageDecoder
{
public:
    explicit BmpDecoder(const PictureLimits& limits) : m_limits(limits) {}

    bool Recognises(std::string_view bytes) const override;
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string& problem) const override;

private:
    PictureLimits m_limits;
};

} // namespace luhost::io
