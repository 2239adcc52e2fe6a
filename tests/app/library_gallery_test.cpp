#include "LibraryText.h"
#include "Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace
{

using test::Category;
using test::Library;
using test::ProcessResult;
using test::RunLusym;
using test::Shape;
using test::Symbol;
using test::TemporaryFolder;

const std::string kExample = EXAMPLE_LIBRARY;

TEST(LibraryGallery, ShowsTheRowsOfAllLibraries)
{
    const TemporaryFolder folder;
    const std::string user = folder.Write("SymbolsLibrary/PartSymbolLibrary.xml",
                                          Library(Symbol("1", "Mine", "<description>D</description>"),
                                                  Shape("2", "Solid"), Category("c", "Both") + Category("e", "Empty")));
    const std::string delivered =
        folder.Write("SymbolsLibrary/standard/PartSymbolLibrary.xml", Library(Symbol("3", "Theirs")));
    const std::string shared = folder.Write("team/SymbolsLibrary/PartSymbolLibrary.xml", Library(Symbol("4", "Ours")));
    const ProcessResult result =
        RunLusym({"library", "gallery", user, delivered, "--shared", shared, "--json", "-o", "-"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const nlohmann::json gallery = nlohmann::json::parse(result.out);
    EXPECT_EQ(gallery["items"], 4);
    const nlohmann::json& groups = gallery["groups"];
    ASSERT_EQ(groups.size(), 2U);
    std::vector<std::string> names;
    std::vector<bool> areShared;
    for (const nlohmann::json& row : groups[0]["rows"]) {
        names.push_back(row["name"]);
        areShared.push_back(row["shared"]);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"ol_Solid2", "img_Ours4", "img_Theirs3", "img_Mine1"}));
    EXPECT_EQ(areShared, (std::vector<bool>{false, true, true, false}));
    EXPECT_EQ(groups[0]["rows"][3]["tooltip"], "\\b T\\b0 \n D");
    EXPECT_EQ(groups[0]["rows"][3]["userData"], "image.1");
    EXPECT_EQ(groups[0]["rows"][1]["icon"], folder.Path("team/SymbolsLibrary/2D/p_64x64.png"));
    EXPECT_EQ(groups[0]["rows"][3]["icon"], folder.Path("SymbolsLibrary/2D/p_64x64.png"));
    EXPECT_TRUE(groups[1]["rows"].empty());
}

TEST(LibraryGallery, RefusesMoreRowsThanItsLimit)
{
    const TemporaryFolder folder;
    std::string symbols;
    std::string categories;
    for (int index = 0; index < 1500; ++index) {
        symbols += Symbol(std::to_string(index), "S" + std::to_string(index));
        categories += Category("c");
    }
    const std::string file = folder.Write("lib.xml", Library(symbols, "", categories));
    const ProcessResult result = RunLusym({"library", "gallery", file, "-o", folder.Path("gallery.html")});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_NE(result.err.find("the gallery would have 2250000 rows, and 2000000 are the most"), std::string::npos)
        << result.err;
    EXPECT_EQ(folder.Read("gallery.html"), "");
}

TEST(LibraryGallery, MakesAPageOfTheExample)
{
    const TemporaryFolder folder;
    const ProcessResult result = RunLusym({"library", "gallery", kExample + "/SymbolsLibrary/PartSymbolLibrary.xml",
                                           "-o", folder.Path("gallery.html"), "--title", "My <symbols>"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out + result.err, "");
    const std::string page = folder.Read("gallery.html");
    EXPECT_NE(page.find("My &lt;symbols&gt;"), std::string::npos);
    EXPECT_NE(page.find("Turn the screw"), std::string::npos);
}

TEST(LibraryGallery, NamesThumbnailsThatCannotBeShown)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("lib.xml", Library(Symbol("1", "Mine")));
    const ProcessResult result = RunLusym({"library", "gallery", file, "-o", folder.Path("g.html")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("the thumbnail " + folder.Path("SymbolsLibrary/2D/p_64x64.png") + " cannot be shown"),
              std::string::npos)
        << result.err;
}

TEST(LibraryGallery, NeverReplacesWhatItReads)
{
    const TemporaryFolder folder;
    const std::string text = Library(Symbol("1", "Mine"));
    const std::string file = folder.Write("lib.xml", text);
    const std::string other = folder.Write("other/lib.xml", text);
    const std::string messages = "<messages table=\"lubase:lumodulesStrings\" default=\"en\"/>";
    folder.Write("messages.xml", messages);
    std::filesystem::create_symlink(file, folder.Path("link.xml"));
    std::filesystem::create_hard_link(file, folder.Path("hard.xml"));
    const std::vector<std::string> commands[] = {
        {file, "-o", file},
        {file, "--json", "-o", file},
        {file, "-o", folder.Path("link.xml")},
        {folder.Path("hard.xml"), "-o", file},
        {other, "--shared", file, "-o", file},
        {file, "-o", folder.Path("messages.xml")},
    };
    for (const std::vector<std::string>& command : commands) {
        std::vector<std::string> arguments = {"library", "gallery"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const ProcessResult result = RunLusym(arguments);
        EXPECT_EQ(result.exitCode, 2) << result.err;
        EXPECT_NE(result.err.find(command.back() + " is read for the gallery"), std::string::npos) << result.err;
        EXPECT_EQ(folder.Read("lib.xml"), text);
        EXPECT_EQ(folder.Read("messages.xml"), messages);
    }
}

TEST(LibraryGallery, WritesNothingUnlessEveryLibraryIsRead)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("lib.xml", Library(Symbol("1", "Mine")));
    const std::string out = folder.Write("g.html", "old");
    EXPECT_EQ(RunLusym({"library", "gallery", file, folder.Path("none"), "-o", out}).exitCode, 6);
    EXPECT_EQ(RunLusym({"library", "gallery", folder.Path("none"), "-o", out}).exitCode, 3);
    EXPECT_EQ(folder.Read("g.html"), "old");
}

} // namespace
