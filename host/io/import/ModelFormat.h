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

    /// @return why the importer must not see the file, which it would read for ever; empty when it may
    static std::string FindTrap(const std::string& extension, const std::string& path);
};

} // namespace luhost::io
