#include "DocumentSource.h"
#include "FileText.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "PartState.h"
#include "Printable.h"
#include "Progress.h"
#include "TextSearch.h"
#include "TextTable.h"
#include "TextValues.h"

#include <luk/Instance.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct PartListOptions {
    std::string name;
    std::string words;
    bool asJson = false;
};

using Parts = std::vector<du::SmartPtr<luk::ShapeInstance>>;

std::string PartsAsTable(const Parts& parts)
{
    std::vector<std::vector<std::string>> rows = {{"PART", "NAME", "TRIANGLES", "AT", "STATE"}};
    for (const auto& part : parts) {
        const dg::DPoint3D& at = part->GetLocation().GetPosition();
        rows.push_back({Printable(part->GetInstance()->GetIdPath().GetText()), Printable(NameOf(*part)),
                        std::to_string(TrianglesOf(*part)),
                        NumberText(at.x) + "," + NumberText(at.y) + "," + NumberText(at.z), PartMarks(*part)});
    }
    return TableText(rows);
}

std::string PartsAsJson(const PartListOptions& options, const Parts& parts)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& part : parts) {
        list.push_back(PartAsJson(*part));
    }
    return JsonText({{"file", options.name}, {"parts", std::move(list)}});
}

ExitCode RunPartList(const PartListOptions& options, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress, [&](DocumentSource& source) {
        const TextSearch search(options.words);
        Parts parts = PartsOf(source.GetDocument());
        std::erase_if(parts, [&](const auto& part) {
            return !search.Matches(part->GetInstance()->GetIdPath().GetText() + "\n" + NameOf(*part));
        });
        return PutResult(options.asJson ? PartsAsJson(options, parts) : PartsAsTable(parts), progress);
    });
}

} // namespace

void AddPartList(CLI::App& part, Invocation& invocation)
{
    CLI::App& verb = *part.add_subcommand("list", "List the parts of a document's product");
    const auto options = std::make_shared<PartListOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_flag("--json", options->asJson, "Every property, as JSON");
    verb.add_option("--find", options->words,
                    "Only parts in whose path and name every one of these words occurs, upper and lower case being one")
        ->type_name("TEXT");
    verb.footer(
        "PART is what other verbs call the part. AT is its position in the view, in millimetres. Assemblies stand\n"
        "before what is in them and have no triangles of their own.\n\n"
        "Examples:\n"
        "  lusym part list manual.luz --find bolt\n"
        "  lusym part list manual.luz --json | jq -r '.parts[] | select(.hidden) | .part'\n\n"
        "Exit codes: 0 done; 3 DOC is unreadable.\n");
    verb.callback([options, &invocation] {
        invocation = [options](Progress& progress) { return RunPartList(*options, progress); };
    });
}

} // namespace lusym
