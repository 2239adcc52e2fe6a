#include "Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

TEST(CommandLine, TellsWhyThePluginIsMissing)
{
    ProcessOptions options;
    options.environment = {"LUSYMBOLS_PLUGIN=/nowhere/plugin.so"};
    const ProcessResult result = RunLusym({"library", "check", "x"}, options);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("the plug-in /nowhere/plugin.so cannot be loaded: "), std::string::npos) << result.err;
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
