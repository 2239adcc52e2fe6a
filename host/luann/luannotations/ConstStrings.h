#pragma once

#include <du/Symbol.h>

namespace luannotations
{

/// Words that annotations of this library are known by. A class word is at once the name of the annotation's element
/// in saved content and the type word of the component factory, so that an opened document finds its makers by name.
struct LUHOST_API ConstStrings {
    static const du::Symbol luSymbol2D;
    static const du::Symbol luSymbol3D;
    static const du::Symbol luSymbol3DFlattened;

    static const du::Symbol luStampPreselectionCursor;
    static const du::Symbol luDistancePreselectionCursor;

    static const du::Symbol luStampIcon;
    static const du::Symbol luDistanceIcon;
};

} // namespace luannotations
