#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace luk
{

/// A decoded picture: one frame or several, and the vector drawing that it was made from, if any.
///
/// Ownership: counted and immutable; copies made by turning share what they do not change.
///
/// Threads: made on any thread, read on any thread.
class LUHOST_API ImageData : public du::RefCounted
{
public:
    /// Red, green, blue and alpha of 8 bits each, not multiplied by alpha, row by row from the top left corner.
    using Pixels = std::vector<std::uint8_t>;

    struct Frame {
        int width = 0;  ///< in pixels
        int height = 0; ///< in pixels
        std::shared_ptr<const Pixels> pixels;
        int delayMilliseconds = 0; ///< until the next frame
    };

    /// @param frames each with as many pixels as its size says, or with none where the document is to be drawn instead
    /// @param vectorSource the SVG document that the frames were drawn from; null for a picture of pixels
    explicit ImageData(std::vector<Frame> frames, std::shared_ptr<const std::string> vectorSource = nullptr);
    ~ImageData() override;

    std::size_t GetFrameCount() const noexcept { return m_frames.size(); }
    const Frame& GetFrame(std::size_t index) const { return m_frames.at(index); }

    /// Size of frame 0 in pixels; 0 without a frame.
    int GetWidth() const noexcept { return m_frames.empty() ? 0 : m_frames.front().width; }
    int GetHeight() const noexcept { return m_frames.empty() ? 0 : m_frames.front().height; }

    /// As it was before any turn; null for a picture of pixels.
    const std::shared_ptr<const std::string>& GetVectorSource() const noexcept { return m_vectorSource; }
    /// How often the picture was turned clockwise since it was decoded: 0 to 3.
    int GetQuarterTurns() const noexcept { return m_quarterTurns; }

    std::size_t GetByteCount() const noexcept;

    /// The picture turned clockwise. All that turn the same picture the same way share the pixels for as long as one of them
    /// is there.
    /// @param quarterTurns any number, also negative; taken modulo 4
    du::SmartPtr<ImageData> CreateCWRotated(int quarterTurns) const;

private:
    class TurnedPixels;

    std::vector<Frame> m_frames;
    std::shared_ptr<const std::string> m_vectorSource;
    std::shared_ptr<TurnedPixels> m_turnedPixels; ///< of this picture and all that were made from it
    int m_quarterTurns = 0;
};

} // namespace luk
