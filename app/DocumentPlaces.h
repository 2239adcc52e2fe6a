#pragma once

#include "SymbolState.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace lusym
{

/// The view or a page of a document, with the symbols that stand there.
struct DocumentPlace {
    int page = 0;        ///< from 1; 0 for the view
    double width = 0.0;  ///< of a page, in millimetres
    double height = 0.0; ///< the same
    std::vector<SymbolState> symbols;
};

/// The view, then each page. @param lost what symbols have let go of
std::vector<DocumentPlace> PlacesOf(const luhost::Document& document, const LostAttachments& lost = {});

/// Number, width and height.
nlohmann::ordered_json PageAsJson(const DocumentPlace& page);
/// "210 x 297 mm"
std::string PageSizeText(const DocumentPlace& page);

} // namespace lusym
