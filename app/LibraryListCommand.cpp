#include "FileText.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "LibraryListing.h"
#include "LibrarySource.h"
#include "Progress.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct ListOptions {
    LibraryOptions library;
    std::string file;
    bool asJson = false;
    ListingFilter filter;
};

ExitCode RunList(const ListOptions& options, Progress& progress)
{
    LibrarySource source(options.library, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    const LibraryReading reading = source.Read(options.file);
    TellEffects(reading, progress);
    if (!reading.isReadable) {
        return ExitCode::InputUnreadable;
    }
    if (!reading.examination.isRead) {
        return ExitCode::Findings;
    }
    return PutResult(options.asJson ? JsonText(ListingAsJson(reading, options.filter))
                                    : ListingAsTable(reading, options.filter),
                     progress);
}

} // namespace

void AddLibraryList(CLI::App& library, Invocation& invocation)
{
    CLI::App& verb = *library.add_subcommand("list", "List the entries of a library");
    const auto options = std::make_shared<ListOptions>();
    verb.add_option("LIB.xml", options->file, "The library")->required();
    verb.add_flag("--json", options->asJson, "Every field, as JSON");
    const CLI::Option* const category =
        verb.add_option("--category", options->filter.categoryId, "Only the entries of this category")->type_name("ID");
    verb.add_option("--find", options->filter.words,
                    "Only entries in whose texts every one of these words occurs, upper and lower case being one")
        ->type_name("TEXT");
    AddLibraryOptions(verb, options->library, true);
    verb.footer("Examples:\n"
                "  lusym library list lib.xml --find \"arrow left\"\n"
                "  lusym library list lib.xml --category cat-arrows --lang de\n"
                "  lusym library list lib.xml --json | jq -r '.entries[].file'\n\n"
                "Exit codes: 0 done, also when nothing is found; 3 LIB.xml is unreadable; 5 it is no library.\n");
    verb.callback([options, category, &invocation] {
        options->filter.hasCategoryId = category->count() != 0;
        invocation = [options](Progress& progress) { return RunList(*options, progress); };
    });
}

} // namespace lusym
