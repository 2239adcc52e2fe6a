#include "DocumentSource.h"
#include "FileText.h"
#include "Finding.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "Progress.h"
#include "SymbolState.h"
#include "TextValues.h"

#include <luk/illustration2d/Scene2D.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <memory>
#include <sstream>

namespace lusym
{

namespace
{

using nlohmann::ordered_json;

struct TreeOptions {
    std::string name;
    bool asJson = false;
};

/// The symbols of the view, then those of each page.
std::vector<std::vector<SymbolState>> StatesByPlace(const luhost::Document& document)
{
    std::vector<std::vector<SymbolState>> places(document.GetPageCount() + 1);
    for (SymbolState& state : StatesOf(document)) {
        places[static_cast<std::size_t>(state.page)].push_back(std::move(state));
    }
    return places;
}

ordered_json TreeAsJson(const DocumentSource& source, const luhost::Document& document)
{
    ordered_json pages = ordered_json::array();
    ordered_json view;
    const std::vector<std::vector<SymbolState>> places = StatesByPlace(document);
    for (std::size_t place = 0; place < places.size(); ++place) {
        ordered_json symbols = ordered_json::array();
        for (const SymbolState& state : places[place]) {
            symbols.push_back(StateAsJson(state));
        }
        if (place == 0) {
            view = {{"symbols", std::move(symbols)}};
            continue;
        }
        const auto& sheet = *document.GetPage(place - 1)->GetDocument();
        pages.push_back({{"page", place},
                         {"width", sheet.GetWidth()},
                         {"height", sheet.GetHeight()},
                         {"symbols", std::move(symbols)}});
    }
    return {{"file", source.GetName()}, {"view", std::move(view)}, {"pages", std::move(pages)}};
}

std::string Indented(const std::string& table)
{
    std::string text;
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        text += "  " + line + "\n";
    }
    return text;
}

std::string TreeAsText(const luhost::Document& document)
{
    std::string text;
    const std::vector<std::vector<SymbolState>> places = StatesByPlace(document);
    for (std::size_t place = 0; place < places.size(); ++place) {
        text += PageText(static_cast<int>(place));
        if (place != 0) {
            const auto& sheet = *document.GetPage(place - 1)->GetDocument();
            text += ", " + NumberText(sheet.GetWidth()) + " x " + NumberText(sheet.GetHeight()) + " mm";
        }
        text += ": " + CountOf(places[place].size(), "symbol", "symbols") + "\n";
        text += places[place].empty() ? std::string() : Indented(StatesAsTable(places[place], false));
    }
    return text;
}

ExitCode RunTree(const TreeOptions& options, Progress& progress)
{
    DocumentSource source({}, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    const ExitCode opened = source.OpenWhole(options.name);
    if (opened != ExitCode::Done) {
        return opened;
    }
    return PutResult(options.asJson ? JsonText(TreeAsJson(source, source.GetDocument()))
                                    : TreeAsText(source.GetDocument()),
                     progress);
}

} // namespace

void AddDocumentTree(CLI::App& document, Invocation& invocation)
{
    CLI::App& verb = *document.add_subcommand("tree", "Show the view and the pages with their symbols");
    const auto options = std::make_shared<TreeOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_flag("--json", options->asJson, "Every property, as JSON");
    verb.footer("Symbols stand in the order in which they are drawn, the lowest first.\n\n"
                "Examples:\n"
                "  lusym document tree manual.luz\n"
                "  lusym document tree manual.luz --json | jq '.pages[0].symbols[].title'\n\n"
                "Exit codes: 0 done; 3 DOC is unreadable.\n");
    verb.callback(
        [options, &invocation] { invocation = [options](Progress& progress) { return RunTree(*options, progress); }; });
}

} // namespace lusym
