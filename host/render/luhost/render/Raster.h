#pragma once

#include <luhost/render/Box.h>
#include <luhost/render/CairoHandles.h>
#include <luk/ImageData.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace luhost::render
{

/// Pixels as the drawing library wants them: alpha, red, green and blue of 8 bits from the highest bits of a word down,
/// multiplied by alpha, row by row from the top.
struct Raster {
    Raster() = default;
    Raster(int widthInPixels, int heightInPixels)
        : width(widthInPixels), height(heightInPixels),
          pixels(static_cast<std::size_t>(widthInPixels) * static_cast<std::size_t>(heightInPixels))
    {
    }

    std::uint32_t& At(int x, int y)
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
    std::uint32_t At(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
    bool IsOpaque() const noexcept;

    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

/// @param frame with as many pixels as its size says
Raster ToRaster(const luk::ImageData::Frame& frame);

/// At half the size, rounded up.
Raster Halve(const Raster& raster);

/// The pixels as a surface, which must not outlive them; without alpha when they are all opaque.
CairoSurface WrapPixels(Raster& raster);

/// A picture and its smaller versions, each half as large as the one before.
class RasterLevels
{
public:
    explicit RasterLevels(Raster raster);

    const Raster& GetLevel(std::size_t level) const { return m_levels[level]; }
    std::size_t GetLevelCount() const noexcept { return m_levels.size(); }

private:
    std::vector<Raster> m_levels;
};

/// Part of the plane of pixels: the pixel in column x and row y covers x to x + 1 and y to y + 1.
struct PixelWindow {
    int left;
    int top;
    int width;
    int height;
};

/// The whole pixels that an outline touches, and one more around, within those that a sheet touches.
PixelWindow WindowOf(const Polygon& outline, const Sheet& sheet);

/// What of a picture appears in a window, when its corners go to the given ones.
///
/// The colours of its border go on for some pixels beyond the outline, by which the result is meant to be clipped: neither
/// the resampling nor a later one mixes the edge with the void.
Raster Resample(const RasterLevels& picture, const Corners& corners, const Polygon& outline, const PixelWindow& window);

} // namespace luhost::render
