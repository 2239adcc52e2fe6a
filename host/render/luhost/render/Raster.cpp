#include <luhost/render/Raster.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <utility>

namespace luhost::render
{

namespace
{

/// Samples along each side of a pixel at most; what is smaller still comes from a smaller version of the picture.
constexpr int kMostSamples = 4;
/// Pixels by which the border of a picture is continued.
constexpr double kBleed = 3.0;

using Channels = std::array<float, 4>;

Channels Split(std::uint32_t pixel) noexcept
{
    return {static_cast<float>(pixel >> 24), static_cast<float>((pixel >> 16) & 0xFF),
            static_cast<float>((pixel >> 8) & 0xFF), static_cast<float>(pixel & 0xFF)};
}

void Add(Channels& sum, const Channels& part, float weight) noexcept
{
    for (std::size_t i = 0; i < sum.size(); ++i) {
        sum[i] += part[i] * weight;
    }
}

std::uint32_t Join(const Channels& sum, float weight) noexcept
{
    std::uint32_t pixel = 0;
    for (const float channel : sum) {
        pixel = (pixel << 8) | static_cast<std::uint32_t>(std::lround(channel * weight));
    }
    return pixel;
}

/// Two neighbouring pixels and how much of the second one, at a coordinate in which the first pixel's middle is 0.
struct Between {
    int first;
    int second;
    float part;
};

Between FindBetween(double position, int count) noexcept
{
    const double clamped = std::clamp(position, 0.0, static_cast<double>(count - 1));
    const int first = static_cast<int>(clamped);
    return {first, std::min(first + 1, count - 1), static_cast<float>(clamped - first)};
}

Channels Interpolate(const Raster& raster, double x, double y) noexcept
{
    const Between column = FindBetween(x, raster.width);
    const Between row = FindBetween(y, raster.height);
    Channels sum{};
    Add(sum, Split(raster.At(column.first, row.first)), (1.0F - column.part) * (1.0F - row.part));
    Add(sum, Split(raster.At(column.second, row.first)), column.part * (1.0F - row.part));
    Add(sum, Split(raster.At(column.first, row.second)), (1.0F - column.part) * row.part);
    Add(sum, Split(raster.At(column.second, row.second)), column.part * row.part);
    return sum;
}

class Resampler
{
public:
    Resampler(const RasterLevels& picture, const Corners& corners)
        : m_picture(picture), m_toUnit(Homography::ToUnitSquare(corners)), m_width(picture.GetLevel(0).width),
          m_height(picture.GetLevel(0).height)
    {
    }

    std::uint32_t At(int column, int row) const
    {
        dg::DPoint2D middle;
        if (!MapToPicture(column + 0.5, row + 0.5, middle)) {
            return 0;
        }
        const double step = StepAt(column, row, middle);
        const int samples = std::clamp(static_cast<int>(std::ceil(step - 1e-6)), 1, kMostSamples);
        const std::size_t level = LevelFor(step / samples);
        const Raster& raster = m_picture.GetLevel(level);
        const double scale = std::ldexp(1.0, -static_cast<int>(level));
        Channels sum{};
        int count = 0;
        for (int i = 0; i < samples * samples; ++i) {
            const int line = i / samples;
            dg::DPoint2D point;
            if (MapToPicture(column + (i % samples + 0.5) / samples, row + (line + 0.5) / samples, point)) {
                Add(sum, Interpolate(raster, point.x * scale - 0.5, point.y * scale - 0.5), 1.0F);
                ++count;
            }
        }
        return count == 0 ? 0 : Join(sum, 1.0F / static_cast<float>(count));
    }

private:
    bool MapToPicture(double x, double y, dg::DPoint2D& point) const noexcept
    {
        if (!m_toUnit.Map(x, y, point)) {
            return false;
        }
        point = {point.x * m_width, point.y * m_height};
        return true;
    }

    /// Pixels of the picture from one pixel to the next, to the right or down, whichever is more.
    double StepAt(int column, int row, const dg::DPoint2D& middle) const noexcept
    {
        dg::DPoint2D right = middle;
        dg::DPoint2D below = middle;
        if (!MapToPicture(column + 1.5, row + 0.5, right) || !MapToPicture(column + 0.5, row + 1.5, below)) {
            return 1.0;
        }
        return std::max(std::hypot(right.x - middle.x, right.y - middle.y),
                        std::hypot(below.x - middle.x, below.y - middle.y));
    }

    std::size_t LevelFor(double step) const noexcept
    {
        std::size_t level = 0;
        while (step > 1.5 && level + 1 < m_picture.GetLevelCount()) {
            step *= 0.5;
            ++level;
        }
        return level;
    }

