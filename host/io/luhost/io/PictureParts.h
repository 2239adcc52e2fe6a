#pragma once

#include <luhost/io/PictureDecoders.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace luhost::io
{

using Pixels = luk::ImageData::Pixels;
using Frames = std::vector<luk::ImageData::Frame>;

inline constexpr const char* kCutOff = "the file is cut off";

/// Counts what a file claims against the limits, before memory is asked for.
class PictureBudget
{
public:
    explicit PictureBudget(const PictureLimits& limits) : m_limits(limits) {}

    /// Counts frames of a size. @return false, with the reason, when that is too much or nothing at all
    bool Take(std::uint64_t width, std::uint64_t height, std::string& problem, std::uint64_t frames = 1);

private:
    PictureLimits m_limits;
    std::uint64_t m_pixels = 0;
};

/// Numbers of a file, which may end anywhere: what lies beyond the end is 0.
class ByteReader
{
public:
    ByteReader(std::string_view bytes, bool isBigEndian) : m_bytes(bytes), m_isBigEndian(isBigEndian) {}

    std::uint8_t At8(std::size_t position) const
    {
        return position < m_bytes.size() ? static_cast<std::uint8_t>(m_bytes[position]) : std::uint8_t{0};
    }
    std::uint16_t At16(std::size_t position) const { return static_cast<std::uint16_t>(Join(position, 2)); }
    std::uint32_t At32(std::size_t position) const { return Join(position, 4); }

private:
    std::uint32_t Join(std::size_t position, std::size_t count) const;

    std::string_view m_bytes;
    bool m_isBigEndian;
};

Pixels MakePixels(std::uint64_t width, std::uint64_t height);

luk::ImageData::Frame MakeFrame(std::uint64_t width, std::uint64_t height, Pixels pixels, int delayMilliseconds = 0);

/// @param orientation 1 to 8 as TIFF and EXIF count: where the first row and column of the file belong
luk::ImageData::Frame MakeOrientedFrame(std::uint64_t width, std::uint64_t height, Pixels pixels, unsigned orientation);

/// Takes back a multiplication of the colours by alpha.
void DivideByAlpha(Pixels& pixels);

du::SmartPtr<luk::ImageData> MakePicture(Frames frames);

/// What a library says of a file, as a reason.
std::string Damage(std::string_view message);

} // namespace luhost::io
