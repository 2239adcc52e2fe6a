#include "SymbolPlacing.h"

#include "annotations2d/Symbol2D.h"
#include "catalog/PartslibraryItem.h"
#include "DocumentSource.h"
#include "EntryPreparing.h"
#include "PicturePlacing.h"
#include "ShapePlacing.h"

namespace lusym
{

std::vector<PlacementResult> PlaceSymbols(DocumentSource& source, const std::vector<PlacementLine>& orders,
                                          const std::vector<LibraryReading>& libraries)
{
    EntryPreparing entries(source, libraries);
    std::vector<PlacementResult> results;
    for (const PlacementLine& line : orders) {
        PlacementResult& result = results.emplace_back();
        result.error = line.error.empty() ? entries.Prepare(line.order.entry).error : line.error;
    }
    entries.ProbeFiles();
    PicturePlacing pictures(source);
    ShapePlacing shapes(source);
    for (std::size_t index = 0; index < orders.size(); ++index) {
        PlacementResult& result = results[index];
        const PlacementOrder& order = orders[index].order;
        if (!result.error.empty()) {
            continue;
        }
        const EntryPreparing::Entry& entry = entries.Prepare(order.entry);
        result.error = entry.error;
        if (result.error.empty()) {
            result.error =
                IsShape(*entry.item) ? shapes.Make(order, entry, result.id) : pictures.Make(order, entry, result.id);
        }
    }
    source.WaitForLoads();
    pictures.Finish();
    shapes.Finish();
    return results;
}

} // namespace lusym
