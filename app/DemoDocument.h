#pragma once

#include "DemoRoad.h"

namespace lusym
{

/// The road of a document: symbols on pages and over the view. Makes the copy of the example library.
/// @return whether all of it was walked
bool WalkDocumentRoad(const DemoStart& start, DemoFiles& files, Progress& progress);

/// The road of a product: 3D symbols on its parts. Goes after the other one, whose copy of the library it uses.
/// @return whether all of it was walked
bool WalkProductRoad(const DemoStart& start, DemoFiles& files, Progress& progress);

} // namespace lusym
