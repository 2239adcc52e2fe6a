#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lusymbols
{
class PartslibraryUIData;
}

namespace lusym
{

/// What a gallery page shows: the rows of the gallery and how they fall into groups.
struct GalleryContent {
    /// Heading of the page.
    std::string title;
    /// Language of the library's texts, such as "de" or "pt-BR"; "de_DE.UTF-8" is understood too.
    std::string language;
    const lusymbols::PartslibraryUIData& rows;
    /// Group g has this many rows, which follow those of the group before.
    std::vector<std::size_t> rowsPerGroup;
};

struct GalleryPageResult {
    std::string html;
    /// Each thumbnail once, in the order of the rows, that is no readable picture or beyond the limits; its entries show
    /// a drawn placeholder.
    std::vector<std::string> missingIcons;
};

/// No thumbnail larger than this is put into a page.
inline constexpr std::size_t kMaxGalleryPictureBytes = std::size_t{4} << 20;
/// Nor are more pictures than this, all together; browsers give up on much larger pages.
inline constexpr std::size_t kMaxGalleryPicturesBytes = std::size_t{128} << 20;
/// Large thumbnails are left out from here on, to keep room for the icons.
inline constexpr std::size_t kMaxGalleryBytesWithLarge = kMaxGalleryPicturesBytes / 2;

/// Writes the gallery as one HTML file that needs nothing beside it: no network, no other file, no server.
///
/// Use: rows and groups come from the library's gallery data; the caller writes the text to a file.
///
/// Pictures are read from the rows' thumbnails, each file once, however many rows share it. Where the large thumbnail of
/// an icon lies beside it ("192x192" for "64x64"), the page shows it in the details and on screens of high resolution.
///
/// Trust: nothing from the library is trusted. Texts are escaped and ill-formed ones mended; pictures are recognised by
/// content and only shown as pictures, so that a script within an SVG picture never runs; the page forbids itself every
/// script but its own and every connection.
///
/// Errors: a picture that cannot be shown is told in the result. Rows that no group claims come last, in a group of their
/// own; a group that claims too many gets what is there.
///
/// Cost: linear in rows, groups and the bytes of distinct pictures.
GalleryPageResult WriteGalleryPage(const GalleryContent& content);

/// One row, as views of texts that outlive it.
struct GalleryRow {
    std::string_view icon;
    std::wstring_view label;
    /// Rich text: "\b TITLE\b0 \n DESCRIPTION"; any other text is shown as it is.
    std::wstring_view tooltip;
    /// "ol.ID" for a 3D entry, "image.ID" for a picture.
    std::string_view userData;
    std::string_view name;
    /// Shared or delivered: the user cannot change it.
    bool isShared = false;
};

struct GalleryGroup {
    std::wstring_view label;
    std::vector<GalleryRow> rows;
};

/// The same page from plain rows.
GalleryPageResult WriteGalleryPage(std::string_view title, std::string_view language,
                                   const std::vector<GalleryGroup>& groups);

/// The two parts of a tooltip, in UTF-8. The title is empty where the text has not the form of a gallery tooltip.
struct TooltipParts {
    std::string title;
    std::string text;
};

TooltipParts ParseTooltip(std::wstring_view richText);

} // namespace lusym
