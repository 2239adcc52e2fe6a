#include "DocumentSource.h"
#include "FollowingSymbols.h"
#include "Invocation.h"
#include "PartState.h"
#include "Printable.h"
#include "Progress.h"
#include "TextValues.h"
#include "Turn.h"

#include <luhost/ProductModel.h>
#include <luk/Instance.h>
#include <luk/ShapeScene.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct MoveOptions {
    std::string name;
    std::vector<std::string> parts;
    std::string by;
    std::string to;
    std::string rotate;
    std::string about;
    std::string output;
};

std::string FaultOfPoint(const std::string& text)
{
    return ParseNumbers(text, ',').size() == 3 ? std::string() : Quote(text) + " is no X,Y,Z in millimetres";
}

std::string FaultOfTurn(const std::string& text)
{
    return ParseTurn(text) ? std::string() : Quote(text) + " is no turn. Write z,30 or 0,0,1,30";
}

dg::DPoint3D PointOf(const std::string& text)
{
    const std::vector<double> numbers = ParseNumbers(text, ',');
    return {numbers[0], numbers[1], numbers[2]};
}

/// Where a part that stands here goes.
dg::Location Moved(const MoveOptions& options, const dg::Location& from)
{
    dg::Location to = from;
    if (const std::optional<Turn> turn = ParseTurn(options.rotate)) {
        const dg::DPoint3D center = options.about.empty() ? from.GetPosition() : PointOf(options.about);
        const dg::FMat33 matrix = MatrixOf(*turn);
        to.SetMat(matrix * from.GetMat());
        to.SetPosition(center + matrix * (from.GetPosition() - center));
    }
    if (!options.by.empty()) {
        to.SetPosition(to.GetPosition() + (PointOf(options.by) - dg::DPoint3D::ORIGIN));
    }
    if (!options.to.empty()) {
        to.SetPosition(PointOf(options.to));
    }
    return to;
}

ExitCode MoveParts(const MoveOptions& options, DocumentSource& source)
{
    const auto parts = FindParts(source, options.parts);
    if (parts.empty()) {
        return ExitCode::Failed;
    }
    FollowingSymbols following(source);
    {
        const luk::ShapeScene::UpdateBatch batch(*source.GetDocument().GetShapeScene());
        for (const auto& part : parts) {
            const dg::Location to = Moved(options, part->GetLocation());
            std::string problem;
            if (!luhost::CheckProductLocation(to, problem)) {
                source.GetProgress().Tell(Printable(source.GetName()) +
                                          ": error: " + Quote(part->GetInstance()->GetIdPath().GetText()) +
                                          " cannot be moved there: " + problem + ".\n");
                return ExitCode::Failed;
            }
            part->SetLocation(to, true);
        }
    }
    source.WaitForLoads();
    following.Finish();
    const ExitCode written = source.Save(options.output);
    const ExitCode saved = written == ExitCode::Done ? following.Put(options.output) : written;
    return saved == ExitCode::Done && parts.size() < options.parts.size() ? ExitCode::PartOfBatchFailed : saved;
}

ExitCode RunMove(const MoveOptions& options, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress,
                          [&](DocumentSource& source) { return MoveParts(options, source); });
}

} // namespace

void AddPartMove(CLI::App& part, Invocation& invocation)
{
    CLI::App& verb = *part.add_subcommand("move", "Move parts in the view; attached symbols follow");
    const auto options = std::make_shared<MoveOptions>();
    AddDocumentArgument(verb, options->name);
    verb.add_option("PART", options->parts, "The parts, as \"lusym part list\" names them")->required()->type_name("");
    CLI::Option* const by =
        verb.add_option("--by", options->by, "So far, in millimetres")->check(FaultOfPoint)->type_name("X,Y,Z");
    CLI::Option* const to =
        verb.add_option("--to", options->to, "To this place, in millimetres")->check(FaultOfPoint)->type_name("X,Y,Z");
    to->excludes(by);
    CLI::Option* const rotate =
        verb.add_option("--rotate", options->rotate, "Around x, y, z or an axis X,Y,Z, in degrees")
            ->check(FaultOfTurn)
            ->type_name("AXIS,DEG");
    verb.add_option("--about", options->about, "The axis goes through this point (default: the part's own origin)")
        ->check(FaultOfPoint)
        ->needs(rotate)
        ->type_name("X,Y,Z");
    AddDocumentOutputOption(verb, options->output);
    verb.footer(
        "A part is turned before it is moved. What is in an assembly moves along, unless it has been moved by itself.\n"
        "Other occurrences of the same component stay where they are. Symbols that follow are told on stdout; they go\n"
        "where the part goes and do not turn with it.\n\n"
        "Examples:\n"
        "  lusym part move manual.luz /housing/cover --by 0,0,40\n"
        "  lusym part move manual.luz /input/shaft --rotate z,30 --about 0,0,0 --by=-20,0,0\n\n"
        "Exit codes: 0 done; 1 there is none of them, or no such place; 3 DOC is unreadable; 4 not writable; 6 some "
        "are\n"
        "not there, the others were moved. But for 0 and 6, DOC is as it was.\n");
    verb.callback([options, by, to, rotate, &invocation] {
        if (by->count() + to->count() + rotate->count() == 0) {
            throw CLI::RequiredError("--by, --to or --rotate");
        }
        invocation = [options](Progress& progress) { return RunMove(*options, progress); };
    });
}

} // namespace lusym
