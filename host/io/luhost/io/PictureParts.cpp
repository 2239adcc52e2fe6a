#include <luhost/io/PictureParts.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace luhost::io
{

namespace
{

/// As people write large numbers: 4,000,000,000.
std::string Grouped(std::uint64_t number)
{
    std::string digits = std::to_string(number);
    for (std::size_t place = digits.size(); place > 3; place -= 3) {
        digits.insert(place - 3, 1, ',');
    }
    return digits;
}

} // namespace

bool PictureBudget::Take(std::uint64_t width, std::uint64_t height, std::string& problem, std::uint64_t frames)
{
    const std::string claim = "it says it is " + Grouped(width) + " x " + Grouped(height) + " pixels";
    const auto side = static_cast<std::uint64_t>(std::max(m_limits.maximumSide, 0));
    if (width == 0 || height == 0) {
        problem = claim;
        return false;
    }
    if (width > side || height > side) {
        problem = claim + "; " + Grouped(side) + " on a side at most";
        return false;
    }
    const std::uint64_t left = m_limits.maximumPixels - m_pixels;
    if (frames > left / (width * height)) {
        problem = claim + "; " + Grouped(m_limits.maximumPixels) + " pixels in all at most";
        return false;
    }
    m_pixels += frames * width * height;
    return true;
}

std::uint32_t ByteReader::Join(std::size_t position, std::size_t count) const
{
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < count; ++index) {
        number = (number << 8) | At8(position + (m_isBigEndian ? index : count - 1 - index));
    }
    return number;
}

Pixels MakePixels(std::uint64_t width, std::uint64_t height)
{
    return Pixels(static_cast<std::size_t>(width * height * 4));
}

luk::ImageData::Frame MakeFrame(std::uint64_t width, std::uint64_t height, Pixels pixels, int delayMilliseconds)
{
    return {static_cast<int>(width), static_cast<int>(height), std::make_shared<const Pixels>(std::move(pixels)),
            delayMilliseconds};
}

luk::ImageData::Frame MakeOrientedFrame(std::uint64_t width, std::uint64_t height, Pixels pixels, unsigned orientation)
{
    if (orientation < 2 || orientation > 8) {
        return MakeFrame(width, height, std::move(pixels));
    }
    const bool isTransposed = orientation >= 5;
    const bool fromRight = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
    const bool fromBottom = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
    const std::uint64_t shownWidth = isTransposed ? height : width;
    const std::uint64_t shownHeight = isTransposed ? width : height;
    Pixels shown = MakePixels(shownWidth, shownHeight);
    for (std::uint64_t y = 0; y < height; ++y) {
        for (std::uint64_t x = 0; x < width; ++x) {
            std::uint64_t shownX = isTransposed ? y : x;
            std::uint64_t shownY = isTransposed ? x : y;
            shownX = fromRight ? shownWidth - 1 - shownX : shownX;
            shownY = fromBottom ? shownHeight - 1 - shownY : shownY;
            std::memcpy(&shown[(shownY * shownWidth + shownX) * 4], &pixels[(y * width + x) * 4], 4);
        }
    }
    return MakeFrame(shownWidth, shownHeight, std::move(shown));
}

void DivideByAlpha(Pixels& pixels)
{
    for (std::size_t place = 0; place + 3 < pixels.size(); place += 4) {
        const unsigned alpha = pixels[place + 3];
        if (alpha == 0 || alpha == 255) {
            continue;
        }
        for (std::size_t channel = place; channel < place + 3; ++channel) {
            pixels[channel] = static_cast<std::uint8_t>(std::min((pixels[channel] * 255u + alpha / 2) / alpha, 255u));
        }
    }
}

du::SmartPtr<luk::ImageData> MakePicture(Frames frames) { return du::MakeCounted<luk::ImageData>(std::move(frames)); }

std::string Damage(std::string_view message) { return "the file is damaged: " + std::string(message); }

} // namespace luhost::io
