#include <luhost/io/PictureParts.h>
#include <luhost/io/SvgDecoder.h>
#include <luhost/io/SvgGuard.h>

#include <algorithm>
#include <cairo.h>
#include <cmath>
#include <librsvg/rsvg.h>
#include <memory>
#include <new>

namespace luhost::io
{

namespace
{

constexpr double kPixelsToTheInch = 96;
/// A drawing may fill a canvas with a few bytes again and again, so that it gets less of it than a file of pixels.
constexpr std::uint64_t kMaximumDrawnPixels = std::uint64_t{1} << 24;

struct Deleter {
    void operator()(void* object) const { g_object_unref(object); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};

/// What went wrong in a call of the library.
class Error
{
public:
    ~Error() { g_clear_error(&m_error); }
    GError** Out() { return &m_error; }
    std::string_view GetMessage() const { return m_error ? m_error->message : ""; }

private:
    GError* m_error = nullptr;
};

using Handle = std::unique_ptr<RsvgHandle, Deleter>;
using Surface = std::unique_ptr<cairo_surface_t, Deleter>;

bool IsCutOff(std::string_view text, std::string_view message)
{
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return last == std::string_view::npos || text[last] != '>' ||
           message.find("remature end") != std::string_view::npos;
}

/// Without a base address, from which the library would find other files.
Handle ParseDocument(std::string_view text, std::string& problem)
{
    const std::unique_ptr<GInputStream, Deleter> stream(
        g_memory_input_stream_new_from_data(text.data(), static_cast<gssize>(text.size()), nullptr));
    Error error;
    Handle handle(
        rsvg_handle_new_from_stream_sync(stream.get(), nullptr, RSVG_HANDLE_FLAGS_NONE, nullptr, error.Out()));
    if (handle) {
        rsvg_handle_set_dpi(handle.get(), kPixelsToTheInch);
    } else {
        problem = IsCutOff(text, error.GetMessage()) ? kCutOff : Damage(error.GetMessage());
    }
    return handle;
}

struct Size {
    double width = 0;
    double height = 0;
};

/// From width and height, else from the view box, else from what is drawn.
Size FindSize(RsvgHandle* handle)
{
    Size size;
    if (rsvg_handle_get_intrinsic_size_in_pixels(handle, &size.width, &size.height)) {
        return size;
    }
    gboolean hasWidth = FALSE;
    gboolean hasHeight = FALSE;
    gboolean hasViewBox = FALSE;
    RsvgLength width{};
    RsvgLength height{};
    RsvgRectangle box{};
    rsvg_handle_get_intrinsic_dimensions(handle, &hasWidth, &width, &hasHeight, &height, &hasViewBox, &box);
    if (!hasViewBox) {
        Error error;
        return rsvg_handle_get_geometry_for_element(handle, nullptr, &box, nullptr, error.Out())
                   ? Size{box.x + box.width, box.y + box.height}
                   : Size{};
    }
    if (width.unit == RSVG_UNIT_PX && box.width > 0) {
        return {width.length, width.length * box.height / box.width};
    }
    if (height.unit == RSVG_UNIT_PX && box.height > 0) {
        return {height.length * box.width / box.height, height.length};
    }
    return {box.width, box.height};
}

std::uint64_t ToPixels(double length)
{
    constexpr double kMost = 1e18;
    return length > 0 ? static_cast<std::uint64_t>(std::clamp(std::round(length), 1.0, kMost)) : 0;
}

Pixels TakePixels(cairo_surface_t* surface, int width, int height)
{
    Pixels pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    auto out = pixels.begin();
    cairo_surface_flush(surface);
    for (int y = 0; y < height; ++y) {
        const auto* const row = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(surface) +
                                                                       static_cast<std::ptrdiff_t>(y) *
                                                                           cairo_image_surface_get_stride(surface));
        for (int x = 0; x < width; ++x) {
            for (const unsigned shift : {16u, 8u, 0u, 24u}) {
                *out++ = static_cast<std::uint8_t>((row[x] >> shift) & 0xFF);
            }
        }
    }
    DivideByAlpha(pixels);
    return pixels;
}

bool Draw(RsvgHandle* handle, int width, int height, Pixels& pixels, std::string& problem)
{
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<cairo_t, Deleter> context(cairo_create(surface.get()));
    const RsvgRectangle viewport{0, 0, static_cast<double>(width), static_cast<double>(height)};
    Error error;
    if (!rsvg_handle_render_document(handle, context.get(), &viewport, error.Out())) {
        problem = "it cannot be drawn: " + std::string(error.GetMessage());
        return false;
    }
    pixels = TakePixels(surface.get(), width, height);
    return true;
}

} // namespace

bool SvgDecoder::Recognises(std::string_view bytes) const { return SvgGuard(bytes).IsSvg(); }

du::SmartPtr<luk::ImageData> SvgDecoder::Decode(std::string_view bytes, std::string& problem) const
{
    SvgGuard guard(bytes);
    // Some filters the library does not survive, so that it must not even parse them; their size is not known yet.
    if (!guard.HasHarmlessEntities(problem) || !guard.HasHarmlessTexts(problem) ||
        !guard.HasHarmlessData(m_embedded, m_limits.maximumPixels, problem) || !guard.HasHarmlessFilters(1, problem)) {
        return nullptr;
    }
    const Handle handle = ParseDocument(bytes, problem);
    if (!handle) {
        return nullptr;
    }
    const Size size = FindSize(handle.get());
    const std::uint64_t width = ToPixels(size.width);
    const std::uint64_t height = ToPixels(size.height);
    PictureLimits limits = m_limits;
    limits.maximumPixels = std::min(limits.maximumPixels, kMaximumDrawnPixels);
    if (!PictureBudget(limits).Take(width, height, problem) || !guard.HasHarmlessFilters(width * height, problem)) {
        return nullptr;
    }
    const luk::ImageData::Frame frame{static_cast<int>(width), static_cast<int>(height), nullptr, 0};
    Frames frames{frame};
    if (m_vectors == VectorPictures::WithPixels) {
        Pixels pixels;
        if (!Draw(handle.get(), frame.width, frame.height, pixels, problem)) {
            return nullptr;
        }
        frames = {MakeFrame(width, height, std::move(pixels))};
    }
    return du::MakeCounted<luk::ImageData>(std::move(frames), std::make_shared<const std::string>(bytes));
}

} // namespace luhost::io
