#pragma once

#include <string>
#include <unordered_map>
#include <vector>

namespace lusym
{

class DocumentSource;

/// A picture file, as the loader of the session reads it.
struct PictureFacts {
    int width = 0; ///< in pixels; 0 when it could not be read
    int height = 0;
    bool isVector = false;
    std::string problem; ///< why it could not be read
};

/// Loads pictures, several at once, and tells what they are. Whoever loads one of them next finds it decoded.
std::unordered_map<std::string, PictureFacts> ProbePictures(const std::vector<std::string>& paths,
                                                            DocumentSource& source);

/// The same for files of shapes. @return for each why it could not be read; empty when it could
std::unordered_map<std::string, std::string> ProbeShapes(const std::vector<std::string>& paths, DocumentSource& source);

} // namespace lusym
