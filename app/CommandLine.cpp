#include "CommandLine.h"

#include "Interrupt.h"
#include "Invocation.h"
#include "Printable.h"
#include "Progress.h"
#include "ValueOptions.h"

#include <dp/LUTracer.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
#include <new>
#include <unistd.h>
#include <unordered_set>
#include <utility>

namespace lusym
{

namespace
{

#if defined(_WIN32)

/// Results are bytes: line feeds stay what they are. The system itself sees to streams that are closed.
void PrepareStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::_setmode(descriptor, _O_BINARY);
    }
}

#else

/// Keeps files that are opened later from taking the place of a standard stream that is closed, since what goes to that
/// stream would go into them. Writing to standard output still fails, so that a result does not vanish in silence.
void PrepareStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            // The system gives the lowest number that is free, which is this one.
            [[maybe_unused]] const int filled =
                open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY | O_NOCTTY : O_RDONLY | O_NOCTTY);
        }
    }
}

#endif

/// Warnings that are traced, each once however many symbols it is true of.
class TraceTeller
{
public:
    void Tell(const dp::TraceMessage& message)
    {
        std::string_view text = message.text;
        text.remove_suffix(text.ends_with('\n') ? 1 : 0);
        const std::lock_guard lock(m_mutex);
        if (message.type >= dp::LUTracer::WARNING && m_told.emplace(text).second) {
            std::fputs((std::string(message.channel.channel) + ": " + Printable(text) + "\n").c_str(), stderr);
        }
    }

private:
    std::mutex m_mutex;
    std::unordered_set<std::string> m_told;
};

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

constexpr const char* kExitCodes = "Results go to stdout, messages to stderr. Exit codes: 0 done; 1 failed; 2 usage; 3 "
                                   "input unreadable;\n4 output not writable; 5 findings; 6 part of a batch failed.\n";

CLI::App& AddNoun(CLI::App& program, const std::string& name, const std::string& words, const std::string& help)
{
    CLI::App& noun = *program.add_subcommand(name, words);
    noun.require_subcommand(1);
    noun.footer(help + "\n\"lusym " + name + " VERB --help\" tells more of each.\n\n" + kExitCodes);
    return noun;
}

void AddLibraryVerbs(CLI::App& program, Invocation& invocation)
{
    CLI::App& library =
        AddNoun(program, "library", "Work on symbol libraries",
                "A library is an XML document that names pictures and shapes, with their texts, in categories.\n\n"
                "Examples:\n"
                "  lusym library check SymbolsLibrary/PartSymbolLibrary.xml\n"
                "  lusym library gallery SymbolsLibrary/PartSymbolLibrary.xml -o gallery.html\n");
    AddLibraryCheck(library, invocation);
    AddLibraryList(library, invocation);
    AddLibraryFormat(library, invocation);
    AddLibraryMerge(library, invocation);
    AddLibraryGallery(library, invocation);
    AddLibraryThumbnails(library, invocation);
}

void AddDocumentVerbs(CLI::App& program, Invocation& invocation)
{
    CLI::App& document = AddNoun(
        program, "document", "Work on documents with pages and a view",
        "A document is one file (.luz) with pages, a view, symbols on both, their pictures and their entries.\n\n"
        "Examples:\n"
        "  lusym document new -o manual.luz --page a4 --library SymbolsLibrary/PartSymbolLibrary.xml\n"
        "  lusym document update manual.luz --dry-run\n");
    AddDocumentNew(document, invocation);
    AddDocumentInfo(document, invocation);
    AddDocumentTree(document, invocation);
    AddDocumentCheck(document, invocation);
    AddDocumentUpdate(document, invocation);
}

void AddSymbolVerbs(CLI::App& program, Invocation& invocation)
{
    CLI::App& symbol =
        AddNoun(program, "symbol", "Work on the symbols of a document",
                "A symbol is a library entry that stands on a page or over the view, and follows its entry.\n\n"
                "Examples:\n"
                "  lusym symbol place manual.luz --page 1 --entry img-warning-hot --at 40,250\n"
                "  lusym symbol list manual.luz\n");
    AddSymbolPlace(symbol, invocation);
    AddSymbolList(symbol, invocation);
    AddSymbolRemove(symbol, invocation);
}

