#include <luhost/io/PictureParts.h>
#include <luhost/io/TiffDecoder.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <tiffio.h>

namespace luhost::io
{

namespace
{

/// The bytes as the library sees a file, and what it says of them.
struct Source {
    std::string_view bytes;
    std::uint64_t position = 0;
    bool isCutOff = false;
    std::array<char, 256> message{};
};

Source& SourceOf(thandle_t handle) { return *static_cast<Source*>(handle); }

tmsize_t OnRead(thandle_t handle, void* target, tmsize_t size)
{
    Source& source = SourceOf(handle);
    const std::uint64_t left = source.bytes.size() - std::min<std::uint64_t>(source.position, source.bytes.size());
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(static_cast<std::uint64_t>(size), left));
    if (count > 0) {
        std::memcpy(target, source.bytes.data() + source.position, count);
    }
    source.isCutOff = source.isCutOff || count < static_cast<std::size_t>(size);
    source.position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t OnWrite(thandle_t, void*, tmsize_t) { return -1; }

toff_t OnSeek(thandle_t handle, toff_t offset, int origin)
{
    Source& source = SourceOf(handle);
    source.position = offset + (origin == SEEK_CUR ? source.position : origin == SEEK_END ? source.bytes.size() : 0);
    return source.position;
}

int OnClose(thandle_t) { return 0; }

toff_t OnSize(thandle_t handle) { return SourceOf(handle).bytes.size(); }

/// Keeps the first message, which is the cause of those that follow. @return that nobody else is to be told
LUHOST_PRINTF_LIKE(4, 0)
int OnError(TIFF*, void* user, const char*, const char* format, std::va_list values)
{
    Source& source = *static_cast<Source*>(user);
    if (source.message[0] == '\0') {
        std::vsnprintf(source.message.data(), source.message.size(), format, values);
    }
    return 1;
}

int OnWarning(TIFF*, void*, const char*, const char*, std::va_list) { return 1; }

using File = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

File OpenFile(Source& source, const PictureLimits& limits)
{
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                   TIFFOpenOptionsFree);
    if (!options) {
        throw std::bad_alloc();
    }
    constexpr std::uint64_t kBytesAPixel = 8;
    constexpr std::uint64_t kBytesForTheRest = std::uint64_t{1} << 24;
    constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 40;
    const std::uint64_t mostBytes = std::min(limits.maximumPixels, kMostPixels) * kBytesAPixel + kBytesForTheRest;
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(mostBytes));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, &source);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnWarning, nullptr);
    return {TIFFClientOpenExt("TIFF", "rm", &source, OnRead, OnWrite, OnSeek, OnClose, OnSize, nullptr, nullptr,
                              options.get()),
            TIFFClose};
}

enum class Alpha { None, Plain, Multiplied };

/// Says to the library that alpha is multiplied already, since it would multiply a plain one in, and lose colours.
Alpha TakeAlphaAsItIs(TIFF& file)
{
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (!TIFFGetFieldDefaulted(&file, TIFFTAG_EXTRASAMPLES, &count, &kinds) || count == 0) {
        return Alpha::None;
    }
    const std::uint16_t kind = kinds[0];
    if (kind != EXTRASAMPLE_UNASSALPHA) {
        return kind == EXTRASAMPLE_ASSOCALPHA ? Alpha::Multiplied : Alpha::None;
    }
    std::vector<std::uint16_t> changed(kinds, kinds + count);
    changed[0] = EXTRASAMPLE_ASSOCALPHA;
    TIFFSetField(&file, TIFFTAG_EXTRASAMPLES, count, changed.data());
    return Alpha::Plain;
}

bool IsThumbnailOrMask(TIFF& file)
{
    std::uint32_t kind = 0;
    return TIFFGetField(&file, TIFFTAG_SUBFILETYPE, &kind) && (kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0;
}

bool ReadPixels(TIFF& file, std::uint32_t width, std::uint32_t height, Pixels& pixels, Source& source)
{
    TIFFRGBAImage image{};
    std::array<char, 1024> message{};
    if (!TIFFRGBAImageBegin(&image, &file, 1, message.data())) {
        if (source.message[0] == '\0') {
            std::snprintf(source.message.data(), source.message.size(), "%.200s", message.data());
        }
        return false;
    }
    image.req_orientation = ORIENTATION_TOPLEFT;
    std::vector<std::uint32_t> raster(std::size_t{width} * height);
    const bool isRead = TIFFRGBAImageGet(&image, raster.data(), width, height) != 0;
    TIFFRGBAImageEnd(&image);
    pixels.reserve(raster.size() * 4);
    for (const std::uint32_t pixel : raster) {
        pixels.insert(pixels.end(),
                      {static_cast<std::uint8_t>(TIFFGetR(pixel)), static_cast<std::uint8_t>(TIFFGetG(pixel)),
                       static_cast<std::uint8_t>(TIFFGetB(pixel)), static_cast<std::uint8_t>(TIFFGetA(pixel))});
    }
    return isRead;
}

/// Reads the page as its rows are stored; the library would turn it by halves only.
bool ReadPage(TIFF& file, PictureBudget& budget, Frames& frames, Source& source, std::string& problem)
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    TIFFGetField(&file, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(&file, TIFFTAG_IMAGELENGTH, &height);
    TIFFGetFieldDefaulted(&file, TIFFTAG_ORIENTATION, &orientation);
    if (!budget.Take(width, height, problem)) {
        return false;
    }
    TIFFSetField(&file, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const Alpha alpha = TakeAlphaAsItIs(file);
    Pixels pixels;
    if (!ReadPixels(file, width, height, pixels, source)) {
        return false;
    }
    if (alpha == Alpha::Multiplied) {
        DivideByAlpha(pixels);
    }
    frames.push_back(MakeOrientedFrame(width, height, std::move(pixels), orientation));
    return true;
}

bool ReadPages(TIFF& file, const PictureLimits& limits, Frames& frames, Source& source, std::string& problem)
{
    PictureBudget budget(limits);
    const auto maximumFrames = static_cast<std::size_t>(std::max(limits.maximumFrames, 1));
    for (;;) {
        const bool isWanted = frames.empty() || !IsThumbnailOrMask(file);
        if (isWanted && !ReadPage(file, budget, frames, source, problem)) {
            return false;
        }
        if (frames.size() >= maximumFrames || TIFFLastDirectory(&file)) {
            return true;
        }
        if (!TIFFReadDirectory(&file)) {
            return false;
        }
    }
}

} // namespace

bool TiffDecoder::Recognises(std::string_view bytes) const
{
    constexpr std::string_view kBeginnings[] = {{"II*\0", 4}, {"MM\0*", 4}, {"II+\0", 4}, {"MM\0+", 4}};
    return std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                       [&](std::string_view beginning) { return bytes.starts_with(beginning); });
}

du::SmartPtr<luk::ImageData> TiffDecoder::Decode(std::string_view bytes, std::string& problem) const
{
    Source source{bytes};
    const File file = OpenFile(source, m_limits);
    Frames frames;
    if (!file || !ReadPages(*file, m_limits, frames, source, problem)) {
        if (problem.empty()) {
            problem = source.isCutOff ? kCutOff : Damage(source.message.data());
        }
        return nullptr;
    }
    return MakePicture(std::move(frames));
}

} // namespace luhost::io
