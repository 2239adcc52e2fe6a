#pragma once

#include <luhost/io/PictureDecoders.h>

namespace luhost::io
{

/// TIFF: every page is a frame, apart from thumbnails and masks; turned as its orientation says.
class TiffDecoder : public luloader::ImageDecoder
{
public:
    explicit TiffDecoder(const PictureLimits& limits) : m_limits(limits) {}

    bool Recognises(std::string_view bytes) const override;
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string& problem) const override;

private:
    PictureLimits m_limits;
};

} // namespace luhost::io
