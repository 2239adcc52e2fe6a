#pragma once

#include <du/SmartPtr.h>
#include <luk/ImageData.h>

#include <string>
#include <string_view>

namespace luloader
{

/// Reads pictures of one format.
///
/// Threads: both operations are called from several workers at once.
class LUHOST_API ImageDecoder
{
public:
    virtual ~ImageDecoder();

    /// Whether the bytes are of this format, by what they are and not by a name.
    virtual bool Recognises(std::string_view bytes) const = 0;

    /// @param[out] problem why there is no picture, such as "the file is cut off"
    /// @return null when the bytes are no whole picture, or one larger than the decoder takes; never throws but
    /// std::bad_alloc
    virtual du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string& problem) const = 0;

protected:
    ImageDecoder() = default;
    ImageDecoder(const ImageDecoder&) = default;
    ImageDecoder& operator=(const ImageDecoder&) = default;
};

} // namespace luloader
