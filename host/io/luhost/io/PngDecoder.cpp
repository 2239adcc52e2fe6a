#include <luhost/io/PictureParts.h>
#include <luhost/io/PngDecoder.h>

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <png.h>

namespace luhost::io
{

namespace
{

constexpr std::string_view kSignature("\x89PNG\r\n\x1a\n", 8);

/// One file on its way through the library, which leaves a step by a jump when it meets an error. Nothing in such a step
/// has a destructor; all that has lives in the caller.
struct Reading {
    std::string_view bytes;
    std::size_t position = 0;
    bool isCutOff = false;
    std::array<char, 160> message{};
    png_structp png = nullptr;
    png_infop info = nullptr;

    explicit Reading(std::string_view content);
    ~Reading() { png_destroy_read_struct(&png, &info, nullptr); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
};

[[noreturn]] void OnError(png_structp png, png_const_charp message)
{
    auto* const reading = static_cast<Reading*>(png_get_error_ptr(png));
    std::snprintf(reading->message.data(), reading->message.size(), "%s", message);
    png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

void OnRead(png_structp png, png_bytep target, png_size_t count)
{
    auto* const reading = static_cast<Reading*>(png_get_io_ptr(png));
    if (count > reading->bytes.size() - reading->position) {
        reading->isCutOff = true;
        png_error(png, kCutOff);
    }
    std::memcpy(target, reading->bytes.data() + reading->position, count);
    reading->position += count;
}

Reading::Reading(std::string_view content)
    : bytes(content), png(png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning)),
      info(png ? png_create_info_struct(png) : nullptr)
{
}

bool ReadHeader(Reading& reading)
{
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    png_set_read_fn(reading.png, &reading, OnRead);
    png_set_user_limits(reading.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_read_info(reading.png, reading.info);
    png_set_expand(reading.png);
    png_set_scale_16(reading.png);
    png_set_gray_to_rgb(reading.png);
    png_set_add_alpha(reading.png, 0xff, PNG_FILLER_AFTER);
    png_set_interlace_handling(reading.png);
    png_read_update_info(reading.png, reading.info);
    return true;
}

bool ReadRows(Reading& reading, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    png_read_image(reading.png, rows);
    png_read_end(reading.png, nullptr);
    return true;
}

/// No deflated data is more than about a thousand times smaller than what it stands for.
bool CanHold(std::string_view bytes, std::uint64_t width, std::uint64_t height, unsigned depth)
{
    constexpr std::uint64_t kHighestRatio = 1100;
    return height * (width * depth / 8) / kHighestRatio <= bytes.size();
}

} // namespace

bool PngDecoder::Recognises(std::string_view bytes) const { return bytes.starts_with(kSignature); }

du::SmartPtr<luk::ImageData> PngDecoder::Decode(std::string_view bytes, std::string& problem) const
{
    const ByteReader header(bytes, true);
    const std::uint32_t width = header.At32(16);
    const std::uint32_t height = header.At32(20);
    if (bytes.size() < 33) {
        problem = kCutOff;
        return nullptr;
    }
    if (!PictureBudget(m_limits).Take(width, height, problem)) {
        return nullptr;
    }
    Reading reading(bytes);
    if (!reading.info) {
        throw std::bad_alloc();
    }
    Pixels pixels;
    std::vector<png_bytep> rows;
    bool isRead = ReadHeader(reading);
    if (isRead && !CanHold(bytes, width, height, header.At8(24))) {
        isRead = false;
        reading.isCutOff = true;
    }
    if (isRead) {
        pixels = MakePixels(width, height);
        for (std::size_t row = 0; row < height; ++row) {
            rows.push_back(&pixels[row * width * 4]);
        }
        isRead =
            png_get_rowbytes(reading.png, reading.info) == std::size_t{width} * 4 && ReadRows(reading, rows.data());
    }
    if (!isRead) {
        problem = reading.isCutOff ? kCutOff : Damage(reading.message.data());
        return nullptr;
    }
    return MakePicture({MakeFrame(width, height, std::move(pixels))});
}

} // namespace luhost::io
