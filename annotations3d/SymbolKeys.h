#pragma once

#include <du/Symbol.h>

/// Words of the saved content of 3D symbols.
namespace luannotations::symbol_keys
{

// Common to live and flattened symbols.
inline const du::Symbol kTitle("title");
inline const du::Symbol kDescription("description");
inline const du::Symbol kShowTooltipTitle("showTooltipTitle");
inline const du::Symbol kShowTooltipDescription("showTooltipDescription");
inline const du::Symbol kName("name");
inline const du::Symbol kFileName("fileName");
inline const du::Symbol kId("ID");

// Of a live symbol.
inline const du::Symbol kAppAmbient("appAmbient");
inline const du::Symbol kAppSpecular("appSpecular");
inline const du::Symbol kAppDiffuse("appDiffuse");
inline const du::Symbol kAppEmissive("appEmissive");
inline const du::Symbol kAppShininess("appShininess");
inline const du::Symbol kAppTransp("appTransp");
inline const du::Symbol kAppHasOverride("appHasOverride");
inline const du::Symbol kLocPosition("locPosition");
inline const du::Symbol kLocOrientation("locOrientation");
inline const du::Symbol kLocScale("locScale");
inline const du::Symbol kIsAnnotationSymbol("isAnnotationSymbol");
inline const du::Symbol kSymbolCsysLocation("symbolCsysLocation");
inline const du::Symbol kSymbolInitLocation("symbolInitLocation");
inline const du::Symbol kTemplateIndex("templateIndex");

inline const du::Symbol kAttachedToPart("attachedToPart");
inline const du::Symbol kAttachedToPartId("attachedToPartId");
inline const du::Symbol kAttachedToAssemblyPartId("attachedToAssemblyPartId");
inline const du::Symbol kAttachedToPartLastPos("attachedToPartLastPos");
inline const du::Symbol kAttachedToPartOffset("attachedToPartOffset");

inline const du::Symbol kSequencerTag("sequencerTag");
inline const du::Symbol kSequencerTagType("sequencerTagType");
inline const du::Symbol kSequencerTagDescription("sequencerTagDescription");
inline const du::Symbol kSequencerTagName("sequencerTagName");
inline const du::Symbol kSequencerTagUnits("sequencerTagUnits");
inline const du::Symbol kSequencerTagQuantity("sequencerTagQuantity");

// Of a flattened symbol.
inline const du::Symbol kXform("xform");

} // namespace luannotations::symbol_keys
