#pragma once

#include <dg/DPoint3D.h>
#include <dg/DVec3.h>
#include <du/Symbol.h>

namespace luannotations
{

/// One part that a symbol is attached to. A plain value.
struct ConnectedPartInfo {
    du::Symbol partId;         ///< id path of the part, in the service tree or the engineering tree
    du::Symbol assemblyPartId; ///< id path of the assembly that holds the part; null when it is not known
    dg::DPoint3D lastPos;      ///< where the part was when the symbol last followed it, in the scene
    dg::DVec3 offset;          ///< from the part to the symbol, in the scene
};

} // namespace luannotations
