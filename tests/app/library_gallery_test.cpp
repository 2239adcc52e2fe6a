#include "LibraryText.h"
#include "Process.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace
{

using namespace test;

TEST(LibraryGallery, ShowsTheRowsOfAllLibraries)
{
    const TemporaryFolder folder;
    const std::string user = folder.Write("SymbolsLibrary/PartSymbolLibrary.xml",
                                          Library(Symbol("1", "Mine", "<description>D</description>"),
                                                  Shape("2", "Solid"), Category("c", "Both") + Category("e", "Empty")));
    const std::string delivered =
        folder.Write("SymbolsLibrary/standard/PartSymbolLibrary.xml", Library(Symbol("3", "Theirs")));
    const std::string shared = folder.Write("team/SymbolsLibrary/PartSymbolLibrary.xml", Library(Symbol("4", "Ours")));
    const nlohmann::json gallery = nlohmann::json::parse(
        RunLusym({"library", "gallery", user, delivered, "--shared", shared, "--json", "-o", "-"}).out);
    EXPECT_EQ(gallery["items"], 4);
    const nlohmann::json& groups = gallery["groups"];
    ASSERT_EQ(groups.size(), 2U);
    std::string rows;
    for (const nlohmann::json& row : groups[0]["rows"]) {
        rows += row["name"].get<std::string>() + (row["shared"] ? " shared, " : ", ");
    }
    EXPECT_EQ(rows, "ol_Solid2, img_Ours4 shared, img_Theirs3 shared, img_Mine1, ");
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
    const ProcessResult result = RunLusym({"library", "gallery", file, "-o", folder.Path("gallery.html")}, 5);
    EXPECT_TRUE(Contains(result.err, "the gallery would have 2250000 rows, and 2000000 are the most"));
    EXPECT_EQ(folder.Read("gallery.html"), "");
}

TEST(LibraryGallery, MakesAPageAndNamesThumbnailsThatCannotBeShown)
{
    const TemporaryFolder folder;
    const ProcessResult example =
        RunLusym({"library", "gallery", EXAMPLE_LIBRARY "/SymbolsLibrary/PartSymbolLibrary.xml", "-o",
                  folder.Path("gallery.html"), "--title", "My <symbols>"});
    EXPECT_EQ(example.out + example.err, "");
    EXPECT_TRUE(Contains(folder.Read("gallery.html"), "My &lt;symbols&gt;"));
    EXPECT_TRUE(Contains(folder.Read("gallery.html"), "Turn the screw"));

    const std::string file = folder.Write("lib.xml", Library(Symbol("1", "Mine")));
    EXPECT_TRUE(Contains(RunLusym({"library", "gallery", file, "-o", folder.Path("g.html")}).err,
                         "the thumbnail " + folder.Path("SymbolsLibrary/2D/p_64x64.png") + " cannot be shown"));
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
    for (std::vector<std::string> arguments : commands) {
        arguments.insert(arguments.begin(), {"library", "gallery"});
        EXPECT_TRUE(Contains(RunLusym(arguments, 2).err, arguments.back() + " is read for the gallery"));
        EXPECT_EQ(folder.Read("lib.xml"), text);
        EXPECT_EQ(folder.Read("messages.xml"), messages);
    }
}

} // namespace
