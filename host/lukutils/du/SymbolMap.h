#pragma once

#include <du/Symbol.h>

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace du
{

/// Hashes a symbol by the place of its text, which equal symbols share, without looking at it.
///
/// *Rationale:* a map of many symbols looks at the symbols beside the one that it looks for, whose texts lie all over the
/// memory; and texts that became symbols one after the other lie side by side, and so do their places in the map.
struct SymbolPlaceHash {
    std::size_t operator()(const Symbol& symbol) const noexcept
    {
        return std::hash<const std::string*>()(&symbol.GetText());
    }
};

template <class T>
using SymbolMap = std::unordered_map<Symbol, T, SymbolPlaceHash>;
using SymbolSet = std::unordered_set<Symbol, SymbolPlaceHash>;

} // namespace du
