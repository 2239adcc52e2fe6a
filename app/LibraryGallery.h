#pragma once

#include "catalog/PartslibraryUIData.h"
#include "LibrarySource.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace lusym
{

/// The gallery of the session: its rows, and how many of them each group has.
struct LibraryGallery {
    du::SmartPtr<lusymbols::PartslibraryUIData> rows;
    std::vector<std::size_t> rowsPerGroup;
};

/// Puts a library into the collection of the session, as the host itself does.
void AddToCollection(LibrarySource& source, const LibraryReading& reading);

/// Entries stand once in each category of their id, so that a small library can ask for more rows than any memory holds.
inline constexpr std::size_t kMaxGalleryRows = 2'000'000;

/// Whether the gallery of the session keeps to that limit; told on stderr when it does not.
bool CanMakeGallery(Progress& progress);

LibraryGallery MakeGallery();

nlohmann::ordered_json GalleryAsJson(const LibraryGallery& gallery);

/// The page, and a message on stderr for each thumbnail that cannot be shown.
std::string GalleryAsPage(const LibraryGallery& gallery, const std::string& title, const std::string& language,
                          Progress& progress);

} // namespace lusym
