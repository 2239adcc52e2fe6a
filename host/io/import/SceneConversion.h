#pragma once

#include <luhost/ProductModel.h>

#include <cstddef>
#include <string>
#include <unordered_map>

struct aiScene;

namespace luhost::io
{

/// Makes a product from what an importer has read: meshes with welded vertices, one for each set that nodes show, and one
/// component for all subtrees that are alike.
class SceneConversion
{
public:
    struct Settings {
        double millimetresPerUnit = 1.0;
        /// The scale of the root node is the unit that the file states, and the number above counts instead.
        bool isUnitOverridden = false;
        bool areColorsLinear = false;
        /// For a root that has no name.
        std::string name;
        /// Other names for nodes and meshes than the importer has given them.
        std::unordered_map<std::string, std::string> names;
        std::size_t maximumTriangles = 0;
        std::size_t maximumUses = 0;
    };

    /// @return false, with the reason, when there is nothing to be seen or something is not sound
    static bool Run(const aiScene& scene, const Settings& settings, ProductModel& model, std::string& problem);

    SceneConversion() = delete;
};

} // namespace luhost::io
