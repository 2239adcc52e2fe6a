#pragma once

#include "catalog/PartslibraryItem.h"

#include <cstdint>
#include <string>

namespace lusymbols
{

/// A 2D entry of the symbol library: a picture that is placed as a stamp.
///
/// Ownership, threads and copies: as PartslibraryItem. A move takes over the strings of this class only; the common part
/// is copied, so that a new entry always owns its tags.
class LUSYMBOLS_API PartslibraryImageItem : public PartslibraryItem
{
public:
    explicit PartslibraryImageItem(Origin origin = ORIGIN_USER);
    PartslibraryImageItem(const PartslibraryImageItem& other);
    PartslibraryImageItem(PartslibraryImageItem&& other);
    PartslibraryImageItem& operator=(const PartslibraryImageItem& other);
    PartslibraryImageItem& operator=(PartslibraryImageItem&& other);
    ~PartslibraryImageItem() override;

    bool Compare(const du::SmartPtr<luk::illustration::AssociativeObject>& other) const override;
    void SetTitle(const std::string& title) override;

    bool GetIsBillboardImage() const { return m_isBillboardImage; }
    void SetIsBillboardImage(bool isBillboard) { m_isBillboardImage = isBillboard; }

    /// Read by the library writer alone.
    void SetImageTooltip(const std::string& tooltip) { m_imageTooltip = tooltip; }

    const std::string& GetImageGalleryThumbnailUrl() const { return m_imageGalleryThumbnailUrl; }
    void SetImageGalleryThumbnailUrl(const std::string& url) { m_imageGalleryThumbnailUrl = url; }

    const std::string& GetImageDlgThumbnailUrl() const { return m_imageDlgThumbnailUrl; }
    void SetImageDlgThumbnailUrl(const std::string& url) { m_imageDlgThumbnailUrl = url; }

    const std::string& GetImageUrl() const { return m_imageUrl; }
    void SetImageUrl(const std::string& url) { m_imageUrl = url; }

    /// Scale of the picture in percent.
    std::int32_t GetImageScale() const { return m_imageScale; }
    void SetImageScale(std::int32_t scale) { m_imageScale = scale; }

    bool GetFlipHorizontal() const { return m_flipHorizontal; }
    void SetFlipHorizontal(bool flip) { m_flipHorizontal = flip; }
    bool GetFlipVertical() const { return m_flipVertical; }
    void SetFlipVertical(bool flip) { m_flipVertical = flip; }

    /// Rotations in degrees; both turn clockwise and add up.
    std::int32_t GetRotateRight() const { return m_rotateRight; }
    void SetRotateRight(std::int32_t degrees) { m_rotateRight = degrees; }
    std::int32_t GetRotateLeft() const { return m_rotateLeft; }
    void SetRotateLeft(std::int32_t degrees) { m_rotateLeft = degrees; }

    /// Everything of the entry but its thumbnails.
    bool operator==(const PartslibraryImageItem& other) const;

    /// Makes the URL of the gallery thumbnail ("64x64") that of the dialog thumbnail ("192x192"), in place. Neither reads
    /// nor changes the entry.
    void ComputeDialogThumbnailUrl(std::string& url);

private:
    friend class SymbolTemplateWriter;

    bool m_isBillboardImage = false;
    std::string m_imageTooltip;
    std::string m_imageGalleryThumbnailUrl;
    std::string m_imageDlgThumbnailUrl;
    std::string m_imageUrl;
    std::int32_t m_imageScale = 0;
    bool m_flipHorizontal = false;
    bool m_flipVertical = false;
    std::int32_t m_rotateRight = 0;
    std::int32_t m_rotateLeft = 0;
};

} // namespace lusymbols
