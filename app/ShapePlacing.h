#pragma once

#include "EntryPreparing.h"
#include "PartLookup.h"
#include "PlacementOrder.h"

namespace luannotations
{
class SymbolAnnotation;
}

namespace lusymbols
{
class PartslibraryOlItem;
}

namespace lusym
{

/// Makes symbols of shapes through the plug-in, in the view, and attaches them to parts.
class ShapePlacing
{
public:
    explicit ShapePlacing(DocumentSource& source);
    ~ShapePlacing();

    /// @param[out] id of the new symbol
    /// @return why there is none; empty when there is one
    std::string Make(const PlacementOrder& order, const EntryPreparing::Entry& entry, std::string& id);
    /// Once all loads have arrived.
    void Finish();

private:
    dg::Location PlaceOf(const PlacementOrder& order, const lusymbols::PartslibraryOlItem& shape,
                         const std::vector<PartLookup::Part>& parts, luannotations::SymbolAnnotation& symbol) const;
    std::string FindParts(const PlacementOrder& order, std::vector<PartLookup::Part>& parts);

    DocumentSource& m_source;
    PartLookup m_lookup;
    std::vector<du::SmartPtr<luannotations::SymbolAnnotation>> m_attached;
};

} // namespace lusym
