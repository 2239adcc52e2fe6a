#pragma once

#include <string>
#include <unordered_map>

namespace luhost::io
{

/// What a format of models says of units and colours.
struct ModelFormat {
    double millimetresPerUnit = 1.0;
    bool isRootScaleUnit = false; ///< the importer puts the unit that the file states into the root node
    bool areColorsLinear = false;
    /// What the file calls that to which the importer gives a name of its own.
    std::unordered_map<std::string, std::string> names;

    /// @param extension in small letters, with its dot
    /// @return false for an extension that is none of ours
    static bool Find(const std::string& extension, const std::string& path, ModelFormat& format);
};

} // namespace luhost::io