    const RasterLevels& m_picture;
    Homography m_toUnit;
    int m_width;
    int m_height;
};

/// Where a row of pixels and some above and below meet an outline, and how far left and right of it colour is wanted.
struct Stretch {
    double left;
    double right;
};

Stretch StretchOf(const Polygon& outline, double row)
{
    const double top = row - kBleed;
    const double bottom = row + 1.0 + kBleed;
    Stretch stretch{HUGE_VAL, -HUGE_VAL};
    for (std::size_t i = 0; i < outline.size(); ++i) {
        dg::DPoint2D from = outline[i];
        dg::DPoint2D to = outline[(i + 1) % outline.size()];
        if (from.y > to.y) {
            std::swap(from, to);
        }
        if (to.y < top || from.y > bottom) {
            continue;
        }
        const double slope = to.y > from.y ? (to.x - from.x) / (to.y - from.y) : 0.0;
        const double atTop = from.y >= top ? from.x : from.x + (top - from.y) * slope;
        const double atBottom = to.y <= bottom ? to.x : from.x + (bottom - from.y) * slope;
        stretch.left = std::min({stretch.left, atTop, atBottom});
        stretch.right = std::max({stretch.right, atTop, atBottom});
    }
    return {stretch.left - kBleed, stretch.right + kBleed};
}

} // namespace

bool Raster::IsOpaque() const noexcept
{
    return std::all_of(pixels.begin(), pixels.end(), [](std::uint32_t pixel) { return (pixel >> 24) == 0xFF; });
}

Raster ToRaster(const luk::ImageData::Frame& frame)
{
    Raster raster(frame.width, frame.height);
    const std::uint8_t* source = frame.pixels->data();
    for (std::uint32_t& pixel : raster.pixels) {
        const std::uint32_t alpha = source[3];
        const auto multiplied = [&](int channel) { return (source[channel] * alpha + 127) / 255; };
        pixel = (alpha << 24) | (multiplied(0) << 16) | (multiplied(1) << 8) | multiplied(2);
        source += 4;
    }
    return raster;
}

Raster Halve(const Raster& raster)
{
    Raster half((raster.width + 1) / 2, (raster.height + 1) / 2);
    for (int y = 0; y < half.height; ++y) {
        const int below = std::min(2 * y + 1, raster.height - 1);
        for (int x = 0; x < half.width; ++x) {
            const int right = std::min(2 * x + 1, raster.width - 1);
            Channels sum{};
            Add(sum, Split(raster.At(2 * x, 2 * y)), 1.0F);
            Add(sum, Split(raster.At(right, 2 * y)), 1.0F);
            Add(sum, Split(raster.At(2 * x, below)), 1.0F);
            Add(sum, Split(raster.At(right, below)), 1.0F);
            half.At(x, y) = Join(sum, 0.25F);
        }
    }
    return half;
}

CairoSurface WrapPixels(Raster& raster)
{
    constexpr int kBytesPerPixel = 4;
    return CairoSurface(
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(raster.pixels.data()),
                                            raster.IsOpaque() ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32, raster.width,
                                            raster.height, raster.width * kBytesPerPixel));
}

RasterLevels::RasterLevels(Raster raster)
{
    m_levels.push_back(std::move(raster));
    while (m_levels.back().width > 1 || m_levels.back().height > 1) {
        m_levels.push_back(Halve(m_levels.back()));
    }
}

PixelWindow WindowOf(const Polygon& outline, const Sheet& sheet)
{
    double left = sheet.width;
    double top = sheet.height;
    double right = 0.0;
    double bottom = 0.0;
    for (const dg::DPoint2D& point : outline) {
        left = std::min(left, point.x);
        top = std::min(top, point.y);
        right = std::max(right, point.x);
        bottom = std::max(bottom, point.y);
    }
    const auto lower = [](double value) { return static_cast<int>(std::floor(std::max(value, 0.0))) - 1; };
    const auto upper = [](double value, double limit) {
        return static_cast<int>(std::ceil(std::min(value, limit))) + 1;
    };
    const PixelWindow window{lower(left), lower(top), 0, 0};
    return {window.left, window.top, std::max(upper(right, sheet.width) - window.left, 0),
            std::max(upper(bottom, sheet.height) - window.top, 0)};
}

Raster Resample(const RasterLevels& picture, const Corners& corners, const Polygon& outline, const PixelWindow& window)
{
    Raster result(window.width, window.height);
    const Resampler resampler(picture, corners);
    for (int y = 0; y < window.height; ++y) {
        const Stretch stretch = StretchOf(outline, window.top + y);
        const double first = std::clamp(std::floor(stretch.left) - window.left, 0.0, 1.0 * window.width);
        const double last = std::clamp(std::ceil(stretch.right) - window.left, 0.0, 1.0 * window.width);
        for (int x = static_cast<int>(first); x < static_cast<int>(last); ++x) {
            result.At(x, y) = resampler.At(window.left + x, window.top + y);
        }
    }
    return result;
}

} // namespace luhost::render
