#include <luhost/io/JpegDecoder.h>
#include <luhost/io/PictureParts.h>

#include <array>
#include <csetjmp>

// In this order: the second needs the first, and the numbers in the third hang on what the second configures.
// clang-format off
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

namespace luhost::io
{

namespace
{

/// A progressive file may pass over the whole picture as often as it likes; real ones do it about ten times.
constexpr int kMaximumScans = 100;

/// One file on its way through the library, which leaves a step by a jump when it meets an error. Nothing in such a step
/// has a destructor; all that has lives in the caller.
struct Reading {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    jpeg_progress_mgr progress{};
    std::jmp_buf escape{};
    std::array<char, JMSG_LENGTH_MAX> message{};
    bool isCutOff = false;

    Reading();
    ~Reading() { jpeg_destroy_decompress(&info); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
};

[[noreturn]] void OnError(j_common_ptr info)
{
    auto* const reading = static_cast<Reading*>(info->client_data);
    reading->isCutOff = info->err->msg_code == JWRN_JPEG_EOF || info->err->msg_code == JERR_INPUT_EMPTY;
    info->err->format_message(info, reading->message.data());
    std::longjmp(reading->escape, 1);
}

/// Warnings say how the library would go on; where that means making pixels up, the file is damaged.
void OnMessage(j_common_ptr info, int level)
{
    if (level >= 0) {
        return;
    }
    switch (info->err->msg_code) {
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_MUST_RESYNC:
        OnError(info);
    default:
        break;
    }
}

void OnOutput(j_common_ptr) {}

void OnProgress(j_common_ptr info)
{
    auto* const reading = static_cast<Reading*>(info->client_data);
    if (reading->info.input_scan_number > kMaximumScans) {
        info->err->msg_code = JERR_NOTIMPL;
        OnError(info);
    }
}

Reading::Reading()
{
    info.err = jpeg_std_error(&errors);
    errors.error_exit = OnError;
    errors.emit_message = OnMessage;
    errors.output_message = OnOutput;
    progress.progress_monitor = OnProgress;
    info.client_data = this;
}

bool ReadHeader(Reading& reading, const unsigned char* bytes, unsigned long size)
{
    if (setjmp(reading.escape) != 0) {
        return false;
    }
    jpeg_create_decompress(&reading.info);
    reading.info.progress = &reading.progress;
    jpeg_mem_src(&reading.info, bytes, size);
    jpeg_save_markers(&reading.info, JPEG_APP0 + 1, 0xFFFF);
    jpeg_read_header(&reading.info, TRUE);
    return true;
}

bool IsFourColours(const Reading& reading)
{
    return reading.info.jpeg_color_space == JCS_CMYK || reading.info.jpeg_color_space == JCS_YCCK;
}

/// Four bytes a pixel, be it RGBA or CMYK.
bool ReadRows(Reading& reading, unsigned char* pixels)
{
    if (setjmp(reading.escape) != 0) {
        return false;
    }
    reading.info.out_color_space = IsFourColours(reading) ? JCS_CMYK : JCS_EXT_RGBA;
    jpeg_start_decompress(&reading.info);
    const std::size_t stride = std::size_t{reading.info.output_width} * 4;
    while (reading.info.output_scanline < reading.info.output_height) {
        JSAMPROW row = pixels + reading.info.output_scanline * stride;
        jpeg_read_scanlines(&reading.info, &row, 1);
    }
    jpeg_finish_decompress(&reading.info);
    return true;
}

void ConvertFromCmyk(Pixels& pixels, bool isInverted)
{
    for (std::size_t place = 0; place < pixels.size(); place += 4) {
        const unsigned black = isInverted ? pixels[place + 3] : 255u - pixels[place + 3];
        for (std::size_t channel = place; channel < place + 3; ++channel) {
            const unsigned colour = isInverted ? pixels[channel] : 255u - pixels[channel];
            pixels[channel] = static_cast<std::uint8_t>((colour * black + 127) / 255);
        }
        pixels[place + 3] = 255;
    }
}

/// The orientation in a camera's note, which is a TIFF directory; 1 when it says none.
unsigned ReadOrientation(std::string_view note)
{
    constexpr std::string_view kIntroduction("Exif\0\0", 6);
    constexpr std::uint16_t kOrientationTag = 0x0112;
    if (!note.starts_with(kIntroduction)) {
        return 1;
    }
    note.remove_prefix(kIntroduction.size());
    const ByteReader reader(note, note.starts_with("MM"));
    const std::size_t directory = reader.At32(4);
    const std::size_t count = reader.At16(directory);
    for (std::size_t index = 0; index < count; ++index) {
        const std::size_t entry = directory + 2 + index * 12;
        if (reader.At16(entry) == kOrientationTag) {
            return reader.At16(entry + 8);
        }
    }
    return 1;
}

unsigned FindOrientation(const Reading& reading)
{
    for (jpeg_saved_marker_ptr marker = reading.info.marker_list; marker; marker = marker->next) {
        const std::string_view note(reinterpret_cast<const char*>(marker->data), marker->data_length);
        if (const unsigned orientation = ReadOrientation(note); orientation != 1) {
            return orientation;
        }
    }
    return 1;
}

} // namespace

bool JpegDecoder::Recognises(std::string_view bytes) const { return bytes.starts_with("\xff\xd8\xff"); }

du::SmartPtr<luk::ImageData> JpegDecoder::Decode(std::string_view bytes, std::string& problem) const
{
    Reading reading;
    bool isRead = ReadHeader(reading, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    Pixels pixels;
    unsigned orientation = 1;
    if (isRead) {
        if (!PictureBudget(m_limits).Take(reading.info.image_width, reading.info.image_height, problem)) {
            return nullptr;
        }
        orientation = FindOrientation(reading); // the library lets go of the notes with the last row
        pixels = MakePixels(reading.info.image_width, reading.info.image_height);
        isRead = ReadRows(reading, pixels.data());
    }
    if (!isRead) {
        problem = reading.isCutOff ? kCutOff : Damage(reading.message.data());
        return nullptr;
    }
    if (IsFourColours(reading)) {
        ConvertFromCmyk(pixels, reading.info.saw_Adobe_marker != 0);
    }
    return MakePicture(
        {MakeOrientedFrame(reading.info.image_width, reading.info.image_height, std::move(pixels), orientation)});
}

} // namespace luhost::io
