#include "DocumentSource.h"
#include "Invocation.h"
#include "Printable.h"
#include "Progress.h"

#include <luk/Annotation.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <unordered_set>

namespace lusym
{

namespace
{

struct RemoveOptions {
    std::string name;
    std::vector<std::string> ids;
    std::string output;
};

/// @return how many there were to remove
std::size_t RemoveAll(const RemoveOptions& options, DocumentSource& source)
{
    std::vector<du::SmartPtr<luk::Annotation>> found;
    std::unordered_set<std::string> named;
    for (const std::string& id : options.ids) {
        const du::SmartPtr<luk::Annotation> annotation = source.GetDocument().FindAnnotation(id);
        if (annotation && named.insert(id).second) {
            found.push_back(annotation);
        } else {
            source.GetProgress().Tell(Printable(options.name) + ": error: there is no symbol " + Quote(id) +
                                      ". List those that there are with \"lusym symbol list\".\n");
        }
    }
    return source.GetDocument().RemoveAnnotations(found);
}

ExitCode RunRemove(const RemoveOptions& options, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress, [&](DocumentSource& source) {
        const std::size_t removed = RemoveAll(options, source);
        if (removed == 0) {
            return ExitCode::Failed;
        }
        const ExitCode saved = source.Save(options.output);
        return saved == ExitCode::Done && removed < options.ids.size() ? ExitCode::PartOfBatchFailed : saved;
    });
}

} // namespace

void AddSymbolRemove(CLI::App& symbol, Invocation& invocation)
{
    CLI::App& verb = *symbol.add_subcommand("remove", "Remove symbols from a document");
    const auto options = std::make_shared<RemoveOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_option("ID", options->ids, "The symbols, as \"lusym symbol list\" names them")->required()->type_name("");
    AddDocumentOutputOption(verb, options->output);
    verb.footer("Pictures and library entries that no other symbol needs go with them.\n\n"
                "Examples:\n"
                "  lusym symbol remove manual.luz 12 13\n"
                "  lusym symbol list manual.luz --find draft --json | jq -r '.symbols[].id' |\n"
                "      xargs lusym symbol remove manual.luz -o final.luz\n\n"
                "Exit codes: 0 removed; 1 there is none of them; 3 DOC is unreadable; 4 not writable; 6 some are not\n"
                "there, the others were removed. But for 0 and 6, DOC is as it was.\n");
    verb.callback([options, &invocation] {
        invocation = [options](Progress& progress) { return RunRemove(*options, progress); };
    });
}

} // namespace lusym
