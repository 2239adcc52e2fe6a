#include <luhost/render/PictureStore.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace luhost::render
{

namespace
{

/// Units of the longest side of a recorded vector drawing. What of it is not vectors (what is blurred, and groups that
/// are half transparent) is drawn with a pixel for a unit.
constexpr double kRecordedSide = 2048.0;
/// Pixels of the longest side of a vector drawing.
constexpr unsigned kSmallestVectorSide = 64;
constexpr unsigned kLargestVectorSide = 4096;

bool HasSize(const luk::ImageData& picture) { return picture.GetWidth() > 0 && picture.GetHeight() > 0; }

bool HasPixels(const luk::ImageData::Frame& frame)
{
    constexpr std::size_t kBytesPerPixel = 4;
    return frame.pixels && frame.pixels->size() / kBytesPerPixel / static_cast<std::size_t>(frame.width) >=
                               static_cast<std::size_t>(frame.height);
}

std::string_view PixelBytes(const luk::ImageData& picture)
{
    const luk::ImageData::Pixels& pixels = *picture.GetFrame(0).pixels;
    return {reinterpret_cast<const char*>(pixels.data()), pixels.size()};
}

/// A name by which files hold a surface once, however often it is painted.
void SetUniqueId(cairo_surface_t* surface, std::size_t number)
{
    auto id = std::make_unique<std::string>("picture-" + std::to_string(number));
    const auto* bytes = reinterpret_cast<const unsigned char*>(id->data());
    const auto size = static_cast<unsigned long>(id->size());
    const auto drop = [](void* text) { delete static_cast<std::string*>(text); };
    if (cairo_surface_set_mime_data(surface, CAIRO_MIME_TYPE_UNIQUE_ID, bytes, size, drop, id.get()) ==
        CAIRO_STATUS_SUCCESS) {
        static_cast<void>(id.release());
    }
}

} // namespace

StoredPicture::StoredPicture(const luk::ImageData& picture, std::unique_ptr<VectorDocument> vectorDocument,
                             std::size_t number)
    : m_picture(picture), m_document(std::move(vectorDocument)), m_number(number)
{
}

StoredPicture::~StoredPicture() = default;

Raster& StoredPicture::GetPixels()
{
    if (!m_pixels) {
        m_pixels = ToRaster(m_picture.GetFrame(0));
        while (std::max(m_pixels->width, m_pixels->height) > kMaximumSide) {
            m_pixels = Halve(*m_pixels);
        }
    }
    return *m_pixels;
}

StoredPicture::Surface StoredPicture::GetSurface()
{
    if (!m_document) {
        Raster& pixels = GetPixels();
        if (!m_surface) {
            m_surface = WrapPixels(pixels);
            SetUniqueId(m_surface.get(), m_number);
        }
        return {m_surface.get(), 1.0 * pixels.width, 1.0 * pixels.height};
    }
    const double scale = kRecordedSide / std::max(GetWidth(), GetHeight());
    const Surface result{m_surface.get(), GetWidth() * scale, GetHeight() * scale};
    if (m_surface) {
        return result;
    }
    const cairo_rectangle_t extents{0.0, 0.0, result.width, result.height};
    m_surface.reset(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents));
    m_document->Draw(CairoContext(cairo_create(m_surface.get())).get(), result.width, result.height);
    SetUniqueId(m_surface.get(), m_number);
    return {m_surface.get(), result.width, result.height};
}

const RasterLevels& StoredPicture::GetLevels(double longestSide)
{
    if (!m_document) {
        if (!m_levels) {
            m_levels.emplace(ToRaster(m_picture.GetFrame(0)));
        }
        return *m_levels;
    }
    const double bounded = std::clamp(longestSide, 1.0 * kSmallestVectorSide, 1.0 * kLargestVectorSide);
    const int side = static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::ceil(bounded))));
    if (side > m_levelsSide) {
        m_levels.emplace(DrawDocument(side));
        m_levelsSide = side;
    }
    return *m_levels;
}

Raster StoredPicture::DrawDocument(int longestSide) const
{
    const double scale = 1.0 * longestSide / std::max(GetWidth(), GetHeight());
    const auto scaled = [&](int side) { return std::max(1, static_cast<int>(std::lround(side * scale))); };
    Raster raster(scaled(GetWidth()), scaled(GetHeight()));
    const CairoSurface surface = WrapPixels(raster);
    const CairoContext context(cairo_create(surface.get()));
    // Sides are whole pixels: the drawing is stretched over what was rounded away.
    cairo_scale(context.get(), raster.width / (GetWidth() * scale), raster.height / (GetHeight() * scale));
    m_document->Draw(context.get(), GetWidth() * scale, GetHeight() * scale);
    cairo_surface_flush(surface.get());
    return raster;
}

Corners StoredUse::Turn(const Corners& corners) const noexcept
{
    Corners turned = corners;
    std::rotate(turned.begin(), turned.begin() + quarterTurns, turned.end());
    return turned;
}

StoredUse PictureStore::Find(const luk::ImageData* picture)
{
    if (!picture) {
        return {};
    }
    const auto [entry, isNew] = m_byObject.try_emplace(picture, nullptr);
    if (isNew && HasSize(*picture)) {
        entry->second = picture->GetVectorSource() ? StoreDocument(*picture) : nullptr;
        entry->second = entry->second ? entry->second : StorePixels(*picture);
    }
    const bool isVector = entry->second && entry->second->GetVectorSource();
    return {entry->second, isVector ? picture->GetQuarterTurns() & 3 : 0};
}

std::string PictureStore::FindProblem() const
{
    for (const auto& [key, picture] : m_byContent) {
        if (std::string problem = picture ? picture->GetProblem() : std::string(); !problem.empty()) {
            return problem;
        }
    }
    return {};
}

StoredPicture* PictureStore::StoreDocument(const luk::ImageData& picture)
{
    const bool onItsSide = picture.GetQuarterTurns() % 2 != 0;
    const int width = onItsSide ? picture.GetHeight() : picture.GetWidth();
    const int height = onItsSide ? picture.GetWidth() : picture.GetHeight();
    const std::size_t number = m_byContent.size();
    const auto [entry, isNew] = m_byContent.try_emplace({*picture.GetVectorSource(), width, height});
    if (isNew) {
        if (std::unique_ptr<VectorDocument> document = VectorDocument::Read(*picture.GetVectorSource())) {
            entry->second = std::make_unique<StoredPicture>(picture, std::move(document), number);
        }
    }
    return entry->second.get();
}

StoredPicture* PictureStore::StorePixels(const luk::ImageData& picture)
{
    if (!HasPixels(picture.GetFrame(0))) {
        return nullptr;
    }
    const std::size_t number = m_byContent.size();
    const auto [entry, isNew] = m_byContent.try_emplace({PixelBytes(picture), picture.GetWidth(), picture.GetHeight()});
    if (isNew) {
        entry->second = std::make_unique<StoredPicture>(picture, nullptr, number);
    }
    return entry->second.get();
}

} // namespace luhost::render
