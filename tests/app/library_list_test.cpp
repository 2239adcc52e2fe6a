#include "LibraryText.h"
#include "Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace
{

using test::Category;
using test::Library;
using test::ProcessOptions;
using test::ProcessResult;
using test::RunLusym;
using test::Shape;
using test::Symbol;
using test::TemporaryFolder;

std::vector<std::string> IdsIn(const std::string& out)
{
    std::vector<std::string> ids;
    const nlohmann::json listing = nlohmann::json::parse(out, nullptr, false);
    for (const nlohmann::json& entry : listing.at("entries")) {
        ids.push_back(entry["id"]);
    }
    return ids;
}

TEST(LibraryList, ShowsATableWithoutTrustingNames)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write(
        "lib.xml", Library(Symbol("a", "\xC3\x84rger &lt;b&gt;&quot;\n\xE2\x80\xAEx"), Shape("long-id", "S")));
    const ProcessResult result = RunLusym({"library", "list", file});
    EXPECT_EQ(result.out, "KIND    ID       CATEGORY  NAME                 TITLE\n"
                          "shape   long-id  c         S                    T\n"
                          "symbol  a        c         \xC3\x84rger <b>\"\\n\\u202ex  T\n");
    EXPECT_EQ(result.exitCode, 0);
}

TEST(LibraryList, FindsLessWithMoreWords)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write(
        "lib.xml",
        Library(Symbol("a", "Pfeil links") +
                    Symbol("b", "Pfeil rechts",
                           "<tooltip>\xC3\x9C"
                           "berholen</tooltip>") +
                    Symbol("c", "Kreis", "<tags><tag type=\"TORQUE\"><description>Pfeil</description></tag></tags>"),
                "", Category("c", "Richtungen")));
    const std::map<std::string, std::vector<std::string>> searches = {
        {"", {"a", "b", "c"}},
        {"PFEIL", {"a", "b", "c"}},
        {"pfeil richtungen", {"a", "b", "c"}},
        {"pfeil  LINKS", {"a"}},
        {"\xC3\xBC"
         "BERHOLEN",
         {"b"}},
        {"pfeil kreis", {"c"}},
        {"pfeil links rechts", {}},
        {"linkspfeil", {}},
    };
    for (const auto& [words, ids] : searches) {
        const ProcessResult result = RunLusym({"library", "list", file, "--json", "--find", words});
        EXPECT_EQ(IdsIn(result.out), ids) << words;
        EXPECT_EQ(result.exitCode, 0);
    }
}

TEST(LibraryList, SelectsOneCategory)
{
    const TemporaryFolder folder;
    const std::string stray = "<symbol id=\"x\"><name>X</name></symbol>";
    const std::string file = folder.Write("lib.xml", Library(Symbol("a", "A") + stray));
    EXPECT_EQ(IdsIn(RunLusym({"library", "list", file, "--json", "--category", "c"}).out),
              std::vector<std::string>{"a"});
    EXPECT_EQ(IdsIn(RunLusym({"library", "list", file, "--json", "--category", ""}).out),
              std::vector<std::string>{"x"});
}

