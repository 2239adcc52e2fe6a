#pragma once

#include <luloader/ImageDecoder.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace luhost::io
{

struct PictureLimits {
    int maximumSide = 32768;                              ///< pixels
    std::uint64_t maximumPixels = std::uint64_t{1} << 26; ///< of all frames together
    int maximumFrames = 1000;                             ///< further ones are left out
};

/// What becomes of a vector drawing.
enum class VectorPictures {
    WithPixels, ///< drawn at its natural size too
    AsTheyAre   ///< its size and the document alone, for who draws it anyway: the frame has no pixels
};

/// Decoders for PNG, JPEG, GIF, WebP, TIFF, BMP and SVG, in the order in which they should be asked. Each trusts nothing
/// that a file says of itself: sizes are checked before memory is asked for, and a file that is cut off or damaged gives no
/// picture but the reason.
std::vector<std::shared_ptr<const luloader::ImageDecoder>>
MakePictureDecoders(const PictureLimits& limits = {}, VectorPictures vectors = VectorPictures::WithPixels);

} // namespace luhost::io
