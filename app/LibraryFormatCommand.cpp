#include "Invocation.h"
#include "LibrarySource.h"
#include "LibraryWriting.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace lusym
{

namespace
{

struct FormatOptions {
    LibraryOptions library;
    std::string file;
    std::string output;
    bool asStandard = false;
    bool allowLoss = false;
};

std::size_t CountLosses(const Examination& examination)
{
    std::size_t losses = 0;
    for (const Finding& finding : examination.findings) {
        const Effect effect = KindOf(finding.code).effect;
        losses += effect == Effect::Lost || effect == Effect::NoneRead ? 1 : 0;
    }
    return losses;
}

/// @return Done when the library may be written
ExitCode Judge(const LibraryReading& reading, bool allowLoss, Progress& progress)
{
    const std::string name = Printable(reading.place.name);
    if (!reading.isReadable) {
        return ExitCode::InputUnreadable;
    }
    if (!reading.examination.hasContent) {
        progress.Tell(name + ": nothing of it can be read, so nothing is written.\n");
        return ExitCode::Findings;
    }
    const std::size_t losses = CountLosses(reading.examination);
    if (losses != 0 && !allowLoss) {
        progress.Tell(name + ": " + CountOf(losses, "thing", "things") +
                      " would be lost, so nothing is written. Mend them, or repeat with --allow-loss.\n");
        return ExitCode::Findings;
    }
    return ExitCode::Done;
}

ExitCode RunFormat(const FormatOptions& options, Progress& progress)
{
    LibrarySource source(options.library, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    const LibraryReading reading = source.Read(options.file, options.asStandard);
    TellEffects(reading, progress);
    const ExitCode judgement = Judge(reading, options.allowLoss, progress);
    if (judgement != ExitCode::Done) {
        return judgement;
    }
    return PutLibrary(ContentOf(reading.examination), options.asStandard, options.output, progress);
}

} // namespace

void AddLibraryFormat(CLI::App& library, Invocation& invocation)
{
    CLI::App& verb = *library.add_subcommand("format", "Read a library and write it in the layout of the format");
    const auto options = std::make_shared<FormatOptions>();
    verb.add_option("LIB.xml", options->file, "The library")->required();
    AddOutputOption(verb, options->output, "OUT.xml");
    verb.add_flag("--standard", options->asStandard,
                  "Write the delivered library: texts instead of keys, files in SymbolsLibrary/standard");
    verb.add_flag("--allow-loss", options->allowLoss, "Write although something of LIB.xml is lost");
    AddLibraryOptions(verb, options->library, false);
    verb.footer(
        "What would come back otherwise, urls that are rewritten among it, is told on stderr. What would be lost\n"
        "(unknown elements, entries whose name is taken, ...) stops the work unless --allow-loss is given; with\n"
        "it the sections of a library that has not exactly five are saved too. OUT.xml may be LIB.xml itself: it\n"
        "is replaced in one step, or stays as it is.\n\n"
        "Examples:\n"
        "  lusym library format lib.xml -o lib.xml\n"
        "  lusym library format lib.xml -o - | diff lib.xml -\n"
        "  lusym library format lib.xml -o SymbolsLibrary/standard/PartSymbolLibrary.xml --standard\n\n"
        "Exit codes: 0 written; 3 LIB.xml is unreadable; 4 OUT.xml is not writable; 5 something would be lost,\n"
        "or LIB.xml is no library.\n");
    verb.callback([options, &invocation] {
        invocation = [options](Progress& progress) { return RunFormat(*options, progress); };
    });
}

} // namespace lusym
