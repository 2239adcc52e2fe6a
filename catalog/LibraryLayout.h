#pragma once

#include <string_view>

/// Names of the folders and files of a symbol library, once for everybody who looks for them.
namespace lusymbols::format
{

inline constexpr std::string_view kLibraryFolder = "SymbolsLibrary";
inline constexpr std::string_view kStandardFolder = "standard";
inline constexpr std::string_view kImageFolder = "2D";
inline constexpr std::string_view kShapeFolder = "Shape";
inline constexpr std::string_view kLibraryFileBaseName = "PartSymbolLibrary";
inline constexpr std::string_view kLibraryFileExtension = "xml";

/// The pixel sizes in the names of the two thumbnails of an entry.
inline constexpr std::string_view kGalleryThumbnailSize = "64x64";
inline constexpr std::string_view kDialogThumbnailSize = "192x192";

} // namespace lusymbols::format
