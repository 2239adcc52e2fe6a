#pragma once

#include <luhost/render/Drawing.h>
#include <luk/ImageData.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace test
{

/// A decoded picture: alpha, red, green and blue, multiplied by alpha.
struct Pixels {
    std::uint32_t At(int x, int y) const { return words.at(static_cast<std::size_t>(y * width + x)); }
    /// R, G, B, Y, W, K for red, green, blue, yellow, white, black; '.' for clear; '?' for anything else.
    char ColorAt(double x, double y) const;

    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> words;
};

/// Empty when it cannot be decoded.
Pixels DecodePng(const std::string& png);
/// As another program shows it. Empty when it cannot be read.
Pixels ShowSvg(const std::string& svg, int width, int height);

/// @param rgba colours of the quarters or of any other pixels, row by row
du::SmartPtr<luk::ImageData> MakePicture(int width, int height, const std::vector<std::uint32_t>& rgba);
/// Quarters of red, green, blue and yellow, clockwise from the upper left one.
du::SmartPtr<luk::ImageData> MakeQuarters();
du::SmartPtr<luk::ImageData> MakeVectorQuarters();

luhost::render::DrawnPicture PutInto(double left, double top, double right, double bottom,
                                     const du::SmartPtr<luk::ImageData>& image);

} // namespace test
