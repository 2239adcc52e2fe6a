#include <luannotations/ConstStrings.h>

namespace luannotations
{

const du::Symbol ConstStrings::luSymbol2D("symbol2d");
const du::Symbol ConstStrings::luSymbol3D("symbol3d");
const du::Symbol ConstStrings::luSymbol3DFlattened("symbol3dflattened");

const du::Symbol ConstStrings::luStampPreselectionCursor("luStampPreselectionCursor");
const du::Symbol ConstStrings::luDistancePreselectionCursor("luDistancePreselectionCursor");

const du::Symbol ConstStrings::luStampIcon("luStampIcon");
const du::Symbol ConstStrings::luDistanceIcon("luDistanceIcon");

} // namespace luannotations