void AddProductVerbs(CLI::App& program, Invocation& invocation)
{
    CLI::App& product = AddNoun(program, "product", "Work on the product in a document",
                                "The product is what the view shows: parts in assemblies, read from a model.\n\n"
                                "Example:\n"
                                "  lusym product import gearbox.glb manual.luz\n");
    AddProductImport(product, invocation);
    CLI::App& part = AddNoun(program, "part", "Work on the parts of the product in a document",
                             "A part is called by its path, from the outermost assembly to the part itself.\n\n"
                             "Examples:\n"
                             "  lusym part list manual.luz\n"
                             "  lusym part move manual.luz /housing/cover --by 0,0,40\n");
    AddPartList(part, invocation);
    AddPartMove(part, invocation);
    AddPartShow(part, invocation);
}

void AddPluginVerbs(CLI::App& program, Invocation& invocation)
{
    CLI::App& plugin = AddNoun(program, "plugin", "Work on built plug-ins",
                               "A plug-in is the library that a host loads for its symbols.\n\n"
                               "Example:\n"
                               "  lusym plugin check build/lib/liblusymbols.so\n");
    AddPluginCheck(plugin, invocation);
}

/// What a command line may say, and what it said once it has been parsed.
class Program
{
public:
    Program();

    /// @param parse goes through the arguments
    ExitCode Parse(const std::function<void(CLI::App&)>& parse)
    {
        try {
            parse(m_app);
        } catch (const CLI::ParseError& error) {
            return Explain(m_app, error);
        }
        return ExitCode::Done;
    }

    /// Empty when nothing is left to do.
    const Invocation& GetInvocation() const { return m_invocation; }
    Progress::Mode GetProgressMode() const { return m_mode; }

private:
    CLI::App m_app{"Symbols for technical illustrations: check, merge and show symbol libraries, place symbols on "
                   "pages and\nover views, keep them up to date, and draw them.",
                   "lusym"};
    Invocation m_invocation;
    Progress::Mode m_mode = Progress::Mode::Automatic;
};

Program::Program()
{
    m_app.set_version_flag("--version", "lusym " LUSYM_VERSION);
    m_app.fallthrough();
    // A path that begins with a slash is no option.
    m_app.allow_windows_style_options(false);
    m_app.require_subcommand(1);
    AddChoice<Progress::Mode>(
        m_app, "--progress", m_mode, "How far the work is, on stderr: auto (on a terminal), json (one line each), off",
        {{"auto", Progress::Mode::Automatic}, {"json", Progress::Mode::Json}, {"off", Progress::Mode::Off}})
        ->type_name("auto|json|off");
    m_app.footer(std::string("Examples:\n"
                             "  lusym demo -o /tmp/demo\n"
                             "  lusym library check SymbolsLibrary/PartSymbolLibrary.xml\n"
                             "  lusym document new -o manual.luz --page a4 --library "
                             "SymbolsLibrary/PartSymbolLibrary.xml\n"
                             "  lusym symbol place manual.luz --page 1 --entry img-warning-hot --at 40,250\n"
                             "  lusym render manual.luz -o page.svg\n\n") +
                 kExitCodes);
    AddLibraryVerbs(m_app, m_invocation);
    AddDocumentVerbs(m_app, m_invocation);
    AddProductVerbs(m_app, m_invocation);
    AddSymbolVerbs(m_app, m_invocation);
    AddRender(m_app, m_invocation);
    AddFlatten(m_app, m_invocation);
    AddPluginVerbs(m_app, m_invocation);
    AddDemo(m_app, m_invocation);
}

ExitCode Run(int argc, char** argv)
{
    Program program;
    const ExitCode parsed = program.Parse([&](CLI::App& app) { app.parse(argc, argv); });
    if (!program.GetInvocation() || parsed != ExitCode::Done) {
        return parsed;
    }
    Progress progress(program.GetProgressMode());
    return program.GetInvocation()(progress);
}

} // namespace

int RunCommandLine(int argc, char** argv)
{
    PrepareStandardStreams();
    Interrupt::Install();
    dp::LUTracer::SetSink(
        [teller = std::make_shared<TraceTeller>()](const dp::TraceMessage& message) { teller->Tell(message); });
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

ExitCode RunVerb(std::vector<std::string> arguments, Progress& progress)
{
    Program program;
    // They are taken from the back.
    std::ranges::reverse(arguments);
    const ExitCode parsed = program.Parse([&](CLI::App& app) { app.parse(std::move(arguments)); });
    return parsed == ExitCode::Done && program.GetInvocation() ? program.GetInvocation()(progress) : parsed;
}

} // namespace lusym
