#pragma once

#include "PlacementOrder.h"

#include <string>
#include <vector>

namespace lusym
{

class DocumentSource;
struct LibraryReading;

/// What became of one order.
struct PlacementResult {
    std::string id; ///< of the new symbol; empty when there is none
    std::string error;
};

/// Places symbols in an open document: finds the entries, in the libraries first and else among the document's own, brings
/// their pictures along, makes the symbols through the plug-in, and waits for what they load.
///
/// An order that cannot be carried out spoils no other and leaves nothing behind. Each result says what became of the order
/// at the same place.
std::vector<PlacementResult> PlaceSymbols(DocumentSource& source, const std::vector<PlacementLine>& orders,
                                          const std::vector<LibraryReading>& libraries);

} // namespace lusym
