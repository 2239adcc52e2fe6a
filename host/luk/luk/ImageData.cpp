#include <luk/ImageData.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <utility>

namespace luk
{

namespace
{

constexpr std::size_t kPixelBytes = 4;

/// Side of the blocks that are turned one after the other, in pixels: a row of a block fills a line of the cache.
constexpr std::size_t kBlockSide = 16;

/// Where the pixel of column x and row y goes: start + x * perColumn + y * perRow, counted in pixels and modulo the
/// range of the type, so that a step back is a number as well.
struct Targets {
    std::size_t start;
    std::size_t perColumn;
    std::size_t perRow;
};

Targets TargetsOfTurn(int quarterTurns, std::size_t width, std::size_t height)
{
    const std::size_t back = ~std::size_t{0};
    switch (quarterTurns) {
    case 1:
        return {height - 1, height, back};
    case 2:
        return {width * height - 1, back, back * width};
    default:
        return {(width - 1) * height, back * height, 1};
    }
}

void CopyBlock(const std::uint8_t* from, std::uint8_t* to, const Targets& targets, std::size_t width, std::size_t left,
               std::size_t right, std::size_t top, std::size_t bottom)
{
    for (std::size_t y = top; y < bottom; ++y) {
        const std::uint8_t* pixel = from + (y * width + left) * kPixelBytes;
        std::size_t target = targets.start + left * targets.perColumn + y * targets.perRow;
        for (std::size_t x = left; x < right; ++x) {
            std::memcpy(to + target * kPixelBytes, pixel, kPixelBytes);
            pixel += kPixelBytes;
            target += targets.perColumn;
        }
    }
}

bool HasAllPixels(const ImageData::Frame& frame)
{
    return frame.pixels && frame.width > 0 && frame.height > 0 &&
           frame.pixels->size() ==
               static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * kPixelBytes;
}

std::shared_ptr<const ImageData::Pixels> TurnPixels(const ImageData::Frame& frame, int quarterTurns)
{
    const auto width = static_cast<std::size_t>(frame.width);
    const auto height = static_cast<std::size_t>(frame.height);
    const Targets targets = TargetsOfTurn(quarterTurns, width, height);
    auto turned = std::make_shared<ImageData::Pixels>(frame.pixels->size());
    for (std::size_t top = 0; top < height; top += kBlockSide) {
        for (std::size_t left = 0; left < width; left += kBlockSide) {
            CopyBlock(frame.pixels->data(), turned->data(), targets, width, left, std::min(left + kBlockSide, width),
                      top, std::min(top + kBlockSide, height));
        }
    }
    return turned;
}

} // namespace

/// The pixels of each frame by the turn from the picture that was decoded, as far as somebody has them.
class ImageData::TurnedPixels
{
public:
    explicit TurnedPixels(const std::vector<Frame>& frames)
    {
        for (const Frame& frame : frames) {
            m_byTurn.front().emplace_back(frame.pixels);
        }
    }

    /// A frame without the pixels that its size asks for has none to turn, and so none afterwards.
    std::shared_ptr<const Pixels> Get(const Frame& frame, std::size_t index, int quarterTurns, int turnsInAll)
    {
        if (!HasAllPixels(frame)) {
            return nullptr;
        }
        const std::lock_guard lock(m_mutex);
        std::vector<std::weak_ptr<const Pixels>>& known = m_byTurn.at(static_cast<std::size_t>(turnsInAll));
        if (known.size() <= index) {
            known.resize(index + 1);
        }
        std::shared_ptr<const Pixels> pixels = known[index].lock();
        if (!pixels) {
            pixels = TurnPixels(frame, quarterTurns);
            known[index] = pixels;
        }
        return pixels;
    }

private:
    std::mutex m_mutex;
    std::array<std::vector<std::weak_ptr<const Pixels>>, 4> m_byTurn;
};

ImageData::ImageData(std::vector<Frame> frames, std::shared_ptr<const std::string> vectorSource)
    : m_frames(std::move(frames)), m_vectorSource(std::move(vectorSource)),
      m_turnedPixels(std::make_shared<TurnedPixels>(m_frames))
{
}

ImageData::~ImageData() = default;

std::size_t ImageData::GetByteCount() const noexcept
{
    std::size_t bytes = m_vectorSource ? m_vectorSource->size() : 0;
    for (const Frame& frame : m_frames) {
        bytes += frame.pixels ? frame.pixels->size() : 0;
    }
    return bytes;
}

du::SmartPtr<ImageData> ImageData::CreateCWRotated(int quarterTurns) const
{
    const int turns = (quarterTurns % 4 + 4) % 4;
    auto turned = du::MakeCounted<ImageData>(m_frames, m_vectorSource);
    turned->m_turnedPixels = m_turnedPixels;
    turned->m_quarterTurns = (m_quarterTurns + turns) % 4;
    for (std::size_t index = 0; turns != 0 && index < m_frames.size(); ++index) {
        Frame& frame = turned->m_frames[index];
        frame.pixels = m_turnedPixels->Get(m_frames[index], index, turns, turned->m_quarterTurns);
        if (turns % 2 != 0) {
            std::swap(frame.width, frame.height);
        }
    }
    return turned;
}

} // namespace luk
