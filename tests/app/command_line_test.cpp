#include "LibraryText.h"
#include "Process.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>

namespace
{

using namespace test;
using Arguments = std::vector<std::string>;

constexpr const char* kExample = EXAMPLE_LIBRARY "/SymbolsLibrary/PartSymbolLibrary.xml";

TEST(CommandLine, TellsHowItIsUsedWhenItIsUsedWrongly)
{
    const std::pair<Arguments, std::string> cases[] = {
        {{}, "lusym: A subcommand is required. Run \"lusym --help\""},
        {{"libary"}, "lusym: \"libary\" is unknown here. Run \"lusym --help\""},
        {{"library"}, "lusym: A subcommand is required. Run \"lusym library --help\""},
        {{"library", "chek", "x"}, "lusym: \"chek\" is unknown here. Run \"lusym library --help\""},
        {{"library", "check"}, "lusym: LIB.xml is required. Run \"lusym library check --help\""},
        {{"library", "check", "a", "b"}, "lusym: The following argument was not expected: b. Run"},
        {{"library", "check", "a", "--origin=mine"}, "lusym: --origin: mine not in {user,delivered,shared}. Run"},
        {{"library", "format", "a"}, "lusym: --output is required. Run"},
        {{"library", "format", "a", "-o", "b", "--origin=shared"}, "lusym: --origin: shared not in {user,delivered}."},
        {{"library", "merge", "a", "-o", "-", "--copy-files"}, "lusym: --copy-files: needs a file as OUT.xml"},
        {{"library", "check", "a", "--progress=loud"}, "lusym: --progress: "},
        {{"library", "format", "a", "-o", ""}, "lusym: -o needs the name of a file. Run"},
        {{"library", "merge", "a", "-o", ""}, "lusym: -o needs the name of a file. Run"},
        {{"library", "gallery", "a", "-o", ""}, "lusym: -o needs the name of a file. Run"},
    };
    for (const auto& [arguments, message] : cases) {
        const ProcessResult result = RunLusym(arguments, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.substr(0, message.size()), message) << result.err;
    }
}

TEST(CommandLine, HelpsOnStandardOutput)
{
    const std::string verbs[] = {"",
                                 "library",
                                 "library check",
                                 "library list",
                                 "library format",
                                 "library merge",
                                 "library gallery",
                                 "document",
                                 "document new",
                                 "document info",
                                 "document tree",
                                 "document check",
                                 "document update",
                                 "symbol",
                                 "symbol place",
                                 "symbol list",
                                 "symbol remove",
                                 "render",
                                 "plugin",
                                 "plugin check",
                                 "demo"};
    for (const std::string& verb : verbs) {
        std::istringstream words(verb + " --help");
        const ProcessResult result = RunLusym({std::istream_iterator<std::string>(words), {}});
        EXPECT_EQ(result.err, "");
        EXPECT_TRUE(Contains(result.out, "Example") && Contains(result.out, "Exit codes: 0 ")) << result.out;
        EXPECT_EQ(result.out.find(" in ["), std::string::npos) << result.out;
    }
    EXPECT_TRUE(RunLusym({"--version"}).out.starts_with("lusym "));
}

TEST(CommandLine, TellsWhyThePluginIsOfNoUse)
{
    const std::string noLoader = "the plug-in " ODD_PLUGIN " makes no loader of symbol libraries. Name another one";
    const std::pair<Arguments, std::string> cases[] = {
        {{"LUSYMBOLS_PLUGIN=/nowhere/plugin.so"}, "the plug-in /nowhere/plugin.so cannot be loaded: "},
        {{"LUSYMBOLS_PLUGIN=" ODD_PLUGIN, "ODD_PLUGIN=unknown"}, noLoader},
        {{"LUSYMBOLS_PLUGIN=" ODD_PLUGIN, "ODD_PLUGIN=nothing"}, noLoader},
        {{"LUSYMBOLS_PLUGIN=" ODD_PLUGIN, "ODD_PLUGIN=another class"}, noLoader},
    };
    for (const auto& [environment, message] : cases) {
        const ProcessResult result = RunLusym({"library", "list", kExample}, 1, {environment, 0, {}});
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(Contains(result.err, message));
    }
}

/// One document that cannot be opened and two that are no library end every verb alike.
TEST(CommandLine, EveryVerbTellsAMissingInputFromABrokenOne)
{
    const TemporaryFolder folder;
    const std::string out = folder.Write("out", "old");
    const std::string library = folder.Write("lib.xml", Library(Symbol("a", "A")));
    const std::string missing = folder.Path("none.xml");
    const std::string broken = folder.Write("broken.xml", "<drellin-library>");
    const std::string other = folder.Write("other.xml", "<other/>");
    for (const std::string verb : {"check", "list", "format", "merge", "gallery"}) {
        const auto run = [&](Arguments arguments, int exitCode) {
            arguments.insert(arguments.begin(), {"library", verb});
            if (verb != "check" && verb != "list") {
                arguments.insert(arguments.end(), {"-o", out});
            }
            return RunLusym(arguments, exitCode);
        };
        run({missing}, 3);
        run({folder.Path()}, 3);
        run({broken}, 5);
        run({other}, 5);
        run({folder.Write("empty.xml", "<drellin-library/>")}, 5);
        const ProcessResult messages = run({library, "--messages", missing}, 3);
        EXPECT_TRUE(Contains(messages.err, missing + ": error: the messages cannot be read: "));
        if (verb == "merge" || verb == "gallery") {
            run({broken, other}, 5);
            run({broken, missing}, 3);
            const ProcessResult some = run({broken, missing, library}, 6);
            EXPECT_TRUE(verb == "gallery" || Contains(some.err, "2 of 3 libraries could not be read, so nothing is"));
        }
    }
    EXPECT_EQ(folder.Read("out"), "old");
}

TEST(CommandLine, DocumentsCannotSteerTheTerminal)
{
    const TemporaryFolder folder;
    const std::string control = "\x1b[31m\xC2\x9B";
    const std::string library = folder.Write("lib.xml", Library(Symbol("a", "A")));
    const std::string broken = folder.Write("e.xml", "<drellin-library><a></\x1b[31mX>");
    const std::string messages =
        folder.Write("m.xml", "<messages table=\"lubase:lumodulesStrings\" default=\"en\"><message key=\"K\">"
                              "<text lang=\"en\">T</text><text lang=\"x\xC2\x9B\">T</text></message></messages>");
    const std::pair<Arguments, int> commands[] = {
        {{"check", broken}, 5},
        {{"list", broken}, 5},
        {{"list", library, "--messages", messages, "--lang=xx"}, 0},
        {{"list", library, "--lang", control, "--messages", messages}, 0},
        {{"list", control, "--progress=json"}, 3},
        {{"check", control, "--json"}, 3},
        {{"gallery", library, "-o", folder.Path("none/" + control)}, 4},
        {{control}, 2},
    };
    for (auto [arguments, exitCode] : commands) {
        arguments.insert(arguments.begin(), "library");
        const ProcessResult result = RunLusym(arguments, exitCode);
        const std::string all = result.out + result.err;
        EXPECT_NE(all, "");
        EXPECT_EQ(all.find_first_of("\x1b\x9B"), std::string::npos) << all;
    }
}

/// A full output is told, and a file that takes the number of a closed stream gets nothing meant for the stream.
TEST(CommandLine, TellsOfStreamsThatTakeNothing)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("lib.xml", Library(Symbol("a", "A")));
    RunLusym({"library", "gallery", file, "-o", folder.Path("expected.html")});
    const std::string gallery = "library gallery " + file + " -o " + folder.Path("g.html");
    const std::pair<std::string, int> cases[] = {
        {gallery + " 2>&-", 0},
        {gallery + " 0<&- 1>&- 2>&-", 0},
        {"library list " + file + " 1>&-", 4},
        {"library gallery " + file + " -o - 1>&-", 4},
        {"--help > /dev/full", 4},
        {"library check --codes > /dev/full", 4},
        {"library list " + file + " > /dev/full", 4},
    };
    for (const auto& [arguments, exitCode] : cases) {
        const ProcessResult result = RunProcess({"/bin/sh", "-c", LUSYM_PROGRAM " " + arguments});
        EXPECT_EQ(result.exitCode, exitCode) << arguments << ": " << result.err;
        EXPECT_EQ(folder.Read("g.html"), folder.Read("expected.html")) << arguments;
    }
    // Behind a pipe the output is a stream that has no folder for a temporary file beside it.
    const std::string toStream = LUSYM_PROGRAM " library format " + file + " -o /dev/stdout";
    const ProcessResult piped = RunProcess({"/bin/sh", "-c", "{ " + toStream + "; echo $?; } | cat"});
    EXPECT_EQ(piped.out, "4\n");
    EXPECT_TRUE(Contains(piped.err, "write to standard output with -o -"));
}

