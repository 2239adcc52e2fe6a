#include "DocumentPlaces.h"
#include "DocumentSource.h"
#include "FileText.h"
#include "Finding.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "PartState.h"
#include "Progress.h"
#include "SymbolState.h"

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

ordered_json SymbolsAsJson(const DocumentPlace& place)
{
    ordered_json symbols = ordered_json::array();
    for (const SymbolState& state : place.symbols) {
        symbols.push_back(StateAsJson(state));
    }
    return symbols;
}

ordered_json TreeAsJson(DocumentSource& source)
{
    ordered_json tree = {{"file", source.GetName()}};
    tree["product"] = ProductAsJson(source.GetDocument());
    tree["service"] = ServiceAsJson(source.GetDocument());
    for (const DocumentPlace& place : PlacesOf(source.GetDocument(), source.GetLostAttachments())) {
        if (place.page == 0) {
            tree["view"] = {{"symbols", SymbolsAsJson(place)}};
            tree["pages"] = ordered_json::array();
            continue;
        }
        tree["pages"].push_back(PageAsJson(place));
        tree["pages"].back()["symbols"] = SymbolsAsJson(place);
    }
    return tree;
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

std::string TreeAsText(DocumentSource& source)
{
    const luhost::Document& document = source.GetDocument();
    std::string text = ProductAsText(document) + ServiceAsText(document);
    for (const DocumentPlace& place : PlacesOf(document, source.GetLostAttachments())) {
        text += PageText(place.page) + (place.page == 0 ? std::string() : ", " + PageSizeText(place)) + ": " +
                CountOf(place.symbols.size(), "symbol", "symbols") + "\n";
        text += place.symbols.empty() ? std::string() : Indented(StatesAsTable(place.symbols, false));
    }
    return text;
}

ExitCode RunTree(const TreeOptions& options, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress, [&](DocumentSource& source) {
        return PutResult(options.asJson ? JsonText(TreeAsJson(source)) : TreeAsText(source), progress);
    });
}

} // namespace

void AddDocumentTree(CLI::App& document, Invocation& invocation)
{
    CLI::App& verb =
        *document.add_subcommand("tree", "Show the product, and the view and the pages with their symbols");
    const auto options = std::make_shared<TreeOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_flag("--json", options->asJson, "Every property, as JSON");
    verb.footer(
        "Parts stand in their assemblies, and the nodes of the service tree with the parts that they stand for.\n"
        "Symbols stand in the order in which they are drawn, the lowest first.\n\n"
        "Examples:\n"
        "  lusym document tree manual.luz\n"
        "  lusym document tree manual.luz --json | jq '.pages[0].symbols[].title'\n\n"
        "Exit codes: 0 done; 3 DOC is unreadable.\n");
    verb.callback(
        [options, &invocation] { invocation = [options](Progress& progress) { return RunTree(*options, progress); }; });
}

} // namespace lusym
