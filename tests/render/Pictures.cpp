#include "Pictures.h"

#include <luhost/render/CairoHandles.h>
#include <luhost/render/VectorDocument.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace test
{

namespace
{

Pixels TakePixels(cairo_surface_t* surface)
{
    Pixels pixels;
    if (cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS) {
        pixels.width = cairo_image_surface_get_width(surface);
        pixels.height = cairo_image_surface_get_height(surface);
        pixels.words.resize(static_cast<std::size_t>(pixels.width * pixels.height));
        std::memcpy(pixels.words.data(), cairo_image_surface_get_data(surface), pixels.words.size() * 4);
        if (cairo_image_surface_get_format(surface) == CAIRO_FORMAT_RGB24) {
            std::for_each(pixels.words.begin(), pixels.words.end(), [](std::uint32_t& word) { word |= 0xFF000000; });
        }
    }
    return pixels;
}

} // namespace

char Pixels::ColorAt(double x, double y) const
{
    switch (At(static_cast<int>(std::floor(x)), static_cast<int>(std::floor(y)))) {
    case 0xFFFF0000:
        return 'R';
    case 0xFF00FF00:
        return 'G';
    case 0xFF0000FF:
        return 'B';
    case 0xFFFFFF00:
        return 'Y';
    case 0xFFFFFFFF:
        return 'W';
    case 0xFF000000:
        return 'K';
    case 0:
        return '.';
    default:
        return '?';
    }
}

Pixels DecodePng(const std::string& png)
{
    std::string rest = png;
    const auto read = [](void* closure, unsigned char* bytes, unsigned int count) {
        auto& text = *static_cast<std::string*>(closure);
        if (text.size() < count) {
            return CAIRO_STATUS_READ_ERROR;
        }
        std::memcpy(bytes, text.data(), count);
        text.erase(0, count);
        return CAIRO_STATUS_SUCCESS;
    };
    return TakePixels(luhost::render::CairoSurface(cairo_image_surface_create_from_png_stream(read, &rest)).get());
}

Pixels ShowSvg(const std::string& svg, int width, int height)
{
    const auto document = luhost::render::VectorDocument::Read(svg);
    if (!document) {
        return {};
    }
    const luhost::render::CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    document->Draw(luhost::render::CairoContext(cairo_create(surface.get())).get(), width, height);
    return TakePixels(surface.get());
}

du::SmartPtr<luk::ImageData> MakePicture(int width, int height, const std::vector<std::uint32_t>& rgba)
{
    luk::ImageData::Pixels pixels;
    for (const std::uint32_t word : rgba) {
        for (const unsigned shift : {24U, 16U, 8U, 0U}) {
            pixels.push_back(static_cast<std::uint8_t>(word >> shift));
        }
    }
    return du::MakeCounted<luk::ImageData>(std::vector<luk::ImageData::Frame>{
        {width, height, std::make_shared<const luk::ImageData::Pixels>(std::move(pixels)), 0}});
}

du::SmartPtr<luk::ImageData> MakeQuarters()
{
    std::vector<std::uint32_t> rgba;
    for (int i = 0; i < 24 * 16; ++i) {
        const bool left = i % 24 < 12;
        const bool upper = i / 24 < 8;
        rgba.push_back(upper ? (left ? 0xFF0000FF : 0x00FF00FF) : (left ? 0xFFFF00FF : 0x0000FFFF));
    }
    return MakePicture(24, 16, rgba);
}

du::SmartPtr<luk::ImageData> MakeVectorQuarters()
{
    const luk::ImageData::Frame frame = MakeQuarters()->GetFrame(0);
    return du::MakeCounted<luk::ImageData>(
        std::vector<luk::ImageData::Frame>{frame},
        std::make_shared<const std::string>(
            "<svg xmlns='http://www.w3.org/2000/svg' width='24' height='16'><path fill='#f00' d='M0 0h12v8H0z'/>"
            "<path fill='#0f0' d='M12 0h12v8H12z'/><path fill='#00f' d='M12 8h12v8H12z'/>"
            "<path fill='#ff0' d='M0 8h12v8H0z'/></svg>"));
}

luhost::render::DrawnPicture PutInto(double left, double top, double right, double bottom,
                                     const du::SmartPtr<luk::ImageData>& image)
{
    luhost::render::DrawnPicture picture;
    picture.corners = {dg::DPoint2D{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    picture.image = image;
    return picture;
}

} // namespace test
