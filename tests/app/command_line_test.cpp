#include "LibraryText.h"
#include "Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using test::ProcessOptions;
using test::ProcessResult;
using test::RunLusym;
using test::TemporaryFolder;

constexpr const char* kExample = EXAMPLE_LIBRARY "/SymbolsLibrary/PartSymbolLibrary.xml";

TEST(CommandLine, TellsHowItIsUsedWhenItIsUsedWrongly)
{
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {
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
    for (const auto& entry : cases) {
        const ProcessResult result = RunLusym(entry.arguments);
        EXPECT_EQ(result.exitCode, 2) << entry.message;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.substr(0, entry.message.size()), entry.message) << result.err;
    }
}

TEST(CommandLine, HelpsOnStandardOutput)
{
    for (const std::vector<std::string>& verb : std::vector<std::vector<std::string>>{{},
                                                                                      {"library"},
                                                                                      {"library", "check"},
                                                                                      {"library", "list"},
                                                                                      {"library", "format"},
                                                                                      {"library", "merge"},
                                                                                      {"library", "gallery"},
                                                                                      {"demo"}}) {
        std::vector<std::string> arguments = verb;
        arguments.emplace_back("--help");
        const ProcessResult result = RunLusym(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        if (verb != std::vector<std::string>{"library"}) {
            EXPECT_NE(result.out.find("Example"), std::string::npos) << result.out;
            EXPECT_NE(result.out.find("Exit codes: 0 "), std::string::npos) << result.out;
        }
    }
    const ProcessResult version = RunLusym({"--version"});
    EXPECT_TRUE(version.out.starts_with("lusym ") && version.exitCode == 0) << version.out;
}

TEST(CommandLine, TellsThatStandardOutputIsFull)
{
    const std::string program = LUSYM_PROGRAM;
    for (const std::string arguments :
         {"--help", "library check --codes", "library list " EXAMPLE_LIBRARY "/SymbolsLibrary/PartSymbolLibrary.xml"}) {
        const ProcessResult result = test::RunProcess({"/bin/sh", "-c", program + " " + arguments + " > /dev/full"});
        EXPECT_EQ(result.exitCode, 4) << arguments << ": " << result.err;
    }
}

TEST(CommandLine, TellsWhyThePluginIsOfNoUse)
{
    const std::string noLoader = "the plug-in " ODD_PLUGIN " makes no loader of symbol libraries. Name another one";
    const struct {
        std::string plugin;
        std::string answer;
        std::string message;
    } cases[] = {
        {"/nowhere/plugin.so", "", "the plug-in /nowhere/plugin.so cannot be loaded: "},
        {ODD_PLUGIN, "unknown", noLoader},
        {ODD_PLUGIN, "nothing", noLoader},
        {ODD_PLUGIN, "another class", noLoader},
    };
    for (const auto& entry : cases) {
        ProcessOptions options;
        options.environment = {"LUSYMBOLS_PLUGIN=" + entry.plugin, "ODD_PLUGIN=" + entry.answer};
        const ProcessResult result = RunLusym({"library", "list", kExample}, options);
        EXPECT_EQ(result.exitCode, 1) << entry.answer;
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find(entry.message), std::string::npos) << result.err;
    }
}

/// One document that cannot be opened and two that are no library end every verb alike.
TEST(CommandLine, EveryVerbTellsAMissingInputFromABrokenOne)
{
    const TemporaryFolder folder;
    const std::string out = folder.Path("out");
    const std::string library = folder.Write("lib.xml", test::Library(test::Symbol("a", "A")));
    const std::string missing = folder.Path("none.xml");
    const std::pair<std::string, int> inputs[] = {
        {missing, 3},
        {folder.Path(), 3},
        {folder.Write("broken.xml", "<drellin-library>"), 5},
        {folder.Write("other.xml", "<other/>"), 5},
        {folder.Write("empty.xml", "<drellin-library/>"), 5},
    };
    for (const std::string verb : {"check", "list", "format", "merge", "gallery"}) {
        const auto run = [&](std::vector<std::string> arguments) {
            arguments.insert(arguments.begin(), {"library", verb});
            if (verb != "check" && verb != "list") {
                arguments.insert(arguments.end(), {"-o", out});
            }
            return RunLusym(arguments);
        };
        for (const auto& [input, exitCode] : inputs) {
            EXPECT_EQ(run({input}).exitCode, exitCode) << verb << " " << input;
        }
        const ProcessResult messages = run({library, "--messages", missing});
        EXPECT_EQ(messages.exitCode, 3) << verb;
        EXPECT_NE(messages.err.find(missing + ": error: the messages cannot be read: "), std::string::npos)
            << messages.err;
        if (verb == "merge" || verb == "gallery") {
            EXPECT_EQ(run({inputs[2].first, inputs[3].first}).exitCode, 5) << verb;
            EXPECT_EQ(run({inputs[2].first, missing}).exitCode, 3) << verb;
            EXPECT_EQ(run({inputs[2].first, missing, library}).exitCode, 6) << verb;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(out));
}

TEST(CommandLine, DocumentsCannotSteerTheTerminal)
{
    const TemporaryFolder folder;
    const std::string control = "\x1b[31m\xC2\x9B";
    const std::string library = folder.Write("lib.xml", test::Library(test::Symbol("a", "A")));
    const std::string broken = folder.Write("e.xml", "<drellin-library><a></\x1b[31mX>");
    const std::string messages =
        folder.Write("m.xml", "<messages table=\"lubase:lumodulesStrings\" default=\"en\"><message key=\"K\">"
                              "<text lang=\"en\">T</text><text lang=\"x\xC2\x9B\">T</text></message></messages>");
    const std::vector<std::string> commands[] = {
        {"library", "check", broken},
        {"library", "list", broken},
        {"library", "list", library, "--messages", messages, "--lang=xx"},
        {"library", "list", library, "--lang", control, "--messages", messages},
        {"library", "list", control, "--progress=json"},
        {"library", "check", control, "--json"},
        {"library", "gallery", library, "-o", folder.Path("none/" + control)},
        {"library", control},
    };
    for (const std::vector<std::string>& command : commands) {
        const ProcessResult result = RunLusym(command);
        const std::string all = result.out + result.err;
        EXPECT_NE(all, "");
        EXPECT_EQ(all.find_first_of("\x1b\x9B"), std::string::npos) << all;
    }
}

/// A file that takes the number of a closed stream must not get what is meant for the stream.
TEST(CommandLine, KeepsMessagesOutOfFilesWhenStreamsAreClosed)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("lib.xml", test::Library(test::Symbol("a", "A")));
    const std::string expected = folder.Path("expected.html");
    ASSERT_EQ(RunLusym({"library", "gallery", file, "-o", expected}).exitCode, 0);
    const struct {
        std::string arguments;
        int exitCode;
    } cases[] = {
        {"gallery " + file + " -o " + folder.Path("g.html") + " 2>&-", 0},
        {"gallery " + file + " -o " + folder.Path("g.html") + " 0<&- 1>&- 2>&-", 0},
        {"list " + file + " 1>&-", 4},
        {"gallery " + file + " -o - 1>&-", 4},
    };
    for (const auto& entry : cases) {
        const ProcessResult result = test::RunProcess({"/bin/sh", "-c", LUSYM_PROGRAM " library " + entry.arguments});
        EXPECT_EQ(result.exitCode, entry.exitCode) << entry.arguments << ": " << result.err;
        EXPECT_EQ(folder.Read("g.html"), TemporaryFolder::ReadFile(expected)) << entry.arguments;
    }
}

