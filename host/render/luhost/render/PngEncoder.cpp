#include <luhost/render/PngEncoder.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <new>
#include <png.h>
#include <span>
#include <vector>

namespace luhost::render
{

namespace
{

/// Fast, and a quarter larger than the best.
constexpr int kCompressionLevel = 2;

[[noreturn]] void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }

void OnWarning(png_structp, png_const_charp) {}

bool Append(std::string& text, const png_byte* bytes, std::size_t count) noexcept
{
    try {
        text.append(reinterpret_cast<const char*>(bytes), count);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void OnWrite(png_structp png, png_bytep bytes, png_size_t count)
{
    if (!Append(*static_cast<std::string*>(png_get_io_ptr(png)), bytes, count)) {
        png_error(png, "out of memory");
    }
}

void OnFlush(png_structp) {}

std::uint32_t DivideByAlpha(std::uint32_t pixel) noexcept
{
    const std::uint32_t alpha = pixel >> 24;
    if (alpha == 0xFF || alpha == 0) {
        return alpha == 0 ? 0 : pixel;
    }
    std::uint32_t divided = alpha << 24;
    for (const unsigned shift : {16U, 8U, 0U}) {
        const std::uint32_t channel = (pixel >> shift) & 0xFF;
        divided |= std::min((channel * 0xFF + alpha / 2) / alpha, std::uint32_t{0xFF}) << shift;
    }
    return divided;
}

/// Red, green, blue and alpha.
std::array<png_byte, 4> ToBytes(std::uint32_t pixel) noexcept
{
    return {static_cast<png_byte>(pixel >> 16), static_cast<png_byte>(pixel >> 8), static_cast<png_byte>(pixel),
            static_cast<png_byte>(pixel >> 24)};
}

/// One file on its way through the library, which leaves Run by a jump when it meets an error: nothing there has a
/// destructor.
class Writing
{
public:
    Writing(const Raster& pixels, std::string& out)
        : m_pixels(pixels), m_isOpaque(pixels.IsOpaque()),
          m_row(static_cast<std::size_t>(pixels.width) * BytesPerPixel()),
          m_png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning)),
          m_info(m_png ? png_create_info_struct(m_png) : nullptr)
    {
        if (m_info) {
            png_set_write_fn(m_png, &out, OnWrite, OnFlush);
        }
    }
    ~Writing() { png_destroy_write_struct(&m_png, &m_info); }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    bool Run()
    {
        if (!m_info || setjmp(png_jmpbuf(m_png)) != 0) {
            return false;
        }
        png_set_user_limits(m_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(m_png, m_info, static_cast<png_uint_32>(m_pixels.width), static_cast<png_uint_32>(m_pixels.height),
                     8, m_isOpaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_compression_level(m_png, kCompressionLevel);
        png_set_filter(m_png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
        png_write_info(m_png, m_info);
        for (int y = 0; y < m_pixels.height; ++y) {
            FillRow(y);
            png_write_row(m_png, m_row.data());
        }
        png_write_end(m_png, nullptr);
        return true;
    }

private:
    std::size_t BytesPerPixel() const noexcept { return m_isOpaque ? 3 : 4; }

    void FillRow(int y) noexcept
    {
        const auto width = static_cast<std::size_t>(m_pixels.width);
        const auto row = std::span(m_pixels.pixels).subspan(static_cast<std::size_t>(y) * width, width);
        m_isOpaque ? Fill<3>(row) : Fill<4>(row);
    }

    template <std::size_t bytesPerPixel>
    void Fill(std::span<const std::uint32_t> row) noexcept
    {
        png_bytep out = m_row.data();
        std::uint32_t last = 0;
        std::array<png_byte, 4> bytes{};
        for (const std::uint32_t pixel : row) {
            // Most pixels are as their neighbours.
            if (pixel != last) {
                last = pixel;
                bytes = ToBytes(DivideByAlpha(pixel));
            }
            std::memcpy(out, bytes.data(), bytesPerPixel);
            out += bytesPerPixel;
        }
    }

    const Raster& m_pixels;
    const bool m_isOpaque;
    std::vector<png_byte> m_row;
    png_structp m_png;
    png_infop m_info;
};

} // namespace

bool EncodePng(const Raster& pixels, std::string& png)
{
    png.clear();
    return Writing(pixels, png).Run();
}

} // namespace luhost::render
