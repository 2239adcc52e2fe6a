#pragma once

#include <string>

namespace lusym
{

class DemoFiles;
class Progress;

/// What the road of a document starts from.
struct DemoStart {
    std::string library;  ///< folder of the example library
    std::string manual;   ///< folder with the table of symbols and the new picture of one of them
    std::string language; ///< as the user wants it; may be empty
};

/// The road of a document, in the verbs that anybody may type: each is told, run, and lets its result be seen. Ends at the
/// first step that fails, which has told why.
/// @return whether all of it was walked
bool WalkDocumentRoad(const DemoStart& start, DemoFiles& files, Progress& progress);

} // namespace lusym
