#include "DocumentPlaces.h"

#include "TextValues.h"

#include <luhost/Document.h>
#include <luk/illustration2d/Scene2D.h>

#include <nlohmann/json.hpp>

#include <utility>

namespace lusym
{

std::vector<DocumentPlace> PlacesOf(const luhost::Document& document, const LostAttachments& lost)
{
    std::vector<DocumentPlace> places(1);
    for (std::size_t page = 0; page < document.GetPageCount(); ++page) {
        const auto& sheet = *document.GetPage(page)->GetDocument();
        places.push_back({static_cast<int>(page) + 1, sheet.GetWidth(), sheet.GetHeight(), {}});
    }
    for (SymbolState& state : StatesOf(document, lost)) {
        places[static_cast<std::size_t>(state.page)].symbols.push_back(std::move(state));
    }
    return places;
}

nlohmann::ordered_json PageAsJson(const DocumentPlace& page)
{
    return {{"page", page.page}, {"width", page.width}, {"height", page.height}};
}

std::string PageSizeText(const DocumentPlace& page)
{
    return NumberText(page.width) + " x " + NumberText(page.height) + " mm";
}

} // namespace lusym
