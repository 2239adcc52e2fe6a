#include "LibraryText.h"
#include "Process.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace
{

using namespace test;

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
}

TEST(LibraryList, FindsLessWithMoreWordsAndSelectsOneCategory)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write(
        "lib.xml",
        Library(Symbol("a", "Pfeil links") + Symbol("b", "Pfeil rechts", "<tooltip>\u00DCberholen</tooltip>") +
                    Symbol("c", "Kreis", "<tags><tag type=\"TORQUE\"><description>Pfeil</description></tag></tags>") +
                    "<symbol id=\"x\"><name>X</name></symbol>",
                "", Category("c", "Richtungen")));
    const std::tuple<std::string, std::string, std::vector<std::string>> searches[] = {
        {"--find", "", {"a", "b", "c", "x"}},
        {"--find", "PFEIL", {"a", "b", "c"}},
        {"--find", "pfeil richtungen", {"a", "b", "c"}},
        {"--find", "pfeil  LINKS", {"a"}},
        {"--find", "\u00FCBERHOLEN", {"b"}},
        {"--find", "pfeil kreis", {"c"}},
        {"--find", "pfeil links rechts", {}},
        {"--find", "linkspfeil", {}},
        {"--category", "c", {"a", "b", "c"}},
        {"--category", "", {"x"}},
    };
    for (const auto& [option, value, ids] : searches) {
        EXPECT_EQ(IdsIn(RunLusym({"library", "list", file, "--json", option, value}).out), ids) << value;
    }
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
    const std::pair<const char*, nlohmann::json> fields[] = {
        {"/root", folder.Path()},
        {"/origin", "user"},
        {"/units", "mm"},
        {"/entries/0/kind", "shape"},
        {"/entries/0/scale", 2.5},
        {"/entries/0/csys/matrix/1", 3.0},
        {"/entries/0/csys/position/2", 7.0},
        {"/entries/0/camera/value", 8.0},
        {"/entries/0/axisId", 4},
        {"/entries/1/line", 12},
        {"/entries/1/name", "K"},
        {"/entries/1/nameKey", "K"},
        {"/entries/1/title", "T\xEF\xBF\xBD"},
        {"/entries/1/tooltip", "tip"},
        {"/entries/1/billboard", true},
        {"/entries/1/largeThumbnail", folder.Path("2D/p_192x192.png")},
        {"/entries/1/flipVertical", true},
        {"/entries/1/rotateLeft", 90},
        {"/entries/1/tags/0/units", "Nm"},
    };
    for (const auto& [path, value] : fields) {
        EXPECT_EQ(listing.value(nlohmann::json::json_pointer(path), nlohmann::json()), value) << path;
    }
}

TEST(LibraryList, EscapesInJsonWhatCouldDisturbATerminal)
{
    const std::string name = "\xC3\x84\xE6\x97\xA5\xF0\x9F\x94\xA9 \x7F|\xC2\x9B|\xE2\x80\xAE|\xD8\x9C|\xE2\x81\xA9";
    const TemporaryFolder folder;
    const ProcessResult result =
        RunLusym({"library", "list", folder.Write("lib.xml", Library(Symbol("a", name))), "--json"});
    EXPECT_TRUE(
        Contains(result.out, "\"\xC3\x84\xE6\x97\xA5\xF0\x9F\x94\xA9 \\u007f|\\u009b|\\u202e|\\u061c|\\u2069\""));
    EXPECT_EQ(nlohmann::json::parse(result.out).at("entries")[0]["name"], name);
}

TEST(LibraryList, TakesTheLanguageOfTheUser)
{
    const std::string file = EXAMPLE_LIBRARY "/SymbolsLibrary/standard/PartSymbolLibrary.xml";
    const std::pair<std::string, std::string> languages[] = {
        {"LC_ALL=C", "3D arrow"}, {"LC_ALL=de_AT.UTF-8", "3D-Pfeil"}, {"LC_ALL=xx_XX", "3D arrow"}};
    for (const auto& [variable, name] : languages) {
        EXPECT_TRUE(Contains(RunLusym({"library", "list", file}, 0, {{variable}, 0, {}}).out, name)) << variable;
    }
    EXPECT_TRUE(Contains(RunLusym({"library", "list", file, "--lang=fr"}).out, "Fl\u00E8che 3D"));
    EXPECT_TRUE(Contains(RunLusym({"library", "list", file, "--lang=xx"}).err, "no language \"xx\""));
}

TEST(LibraryList, NeverPassesOverInSilence)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("lib.xml", Library(Symbol("a", "A") + Symbol("b", "A")));
    const ProcessResult dropped = RunLusym({"library", "list", file});
    EXPECT_TRUE(Contains(dropped.err, "[name-taken]"));
    EXPECT_EQ(dropped.err.find("[file-missing]"), std::string::npos);
}

} // namespace
