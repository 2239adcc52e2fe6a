#pragma once

#include "annotations3d/SymbolInfoBase.h"

#include <dg/FMat33.h>

namespace luannotations
{

/// What a flattened 3D symbol is told in one step. A plain value.
struct LUSYMBOLS_API SymbolInfoFlattened : SymbolInfoBase {
    dg::FMat33 xform = dg::FMat33::IDENTITY; ///< in the drawing
};

} // namespace luannotations
