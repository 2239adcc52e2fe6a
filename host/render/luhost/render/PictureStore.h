#pragma once

#include <luhost/render/CairoHandles.h>
#include <luhost/render/Raster.h>
#include <luhost/render/VectorDocument.h>
#include <luk/ImageData.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace luhost::render
{

/// The same pixels, or the same vector drawing whichever way it is turned, for all the pictures that show it.
///
/// Cost: whatever an output asks for is made when it asks first, and kept.
class StoredPicture
{
public:
    /// @param picture has pixels unless there is a document; outlives this
    /// @param vectorDocument of the picture; null to take it as pixels
    StoredPicture(const luk::ImageData& picture, std::unique_ptr<VectorDocument> vectorDocument, std::size_t number);
    ~StoredPicture();

    /// From 0, in the order in which they were met.
    std::size_t GetNumber() const noexcept { return m_number; }

    /// Null for a picture of pixels.
    const std::string* GetVectorSource() const noexcept
    {
        return m_document ? m_picture.GetVectorSource().get() : nullptr;
    }

    /// Size in pixels; that of a vector drawing is the one before any turn.
    int GetWidth() const noexcept { return LiesOnItsSide() ? m_picture.GetHeight() : m_picture.GetWidth(); }
    int GetHeight() const noexcept { return LiesOnItsSide() ? m_picture.GetWidth() : m_picture.GetHeight(); }

    /// The pixels, at half the size or less when they are too many in a row or column for the drawing library.
    Raster& GetPixels();

    struct Surface {
        cairo_surface_t* surface;
        double width; ///< of the whole picture, in units of the surface
        double height;
    };
    /// The picture to paint with, a vector drawing as one.
    Surface GetSurface();

    /// Draws a vector drawing in its own pixels.
    void DrawVectors(cairo_t* context) { m_document->Draw(context, GetWidth(), GetHeight()); }

    /// As PictureStore::FindProblem.
    std::string GetProblem() const { return m_document ? m_document->GetProblem() : std::string(); }

    /// For resampling.
    /// @param longestSide pixels that the longest side of a vector drawing has at least, within reason
    const RasterLevels& GetLevels(double longestSide);

private:
    bool LiesOnItsSide() const noexcept { return m_document && m_picture.GetQuarterTurns() % 2 != 0; }
    Raster DrawDocument(int longestSide) const;

    const luk::ImageData& m_picture;
    std::unique_ptr<VectorDocument> m_document;
    std::size_t m_number;
    std::optional<Raster> m_pixels;
    std::optional<RasterLevels> m_levels;
    int m_levelsSide = 0; ///< the longest side that a vector drawing was drawn with
    CairoSurface m_surface;
};

/// A picture of a drawing and which way its stored form is turned.
struct StoredUse {
    StoredPicture* picture = nullptr; ///< null when there is nothing to show
    int quarterTurns = 0;             ///< clockwise

    /// Where the corners of the stored form go, from the upper left one on.
    Corners Turn(const Corners& corners) const noexcept;
};

/// The pictures of one drawing, each kept once however many objects hold it; or of several drawings that show the same ones.
///
/// Ownership: refers to the drawings' pictures, which outlive it.
class PictureStore
{
public:
    /// @param picture may be null, and may have nothing to show
    StoredUse Find(const luk::ImageData* picture);

    /// Why something of a vector drawing was missing when it was drawn; else empty.
    std::string FindProblem() const;

private:
    struct Key {
        std::string_view bytes;
        int width; ///< as it lies when a vector drawing is not turned
        int height;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const noexcept { return std::hash<std::string_view>()(key.bytes); }
    };

    StoredPicture* StoreDocument(const luk::ImageData& picture);
    StoredPicture* StorePixels(const luk::ImageData& picture);

    std::unordered_map<const luk::ImageData*, StoredPicture*> m_byObject;
    std::unordered_map<Key, std::unique_ptr<StoredPicture>, KeyHash> m_byContent;
};

} // namespace luhost::render
