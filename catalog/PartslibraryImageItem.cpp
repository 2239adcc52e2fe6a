#include "catalog/PartslibraryImageItem.h"

#include "catalog/LibraryLayout.h"
#include "catalog/PartslibraryOlItem.h"

namespace lusymbols
{

PartslibraryImageItem::PartslibraryImageItem(Origin origin) : PartslibraryItem(origin) {}

PartslibraryImageItem::~PartslibraryImageItem() = default;
PartslibraryImageItem::PartslibraryImageItem(const PartslibraryImageItem& other) = default;
PartslibraryImageItem::PartslibraryImageItem(PartslibraryImageItem&& other) = default;
PartslibraryImageItem& PartslibraryImageItem::operator=(const PartslibraryImageItem& other) = default;
PartslibraryImageItem& PartslibraryImageItem::operator=(PartslibraryImageItem&& other) = default;

void PartslibraryImageItem::SetTitle(const std::string& title) { SetTitleOrDefault(title, "Image "); }

bool PartslibraryImageItem::Compare(const du::SmartPtr<luk::illustration::AssociativeObject>& other) const
{
    const auto image = du::DynamicCast<PartslibraryImageItem>(other);
    return image && *this == *image;
}

bool PartslibraryImageItem::operator==(const PartslibraryImageItem& other) const
{
    return m_isBillboardImage == other.m_isBillboardImage && m_imageUrl == other.m_imageUrl &&
           m_imageTooltip == other.m_imageTooltip && m_imageScale == other.m_imageScale &&
           m_flipHorizontal == other.m_flipHorizontal && m_flipVertical == other.m_flipVertical &&
           m_rotateRight == other.m_rotateRight && m_rotateLeft == other.m_rotateLeft &&
           PartslibraryItem::operator==(other);
}

void PartslibraryImageItem::ComputeDialogThumbnailUrl(std::string& url)
{
    PartslibraryOlItem::ComputeThumbnailUrl(url, std::string(format::kGalleryThumbnailSize),
                                            std::string(format::kDialogThumbnailSize));
}

} // namespace lusymbols