TEST(CommandLine, LeavesNothingBehindWhenASignalEndsIt)
{
    std::string entries;
    for (int entry = 0; entry < 20000; ++entry) {
        entries += Symbol("id" + std::to_string(entry), "Name " + std::to_string(entry)) + "\n";
    }
    const TemporaryFolder folder;
    const TemporaryFolder temporary;
    const std::string file = folder.Write("in/lib.xml", Library(entries));
    const std::string out = folder.Write("out/out.xml", "old");
    ProcessOptions options{{"TMPDIR=" + temporary.Path()}, 0, {}};
    const std::tuple<int, Arguments, std::string> cases[] = {
        {SIGHUP, {"check", file, "--strict"}, temporary.Path("lusym-")},
        {SIGQUIT, {"check", file, "--strict"}, temporary.Path("lusym-")},
        {SIGXCPU, {"check", file, "--strict"}, temporary.Path("lusym-")},
        // Once while the document is being read, once while it is being written.
        {SIGINT, {"format", file, "-o", out}, temporary.Path("lusym-")},
        {SIGTERM, {"format", file, "-o", out}, folder.Path("out/.")},
    };
    for (auto [signalNumber, arguments, whenExists] : cases) {
        options.signalNumber = signalNumber;
        options.signalWhenExists = whenExists;
        arguments.insert(arguments.begin(), "library");
        EXPECT_EQ(RunLusym(arguments, -1, options).signalNumber, signalNumber);
        EXPECT_TRUE(std::filesystem::is_empty(temporary.Path())) << signalNumber;
        EXPECT_EQ(folder.Read("out/out.xml"), "old") << signalNumber;
        std::filesystem::remove(out);
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path("out"))) << signalNumber;
        folder.Write("out/out.xml", "old");
    }
    // The reader goes after the first line, with SIGPIPE as a shell leaves it.
    options.signalNumber = 0;
    const std::string command = LUSYM_PROGRAM " library list " + file + " --json";
    EXPECT_EQ(RunProcess({"/bin/sh", "-c", command + " | head -1"}, options).out, "{\n");
    EXPECT_TRUE(std::filesystem::is_empty(temporary.Path()));
}

