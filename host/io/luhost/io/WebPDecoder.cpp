#include <luhost/io/PictureParts.h>
#include <luhost/io/WebPDecoder.h>

#include <algorithm>
#include <memory>
#include <new>
#include <webp/decode.h>
#include <webp/demux.h>

namespace luhost::io
{

namespace
{

constexpr std::size_t kRiffHeader = 12;

const std::uint8_t* Bytes(std::string_view bytes) { return reinterpret_cast<const std::uint8_t*>(bytes.data()); }

bool DecodeStill(std::string_view bytes, std::uint64_t width, std::uint64_t height, Frames& frames)
{
    Pixels pixels = MakePixels(width, height);
    if (!WebPDecodeRGBAInto(Bytes(bytes), bytes.size(), pixels.data(), pixels.size(), static_cast<int>(width) * 4)) {
        return false;
    }
    frames.push_back(MakeFrame(width, height, std::move(pixels)));
    return true;
}

bool DecodeAnimation(WebPAnimDecoder& decoder, std::uint64_t width, std::uint64_t height, std::uint64_t count,
                     Frames& frames)
{
    int before = 0;
    while (frames.size() < count) {
        std::uint8_t* canvas = nullptr;
        int end = 0;
        if (!WebPAnimDecoderGetNext(&decoder, &canvas, &end)) {
            return false;
        }
        frames.push_back(MakeFrame(width, height, Pixels(canvas, canvas + width * height * 4), end - before));
        before = end;
    }
    return true;
}

bool DecodeAnimation(std::string_view bytes, const PictureLimits& limits, Frames& frames, std::string& problem)
{
    WebPAnimDecoderOptions options;
    if (!WebPAnimDecoderOptionsInit(&options)) {
        return false;
    }
    options.color_mode = MODE_RGBA;
    options.use_threads = 0;
    const WebPData data{Bytes(bytes), bytes.size()};
    const std::unique_ptr<WebPAnimDecoder, decltype(&WebPAnimDecoderDelete)> decoder(
        WebPAnimDecoderNew(&data, &options), WebPAnimDecoderDelete);
    WebPAnimInfo info{};
    if (!decoder || !WebPAnimDecoderGetInfo(decoder.get(), &info)) {
        return false;
    }
    const std::uint64_t count =
        std::min<std::uint64_t>(info.frame_count, static_cast<std::uint64_t>(std::max(limits.maximumFrames, 1)));
    return PictureBudget(limits).Take(info.canvas_width, info.canvas_height, problem, count) &&
           DecodeAnimation(*decoder, info.canvas_width, info.canvas_height, count, frames);
}

} // namespace

bool WebPDecoder::Recognises(std::string_view bytes) const
{
    return bytes.size() >= kRiffHeader && bytes.starts_with("RIFF") && bytes.substr(8).starts_with("WEBP");
}

du::SmartPtr<luk::ImageData> WebPDecoder::Decode(std::string_view bytes, std::string& problem) const
{
    const std::uint64_t size = std::uint64_t{ByteReader(bytes, false).At32(4)} + 8;
    if (size > bytes.size()) {
        problem = kCutOff;
        return nullptr;
    }
    bytes = bytes.substr(0, static_cast<std::size_t>(size));
    WebPBitstreamFeatures features{};
    if (WebPGetFeatures(Bytes(bytes), bytes.size(), &features) != VP8_STATUS_OK) {
        problem = Damage("its header cannot be read");
        return nullptr;
    }
    const auto width = static_cast<std::uint64_t>(features.width);
    const auto height = static_cast<std::uint64_t>(features.height);
    if (!PictureBudget(m_limits).Take(width, height, problem)) {
        return nullptr;
    }
    Frames frames;
    if (!(features.has_animation ? DecodeAnimation(bytes, m_limits, frames, problem)
                                 : DecodeStill(bytes, width, height, frames)) ||
        frames.empty()) {
        problem = problem.empty() ? Damage("a frame cannot be read") : problem;
        return nullptr;
    }
    return MakePicture(std::move(frames));
}

} // namespace luhost::io
