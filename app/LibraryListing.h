#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace lusym
{

struct LibraryReading;

/// Which entries of a library are wanted.
struct ListingFilter {
    /// Empty for all categories.
    std::string categoryId;
    bool hasCategoryId = false;
    /// Every word of it has to occur in an entry's texts, upper and lower case being one: more words find less.
    std::string words;
};

/// A table for people: kind, id, category, name, title.
std::string ListingAsTable(const LibraryReading& reading, const ListingFilter& filter);

/// Everything that the library says of its categories and of the wanted entries.
nlohmann::ordered_json ListingAsJson(const LibraryReading& reading, const ListingFilter& filter);

} // namespace lusym
