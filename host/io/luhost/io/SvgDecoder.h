#pragma once

#include <luhost/io/PictureDecoders.h>

namespace luhost::io
{

/// SVG: drawn at its natural size, 96 pixels to the inch, where pixels are wanted, and kept as a drawing. Nothing outside the
/// document is read.
///
/// Errors: refuses what would cost far more to draw than the document is long, see SvgGuard.
class SvgDecoder : public luloader::ImageDecoder
{
public:
    using Decoders = std::vector<std::shared_ptr<const luloader::ImageDecoder>>;

    /// @param embedded for pictures inside the document
    SvgDecoder(const PictureLimits& limits, Decoders embedded, VectorPictures vectors)
        : m_limits(limits), m_embedded(std::move(embedded)), m_vectors(vectors)
    {
    }

    bool Recognises(std::string_view bytes) const override;
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string& problem) const override;

private:
    PictureLimits m_limits;
    Decoders m_embedded;
    VectorPictures m_vectors;
};

} // namespace luhost::io
