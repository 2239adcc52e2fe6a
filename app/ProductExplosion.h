#pragma once

#include <limits>
#include <string>

namespace lusym
{

class DocumentSource;

/// How the parts of a product are moved apart.
struct Explosion {
    double factor = 0.0; ///< 1: the middles of two parts are twice as far from each other
    /// Assemblies on this level move as a whole; the product's own are on level 1.
    int levels = std::numeric_limits<int>::max();
};

/// Moves the parts of an open document away from the middle of its product, hidden ones too, so that a part goes to the same
/// place whatever else is seen. Attached symbols follow.
/// @return false with the reason and nothing moved when a part would go too far
bool ExplodeProduct(DocumentSource& source, const Explosion& explosion, std::string& problem);

} // namespace lusym
