#include "CommandLine.h"

#include "Interrupt.h"
#include "Invocation.h"
#include "Printable.h"
#include "Progress.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <map>
#include <new>
#include <unistd.h>

namespace lusym
{

namespace
{

/// Keeps files that are opened later from taking the place of a standard stream that is closed, since what goes to that
/// stream would go into them. Writing to standard output still fails, so that a result does not vanish in silence.
void FillStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            // The system gives the lowest number that is free, which is this one.
            [[maybe_unused]] const int filled =
                open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY | O_NOCTTY : O_RDONLY | O_NOCTTY);
        }
    }
}

/// Says what is wrong with the command line, or helps.
ExitCode Explain(const CLI::App& program, const CLI::ParseError& error)
{
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        program.exit(error, std::cout, std::cerr);
        std::cout.flush();
        return std::cout ? ExitCode::Done : ExitCode::OutputNotWritable;
    }
    std::string verb = "lusym";
    const CLI::App* command = &program;
    for (std::vector<CLI::App*> chosen = command->get_subcommands(); !chosen.empty();
         chosen = command->get_subcommands()) {
        command = chosen.front();
        verb += " " + command->get_name();
    }
    const std::vector<std::string> unknown = program.remaining(true);
    const bool isVerbUnknown = command->get_require_subcommand_min() > 0 && !unknown.empty();
    const std::string reason = isVerbUnknown ? Quote(unknown.front()) + " is unknown here" : Printable(error.what());
    const std::string message = "lusym: " + reason + ". Run \"" + verb + " --help\" to see how it is used.\n";
    std::fputs(message.c_str(), stderr);
    return ExitCode::Usage;
}

void AddVerbs(CLI::App& program, Invocation& invocation)
{
    program.require_subcommand(1);
    CLI::App& library = *program.add_subcommand("library", "Work on symbol libraries");
    library.require_subcommand(1);
    AddLibraryCheck(library, invocation);
    AddLibraryList(library, invocation);
    AddLibraryFormat(library, invocation);
    AddLibraryMerge(library, invocation);
    AddLibraryGallery(library, invocation);
    CLI::App& document = *program.add_subcommand("document", "Work on documents with pages and a view");
    document.require_subcommand(1);
    AddDocumentNew(document, invocation);
    AddDocumentInfo(document, invocation);
    AddDocumentTree(document, invocation);
    AddDocumentCheck(document, invocation);
    AddDocumentUpdate(document, invocation);
    CLI::App& symbol = *program.add_subcommand("symbol", "Work on the symbols of a document");
    symbol.require_subcommand(1);
    AddSymbolPlace(symbol, invocation);
    AddSymbolList(symbol, invocation);
    AddSymbolRemove(symbol, invocation);
    AddRender(program, invocation);
    AddDemo(program, invocation);
}

ExitCode Run(int argc, char** argv)
{
    CLI::App program("Symbols for technical illustrations: check, merge and show symbol libraries, place symbols on "
                     "pages and\nover views, keep them up to date, and draw them.",
                     "lusym");
    program.set_version_flag("--version", "lusym " LUSYM_VERSION);
    program.fallthrough();
    Progress::Mode mode = Progress::Mode::Automatic;
    const std::map<std::string, Progress::Mode> modes = {
        {"auto", Progress::Mode::Automatic}, {"json", Progress::Mode::Json}, {"off", Progress::Mode::Off}};
    program
        .add_option("--progress", mode,
                    "How far the work is, on stderr: auto (on a terminal), json (one line each), off")
        ->transform(CLI::CheckedTransformer(modes, CLI::ignore_case).description(""))
        ->type_name("auto|json|off");
    program.footer(
        "Examples:\n"
        "  lusym demo -o /tmp/demo\n"
        "  lusym library check SymbolsLibrary/PartSymbolLibrary.xml\n"
        "  lusym document new -o manual.luz --page a4 --library SymbolsLibrary/PartSymbolLibrary.xml\n"
        "  lusym symbol place manual.luz --page 1 --entry img-warning-hot --at 40,250\n"
        "  lusym render manual.luz -o page.svg\n\n"
        "Results go to stdout, messages to stderr. Exit codes: 0 done; 1 failed; 2 usage; 3 input unreadable;\n"
        "4 output not writable; 5 findings; 6 part of a batch failed.\n");
    Invocation invocation;
    AddVerbs(program, invocation);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return Explain(program, error);
    }
    Progress progress(mode);
    return invocation(progress);
}

} // namespace

int RunCommandLine(int argc, char** argv)
{
    FillStandardDescriptors();
    Interrupt::Install();
    ExitCode result = ExitCode::Failed;
    try {
        result = Run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fputs("lusym: out of memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lusym: %s\n", Printable(error.what()).c_str());
    }
    return static_cast<int>(result);
}

} // namespace lusym
