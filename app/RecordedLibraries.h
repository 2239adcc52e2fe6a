#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lusym
{

/// A library that the symbols of a document were taken from. Paths are absolute.
struct RecordedLibrary {
    std::string path;
    std::string root;     ///< empty when it follows from the path
    std::string messages; ///< empty when they follow from the root

    friend bool operator==(const RecordedLibrary&, const RecordedLibrary&) = default;
};

/// A document keeps its libraries in front of its own entries, as instructions that every reader of libraries passes over:
///
///     <?xml version="1.0" encoding="utf-8"?>
///     <?lusym-library href="../SymbolsLibrary/PartSymbolLibrary.xml"?>
///     <drellin-library>
///
/// Paths are relative to the document's folder, so that both can move together, but where they share nothing except the
/// root of the file system.

/// @param libraryText the entries of a document; trusted in nothing
/// @param documentFolder absolute
std::vector<RecordedLibrary> ReadRecordedLibraries(std::string_view libraryText, const std::string& documentFolder);

/// @param libraryText a library as the writer writes it
/// @return the same with the instructions
std::string RecordLibraries(const std::string& libraryText, const std::vector<RecordedLibrary>& libraries,
                            const std::string& documentFolder);

} // namespace lusym
