#pragma once

#include "plugin/Export.h"

#include <du/Symbol.h>

#include <string>

namespace luannotations
{

/// What live and flattened 3D symbols have in common. A plain value.
///
/// Moves: the source's texts are left empty and its symbols null; the flags are copied.
struct LUSYMBOLS_API SymbolInfoBase {
    SymbolInfoBase() = default;
    SymbolInfoBase(const SymbolInfoBase&) = default;
    SymbolInfoBase(SymbolInfoBase&& other) noexcept;
    SymbolInfoBase& operator=(const SymbolInfoBase&) = default;
    SymbolInfoBase& operator=(SymbolInfoBase&& other) noexcept;
    ~SymbolInfoBase() = default;

    std::string title; ///< empty: the name that the annotation had before
    std::string description;
    bool showTooltipTitle = false;
    bool showTooltipDescription = false;
    du::Symbol fileName; ///< of the shape; one component
    du::Symbol name;     ///< of the library entry
    du::Symbol id;       ///< of the symbol's node below the root of the product
};

} // namespace luannotations
