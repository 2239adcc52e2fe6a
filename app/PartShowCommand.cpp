#include "DocumentSource.h"
#include "FollowingSymbols.h"
#include "Invocation.h"
#include "PartState.h"
#include "Progress.h"

#include <luk/ShapeScene.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct ShowOptions {
    std::string name;
    std::vector<std::string> parts;
    std::string output;
};

ExitCode RunShow(const ShowOptions& options, bool isShown, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress, [&](DocumentSource& source) {
        const auto parts = FindParts(source, options.parts);
        if (parts.empty()) {
            return ExitCode::Failed;
        }
        FollowingSymbols following(source);
        {
            const luk::ShapeScene::UpdateBatch batch(*source.GetDocument().GetShapeScene());
            for (const auto& part : parts) {
                part->SetVisibility(isShown, true);
            }
        }
        source.WaitForLoads();
        following.Finish();
        const ExitCode written = source.Save(options.output);
        const ExitCode saved = written == ExitCode::Done ? following.Put(options.output) : written;
        return saved == ExitCode::Done && parts.size() < options.parts.size() ? ExitCode::PartOfBatchFailed : saved;
    });
}

void AddVerb(CLI::App& part, Invocation& invocation, bool isShown)
{
    const std::string name = isShown ? "show" : "hide";
    CLI::App& verb =
        *part.add_subcommand(name, isShown ? "Show parts that are hidden" : "Hide parts, and what is in them");
    const auto options = std::make_shared<ShowOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_option("PART", options->parts, "The parts, as \"lusym part list\" names them")->required()->type_name("");
    AddDocumentOutputOption(verb, options->output);
    verb.footer(
        "Symbols that are attached to a part are hidden and shown with it." +
        std::string(isShown ? " A part in an assembly that is hidden\nstays unseen until that is shown too." : "") +
        "\n\nExample:\n  lusym part " + name + " manual.luz /housing/cover\n\n" +
        "Exit codes: 0 done; 1 there is none of them; 3 DOC is unreadable; 4 not writable; 6 some are not there,\n"
        "the others were done. But for 0 and 6, DOC is as it was.\n");
    verb.callback([options, isShown, &invocation] {
        invocation = [options, isShown](Progress& progress) { return RunShow(*options, isShown, progress); };
    });
}

} // namespace

void AddPartShow(CLI::App& part, Invocation& invocation)
{
    AddVerb(part, invocation, true);
    AddVerb(part, invocation, false);
}

} // namespace lusym
