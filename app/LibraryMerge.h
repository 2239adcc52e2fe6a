#pragma once

#include "LibrarySource.h"
#include "LibraryWriting.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace lusym
{

/// What came of one input.
struct MergedInput {
    std::string name;
    std::size_t entries = 0;
    std::size_t entriesTaken = 0;
    std::size_t categories = 0;
    std::size_t categoriesTaken = 0;
};

/// An entry that another one stands in the way of.
struct MergeConflict {
    std::string file;
    std::size_t line = 0;
    std::string name;
    std::string id;
    std::string newId;     ///< the id that it has now; empty for an entry that was dropped
    std::string otherFile; ///< where the first one of the name, or of the category's id, comes from
    std::size_t otherLine = 0;
};

/// A text of the whole library in which the inputs differ; the last one stands.
struct MergedText {
    std::string what;
    std::string value;
    std::string from;
};

/// A file that the merged library names and that has to lie in its folder.
struct MergedFile {
    std::string source;
    std::string url; ///< as the merged library names it
    std::string target;
    std::string rival = {}; ///< another file that is to have the same url, with other content; empty when there is none
    bool isMissing = false;
    /// It does not lie in the root of the library that names it. Such a file is never copied: a library from somebody else
    /// may name any file of its reader, who may give the result away.
    bool isOutside = false;

    bool HasRival() const { return !rival.empty(); }
    bool IsMissing() const { return isMissing; }
    bool IsRefused() const { return isOutside && !isMissing && rival.empty(); }
    bool IsToBring() const { return !isOutside && !isMissing && rival.empty(); }
};

struct Merge {
    LibraryContent content;
    std::vector<MergedInput> inputs;
    std::vector<MergeConflict> renamed;
    std::vector<MergeConflict> dropped;
    std::vector<MergeConflict> categoriesJoined;
    std::vector<MergedText> differing;
    /// Those that do not lie there already; each target once but for rivals.
    std::vector<MergedFile> files;

    std::size_t CountFiles(bool (MergedFile::*predicate)() const) const;
};

/// Merges libraries as the loader does: of two entries with one name the first is kept, of two with one id the later one
/// gets another. Of two categories with one id the first is kept.
/// @param output where the merged library is going to lie; its root is empty when that is not known
Merge MergeLibraries(const std::vector<LibraryReading>& readings, const LibraryPlace& output);

std::string MergeAsText(const Merge& merge);
nlohmann::ordered_json MergeAsJson(const Merge& merge);

} // namespace lusym
