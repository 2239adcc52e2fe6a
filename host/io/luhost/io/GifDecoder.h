#pragma once

#include <luhost/io/PictureDecoders.h>

namespace luhost::io
{

/// GIF: every frame as it looks on the screen of the file, with what earlier frames have left there.
class GifDecoder : public luloader::ImageDecoder
{
public:
    explicit GifDecoder(const PictureLimits& limits) : m_limits(limits) {}

    bool Recognises(std::string_view bytes) const override;
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string& problem) const override;

private:
    PictureLimits m_limits;
};

} // namespace luhost::io
