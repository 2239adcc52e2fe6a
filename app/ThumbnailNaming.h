#pragma once

#include "LibraryThumbnails.h"

#include <string>
#include <unordered_set>

namespace lusym
{

/// Writes the names of new thumbnails into a library. All else of its text stays as it is, byte for byte: a text that the
/// loader and the writer would change otherwise gets no names.
class ThumbnailNaming
{
public:
    /// @param text of the library, as it was read
    ThumbnailNaming(const LibraryReading& reading, std::string text) : m_reading(reading), m_text(std::move(text)) {}

    /// Finds out what names can be given. Entries that can get none are told so, and nothing is made for them.
    void Try(LibraryThumbnails& thumbnails) const;

    /// Gives the names of thumbnails that are there. @return whether the library has been written
    bool Write(LibraryThumbnails& thumbnails, std::string& error) const;

private:
    void MakeText(const std::string& path, const LibraryThumbnails& thumbnails, std::string& error) const;
    /// @return whether it is the library's but for the lines
    bool WriteText(const std::string& path, const std::unordered_set<std::string>& lines, std::string& error) const;

    const LibraryReading& m_reading;
    std::string m_text;
};

} // namespace lusym