/// The files that the end of the demonstration names.
std::set<std::string> FilesOfDemo(const std::string& out)
{
    std::set<std::string> files;
    const std::string heading = "\nThese files were made:\n";
    const std::size_t start = out.find(heading);
    std::istringstream lines(start == out.npos ? std::string() : out.substr(start + heading.size()));
    for (std::string line; std::getline(lines, line);) {
        files.insert(line.substr(0, line.find(": ")));
    }
    return files;
}

TEST(Demo, WalksTheWholeRoad)
{
    const TemporaryFolder folder;
    folder.Write("out/mine.txt", "mine");
    folder.Write("out/user.xml", "old");
    const std::string out = folder.Path("out");
    const ProcessResult result = RunLusym({"demo", "-o", out, "--library-dir", EXAMPLE_LIBRARY, "--progress=off"});
    std::set<std::string> named = FilesOfDemo(result.out);
    named.insert(out + "/mine.txt");
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(out)) {
        found.insert(entry.path());
        EXPECT_TRUE(entry.is_directory() || entry.file_size() > 0U);
    }
    EXPECT_EQ(found, named);
    EXPECT_EQ(folder.Read("out/mine.txt"), "mine");
    EXPECT_EQ(folder.Read("out/delivered.xml"),
              TemporaryFolder::ReadFile(EXAMPLE_LIBRARY "/SymbolsLibrary/standard/PartSymbolLibrary.xml"));
    const std::string document = folder.Path("out/manual.luz");
    EXPECT_TRUE(Contains(result.out, "\n$ lusym document update " + document + " --dry-run\n" + document + ": entry "));
    EXPECT_TRUE(Contains(result.err, document + ": 33 symbols placed.\n"));
    EXPECT_TRUE(Contains(result.err, document + ": 3 symbols follow 1 changed entry; nothing is written.\n"));
    EXPECT_TRUE(Contains(result.err, "0 errors, 0 warnings in 33 symbols\n"));
    EXPECT_NE(folder.Read("out/before.svg"), folder.Read("out/page-1.svg"));
    // All of it again, with progress, in the place of what is there.
    std::istringstream progress(RunLusym({"demo", "-o", out, "--progress=json"}).err);
    std::size_t steps = 0;
    for (std::string line; std::getline(progress, line);) {
        steps += nlohmann::json::parse(line, nullptr, false).contains("progress") ? 1U : 0U;
    }
    EXPECT_GT(steps, 20U);
}

TEST(Demo, FailsWhereTheExampleIsDamaged)
{
    const TemporaryFolder folder;
    std::filesystem::copy(EXAMPLE_LIBRARY, folder.Path("example"), std::filesystem::copy_options::recursive);
    const std::string library = "example/SymbolsLibrary/PartSymbolLibrary.xml";
    folder.Write(library, folder.Read(library) + " ");
    const std::string out = folder.Path("out");
    const ProcessResult result = RunLusym({"demo", "-o", out, "--library-dir", folder.Path("example")}, 1);
    EXPECT_TRUE(Contains(result.err, "user.xml differs from "));
    EXPECT_TRUE(Contains(result.out, "gallery.html: "));
    EXPECT_TRUE(Contains(result.out, "view.png: "));
    RunLusym({"demo", "-o", out, "--library-dir", folder.Path("nothing")}, 1);
    RunLusym({"demo", "-o", folder.Path(library)}, 4);
}

} // namespace