TEST(CommandLine, LeavesNothingBehindWhenASignalEndsIt)
{
    std::string entries;
    for (int entry = 0; entry < 20000; ++entry) {
        entries += test::Symbol("id" + std::to_string(entry), "Name " + std::to_string(entry)) + "\n";
    }
    const TemporaryFolder folder;
    const std::string file = folder.Write("lib.xml", test::Library(entries));
    const TemporaryFolder temporary;
    ProcessOptions options;
    options.environment = {"TMPDIR=" + temporary.Path()};
    for (const int signalNumber : {SIGHUP, SIGQUIT, SIGXCPU}) {
        options.signalNumber = signalNumber;
        options.signalWhenExists = temporary.Path("lusym-");
        EXPECT_EQ(RunLusym({"library", "check", file, "--strict"}, options).signalNumber, signalNumber);
        EXPECT_TRUE(std::filesystem::is_empty(temporary.Path())) << signalNumber;
    }
    // The reader goes after the first line, with SIGPIPE as a shell leaves it.
    options.signalNumber = 0;
    const std::string command = LUSYM_PROGRAM " library list " + file + " --json";
    const ProcessResult piped = test::RunProcess({"/bin/sh", "-c", command + " | head -1"}, options);
    EXPECT_EQ(piped.out, "{\n");
    EXPECT_TRUE(std::filesystem::is_empty(temporary.Path()));
}

TEST(CommandLine, NamesStandardOutputWhereAStreamIsTheOutput)
{
    const ProcessResult result = RunLusym({"library", "format", kExample, "-o", "/dev/stdout"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_NE(result.err.find("write to standard output with -o -"), std::string::npos) << result.err;
}

TEST(Demo, WalksTheWholeRoad)
{
    const TemporaryFolder folder;
    folder.Write("out/mine.txt", "mine");
    folder.Write("out/user.xml", "old");
    const std::string out = folder.Path("out");
    const ProcessResult result = RunLusym({"demo", "-o", out, "--library-dir", EXAMPLE_LIBRARY, "--progress=json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    std::set<std::string> named = {out + "/mine.txt"};
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) {
        ASSERT_NE(line.find(": "), std::string::npos) << line;
        named.insert(line.substr(0, line.find(": ")));
    }
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(out)) {
        found.insert(entry.path());
        EXPECT_GT(entry.file_size(), 0U);
    }
    EXPECT_EQ(found, named);
    EXPECT_EQ(named.size(), 7U);
    EXPECT_EQ(folder.Read("out/mine.txt"), "mine");
    EXPECT_EQ(folder.Read("out/delivered.xml"),
              TemporaryFolder::ReadFile(EXAMPLE_LIBRARY "/SymbolsLibrary/standard/PartSymbolLibrary.xml"));
    std::istringstream progress(result.err);
    for (std::string line; std::getline(progress, line);) {
        EXPECT_TRUE(nlohmann::json::parse(line, nullptr, false).contains("progress")) << line;
    }
}

TEST(Demo, FailsWhereTheExampleIsDamaged)
{
    const TemporaryFolder folder;
    std::filesystem::copy(EXAMPLE_LIBRARY, folder.Path("example"), std::filesystem::copy_options::recursive);
    const std::string library = "example/SymbolsLibrary/PartSymbolLibrary.xml";
    folder.Write(library, folder.Read(library) + " ");
    const ProcessResult result = RunLusym({"demo", "-o", folder.Path("out"), "--library-dir", folder.Path("example")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("user.xml differs from "), std::string::npos) << result.err;
    EXPECT_NE(result.out.find("gallery.html: "), std::string::npos) << result.out;

    EXPECT_EQ(RunLusym({"demo", "-o", folder.Path("out"), "--library-dir", folder.Path("nothing")}).exitCode, 1);
    EXPECT_EQ(RunLusym({"demo", "-o", folder.Path(library)}).exitCode, 4);
}

} // namespace
