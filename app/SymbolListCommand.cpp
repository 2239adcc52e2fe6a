#include "DocumentSource.h"
#include "FileText.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolState.h"
#include "TextSearch.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct SymbolListOptions {
    std::string name;
    bool asJson = false;
    std::string words;
    int page = 0; ///< 0 for all, view included
};

std::string TextsOf(const SymbolState& state)
{
    std::string texts = state.id + "\n" + state.title + "\n" + state.description + "\n" + state.entry + "\n" +
                        state.entryName + "\n" + state.file;
    for (const std::string& tag : state.tags) {
        texts.append("\n").append(tag);
    }
    for (const auto* const attachments : {&state.attachments, &state.lostAttachments}) {
        for (const SymbolAttachment& attachment : *attachments) {
            texts.append("\n").append(attachment.path).append("\n").append(attachment.partName);
        }
    }
    return texts;
}

std::vector<SymbolState> ChooseStates(const SymbolListOptions& options, DocumentSource& source)
{
    const TextSearch search(options.words);
    std::vector<SymbolState> states = StatesOf(source.GetDocument(), source.GetLostAttachments());
    std::erase_if(states, [&](const SymbolState& state) {
        return (options.page != 0 && state.page != options.page) || !search.Matches(TextsOf(state));
    });
    return states;
}

std::string ListAsJson(const SymbolListOptions& options, const std::vector<SymbolState>& states)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const SymbolState& state : states) {
        list.push_back(StateAsJson(state));
    }
    return JsonText({{"file", options.name}, {"symbols", std::move(list)}});
}

ExitCode RunSymbolList(const SymbolListOptions& options, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress, [&](DocumentSource& source) {
        const std::vector<SymbolState> states = ChooseStates(options, source);
        return PutResult(options.asJson ? ListAsJson(options, states) : StatesAsTable(states, true), progress);
    });
}

} // namespace

void AddSymbolList(CLI::App& symbol, Invocation& invocation)
{
    CLI::App& verb = *symbol.add_subcommand("list", "List the symbols of a document");
    const auto options = std::make_shared<SymbolListOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_flag("--json", options->asJson, "Every property, as JSON");
    verb.add_option("--find", options->words,
                    "Only symbols in whose texts every one of these words occurs, upper and lower case being one")
        ->type_name("TEXT");
    verb.add_option("--page", options->page, "Only symbols on this page")
        ->check(CLI::Range(1, 1000000).description(""))
        ->type_name("N");
    verb.footer(
        "AT is the centre of a picture and the origin of a shape. ENTRY is \"-\" for a symbol that follows no entry.\n"
        "ATTACHED TO is a part, and how far from it the symbol is. (!) marks a file that cannot be shown, and a part\n"
        "that is not there; \"lusym document check\" tells more.\n\n"
        "Examples:\n"
        "  lusym symbol list manual.luz --page 1\n"
        "  lusym symbol list manual.luz --find \"hot warning\"\n"
        "  lusym symbol list manual.luz --json | jq -r '.symbols[].entry' | sort | uniq -c\n\n"
        "Exit codes: 0 done, also when nothing is found; 3 DOC is unreadable.\n");
    verb.callback([options, &invocation] {
        invocation = [options](Progress& progress) { return RunSymbolList(*options, progress); };
    });
}

} // namespace lusym