TEST(LibraryList, WritesEveryField)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write(
        "SymbolsLibrary/lib.xml",
        Library("<symbol id=\"a\" categoryId=\"c\" billboard=\"true\"><name locid=\"K\"/><title>T\xFF</title>"
                "<tooltip>tip</tooltip><gallery_thumbnail url=\"2D/p_64x64.png\"/><image url=\"2D/p.png\"/>"
                "<scale>50</scale><flip vertical=\"1\"/><rotate left=\"90\"/>"
                "<tags><tag type=\"TORQUE\"><quantity unit=\"Nm\">25</quantity></tag></tags></symbol>",
                Shape("s", "S",
                      "<scale>2.5</scale><shape_csys b=\"3\" pos_z=\"7\"/><camera ortho=\"true\" value=\"8\"/>"
                      "<axis_id>4</axis_id>")));
    const ProcessResult result = RunLusym({"library", "list", file, "--json"});
    const nlohmann::json listing = nlohmann::json::parse(result.out, nullptr, false);
    ASSERT_FALSE(listing.is_discarded()) << result.out;
    EXPECT_EQ(listing["root"], folder.Path());
    EXPECT_EQ(listing["origin"], "user");
    EXPECT_EQ(listing["units"], "mm");
    const nlohmann::json& shape = listing["entries"][0];
    EXPECT_EQ(shape["kind"], "shape");
    EXPECT_EQ(shape["scale"], 2.5);
    EXPECT_EQ(shape["csys"]["matrix"][1], 3.0);
    EXPECT_EQ(shape["csys"]["position"][2], 7.0);
    EXPECT_EQ(shape["camera"]["value"], 8.0);
    EXPECT_EQ(shape["axisId"], 4);
    const nlohmann::json& symbol = listing["entries"][1];
    EXPECT_EQ(symbol["line"], 12);
    EXPECT_EQ(symbol["name"], "K");
    EXPECT_EQ(symbol["nameKey"], "K");
    EXPECT_EQ(symbol["title"], "T\xEF\xBF\xBD");
    EXPECT_EQ(symbol["tooltip"], "tip");
    EXPECT_EQ(symbol["billboard"], true);
    EXPECT_EQ(symbol["largeThumbnail"], folder.Path("2D/p_192x192.png"));
    EXPECT_EQ(symbol["flipVertical"], true);
    EXPECT_EQ(symbol["rotateLeft"], 90);
    EXPECT_EQ(symbol["tags"][0]["units"], "Nm");
}

TEST(LibraryList, EscapesInJsonWhatCouldDisturbATerminal)
{
    const std::string name = "\xC3\x84\xE6\x97\xA5\xF0\x9F\x94\xA9 \x7F|\xC2\x9B|\xE2\x80\xAE|\xD8\x9C|\xE2\x81\xA9";
    const TemporaryFolder folder;
    const ProcessResult result =
        RunLusym({"library", "list", folder.Write("lib.xml", Library(Symbol("a", name))), "--json"});
    EXPECT_NE(result.out.find("\"\xC3\x84\xE6\x97\xA5\xF0\x9F\x94\xA9 \\u007f|\\u009b|\\u202e|\\u061c|\\u2069\""),
              std::string::npos)
        << result.out;
    EXPECT_EQ(nlohmann::json::parse(result.out).at("entries")[0]["name"], name);
}

TEST(LibraryList, TakesTheLanguageOfTheUser)
{
    const std::string file = EXAMPLE_LIBRARY "/SymbolsLibrary/standard/PartSymbolLibrary.xml";
    const std::pair<std::string, std::string> languages[] = {
        {"LC_ALL=C", "3D arrow"}, {"LC_ALL=de_AT.UTF-8", "3D-Pfeil"}, {"LC_ALL=xx_XX", "3D arrow"}};
    for (const auto& [variable, name] : languages) {
        ProcessOptions options;
        options.environment = {variable};
        EXPECT_NE(RunLusym({"library", "list", file}, options).out.find(name), std::string::npos) << variable;
    }
    EXPECT_NE(RunLusym({"library", "list", file, "--lang=fr"})
                  .out.find("Fl\xC3\xA8"
                            "che 3D"),
              std::string::npos);
    EXPECT_NE(RunLusym({"library", "list", file, "--lang=xx"}).err.find("no language \"xx\""), std::string::npos);
}

TEST(LibraryList, NeverPassesOverInSilence)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("lib.xml", Library(Symbol("a", "A") + Symbol("b", "A")));
    const ProcessResult dropped = RunLusym({"library", "list", file});
    EXPECT_NE(dropped.err.find("[name-taken]"), std::string::npos);
    EXPECT_EQ(dropped.err.find("[file-missing]"), std::string::npos);
    EXPECT_EQ(dropped.exitCode, 0);
    EXPECT_EQ(RunLusym({"library", "list", folder.Write("other.xml", "<other/>")}).exitCode, 5);
    EXPECT_EQ(RunLusym({"library", "list", folder.Path("none.xml")}).exitCode, 3);
}

} // namespace
