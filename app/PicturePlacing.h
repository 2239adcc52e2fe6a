#pragma once

#include "EntryPreparing.h"
#include "PlacementOrder.h"

#include <utility>

namespace luannotations
{
class Symbol2D;
class Symbol2DInfo;
} // namespace luannotations

namespace lusymbols
{
class PartslibraryImageItem;
}

namespace lusym
{

/// Makes symbols of pictures through the plug-in, on pages and over the view.
class PicturePlacing
{
public:
    explicit PicturePlacing(DocumentSource& source) : m_source(source) {}
    ~PicturePlacing();

    /// @param[out] id of the new symbol
    /// @return why there is none; empty when there is one
    std::string Make(const PlacementOrder& order, const EntryPreparing::Entry& entry, std::string& id);
    /// Once all loads have arrived: sizes what was to take its size from its picture.
    void Finish();

private:
    std::string FaultOf(const PlacementOrder& order) const;

    DocumentSource& m_source;
    std::vector<std::pair<du::SmartPtr<luannotations::Symbol2D>, int>> m_selfSized;
};

} // namespace lusym
