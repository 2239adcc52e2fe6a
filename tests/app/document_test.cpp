#include "DocumentFolder.h"
#include "support/Contains.h"

#include <set>

namespace
{

using namespace test;
using Arguments = std::vector<std::string>;
using nlohmann::json;

TEST(Document, TellsWhatItHolds)
{
    const DocumentFolder folder;
    const json info = folder.Json({"document", "info", folder.Doc()});
    EXPECT_EQ(info["view"]["symbols"], 2);
    EXPECT_EQ(info["pages"], json::parse(R"([{"page": 1, "width": 210.0, "height": 297.0, "symbols": 2},
                                             {"page": 2, "width": 100.0, "height": 50.0, "symbols": 1}])"));
    EXPECT_EQ(info["symbols"], json::parse(R"({"symbol2d": 5})"));
    EXPECT_EQ(info["pictures"][0]["name"], "a.svg");
    EXPECT_EQ(info["pictures"][0]["width"], 40);
    EXPECT_EQ(info["entries"], json::parse(R"([{"id": "a", "name": "Name of a"}, {"id": "b", "name": "Name of b"}])"));
    EXPECT_EQ(info["libraries"], json({folder.Lib()}));
    EXPECT_EQ(info["problems"], json::array());
    const json tree = folder.Json({"document", "tree", folder.Doc()});
    EXPECT_EQ(tree["view"]["symbols"].size(), 2U);
    EXPECT_EQ(tree["pages"][0]["symbols"][1], folder.SymbolOf("s2"));
    EXPECT_TRUE(Contains(folder.Lusym({"document", "tree", folder.Doc()}).out, "page 2, 100 x 50 mm: 1 symbol\n  ID"));
}

/// The symbols of the changed entry take over picture and title; one with texts of its own and those of other entries stay.
TEST(Document, UpdateReachesTheSymbolsOfTheChangedEntryAlone)
{
    const DocumentFolder folder;
    const json before = folder.Symbols();
    const std::string bytes = folder.Read("doc.luz");
    const Arguments update = {"document", "update", folder.Doc()};
    EXPECT_EQ(folder.Lusym(update).out, "");
    folder.WritePicture("a", 40, 40);
    folder.WriteLibrary("New title");
    Arguments dryRun = update;
    dryRun.emplace_back("--dry-run");
    const json planned = folder.Json(dryRun);
    EXPECT_EQ(folder.Read("doc.luz"), bytes);
    EXPECT_EQ(planned["written"], false);
    EXPECT_EQ(planned["entries"], json::parse(R"([{"id": "a", "differences": "title, picture"}])"));
    folder.Lusym({"document", "check", folder.Doc()}, 5);
    const ProcessResult done = folder.Lusym(update);
    EXPECT_TRUE(Contains(done.out, "doc.luz:s1: title: \"Title of a\" becomes \"New title\"\n"));
    EXPECT_TRUE(Contains(done.err, ": 3 symbols follow 1 changed entry.\n"));
    std::set<std::string> told;
    for (const json& symbol : planned["symbols"]) {
        told.insert(symbol["id"]);
    }
    std::set<std::string> changed;
    const json after = folder.Symbols();
    for (std::size_t index = 0; index < before.size(); ++index) {
        if (after[index] != before[index]) {
            changed.insert(after[index]["id"]);
        }
    }
    EXPECT_EQ(told, (std::set<std::string>{"s1", "s3", "s5"}));
    EXPECT_EQ(changed, told);
    EXPECT_EQ(folder.SymbolOf("s1")["title"], "New title");
    EXPECT_EQ(folder.SymbolOf("s1")["size"], json({40.0, 40.0}));
    const std::string updated = folder.Read("doc.luz");
    EXPECT_EQ(folder.Lusym(update).out, "");
    EXPECT_EQ(folder.Read("doc.luz"), updated);
    folder.Lusym({"document", "check", folder.Doc()});
}

TEST(Document, CheckFindsWhatIsWrong)
{
    struct Case {
        std::string code;
        std::string symbol;
        int exitCode;
        std::function<void(const DocumentFolder&)> spoil;
    };
    const Case cases[] = {
        {"picture-missing", "s2", 5, [](const auto& folder) { folder.Drop("Symbols/b.svg"); }},
        {"picture-unreadable", "s2", 5, [](const auto& folder) { folder.Edit("Symbols/b.svg", "<svg", "<bad"); }},
        {"entry-gone", "s2", 5, [](const auto& folder) { folder.Edit("library.xml", "id=\"b\"", "id=\"z\""); }},
        {"library-differs", "", 5, [](const auto& folder) { folder.WriteLibrary("New title"); }},
        {"library-unreadable", "", 5, [](const auto& folder) { std::filesystem::remove(folder.Lib()); }},
        {"off-page", "s2", 5, [](const auto& folder) { folder.Edit("document.xml", "100 100 0", "900 100 0"); }},
        {"over-page-edge", "s2", 0, [](const auto& folder) { folder.Edit("document.xml", "100 100 0", "1 100 0"); }},
        {"no-size", "s2", 5,
         [](const auto& folder) { folder.Edit("document.xml", "\"width\" value=\"15\"", "\"width\" value=\"nan\""); }},
        {"not-understood", "", 5,
         [](const auto& folder) { folder.Edit("document.xml", "name=\"symbol2d\"", "name=\"future\""); }},
    };
    for (const Case& each : cases) {
        const DocumentFolder folder;
        each.spoil(folder);
        const json check = folder.Json({"document", "check", folder.Doc()}, each.exitCode);
        const auto found = std::ranges::find_if(check["findings"], [&](const json& finding) {
            return finding["code"] == each.code &&
                   (finding["symbol"].is_null() ? "" : finding["symbol"]) == each.symbol;
        });
        EXPECT_NE(found, check["findings"].end()) << each.code << "\n" << check.dump(1);
    }
    EXPECT_TRUE(
        Contains(RunLusym({"document", "check", "--codes"}).out, "picture-missing       error    The document"));
}

TEST(Document, KeepsWhatItDoesNotUnderstand)
{
    const DocumentFolder folder;
    std::vector<luhost::PackageEntry> entries = folder.Unpack();
    entries.push_back({"future/notes", "kept"});
    folder.Pack(entries);
    const std::string glow = "<float key=\"glow\u202E\" value=\"1\"/>";
    folder.Edit("document.xml", "<float key=\"width\" value=\"15\"/>",
                "<float key=\"width\" value=\"15\"/>" + glow + glow);
    folder.Edit("document.xml", "<page ", "<page tint=\"warm\" ");
    EXPECT_EQ(folder.Lusym({"symbol", "remove", folder.Doc(), "s1"}).err, "symbol3d: Unhandle float glow\\u202e\n");
    folder.Edit("document.xml", glow, "<int32 key=\"title\" value=\"1\"/>" + glow);
    const std::string told = folder.Lusym({"document", "check", folder.Doc()}, 5).out;
    const std::string stays = ". Look at it with the program that wrote it; it stays. [not-understood]\n";
    for (const std::string& line :
         {":s2: warning: the float \"glow\\u202e\" is not known, 2 times" + stays,
          ": warning: the attribute \"tint\" of \"page\" is not known, in page 1" + stays,
          ": warning: 1 entry of the package, the first \"future/notes\", is not known" + stays,
          std::string(":s2: warning: the int32 \"title\" should be of the type symbol. ")}) {
        EXPECT_TRUE(Contains(told, folder.Doc() + line)) << told;
    }
    for (const luhost::PackageEntry& entry : folder.Unpack()) {
        EXPECT_TRUE(entry.name != "future/notes" || entry.bytes == "kept");
        EXPECT_TRUE(entry.name != "document.xml" ||
                    (Contains(entry.bytes, glow) && Contains(entry.bytes, "tint=\"warm\"")));
        std::erase_if(entries, [&](const auto& each) { return each.name == entry.name; });
    }
    EXPECT_TRUE(entries.empty()) << entries[0].name;
}

/// Every verb refuses it with its name, and leaves all files alone.
TEST(Document, IsRefusedWhereItIsHostile)
{
    const DocumentFolder folder;
    std::vector<luhost::PackageEntry> entries = folder.Unpack();
    folder.Pack({{"aa/evil", "x"}, entries[2]}, "upwards.luz");
    std::string upwards = folder.Read("upwards.luz");
    for (std::size_t place = upwards.find("aa/evil"); place != upwards.npos; place = upwards.find("aa/evil")) {
        upwards.replace(place, 2, "..");
    }
    folder.Pack({{"notes", "x"}}, "empty.luz");
    folder.Pack({{"document.xml", "<document"}}, "torn.luz");
    folder.Pack({{"document.xml", "<drellin-library/>"}}, "other.luz");
    const std::pair<std::string, std::string> cases[] = {
        {folder.Path("none.luz"), ""},
        {folder.Path(), ""},
        {folder.Write("text.luz", "no zip archive"), ""},
        {folder.Write("cut.luz", folder.Read("doc.luz").substr(0, 600)), ""},
        {folder.Write("upwards.luz", upwards), "\"../evil\" has a component in its name that names no file"},
        {folder.Path("empty.luz"), "the package has no \"document.xml\""},
        {folder.Path("torn.luz"), "document.xml"},
        {folder.Path("other.luz"), "the top-level element is not \"document\""},
    };
    const std::string out = folder.Write("out.svg", "old");
    for (const auto& [file, reason] : cases) {
        const bool isFile = std::filesystem::is_regular_file(file);
        const std::string bytes = isFile ? TemporaryFolder::ReadFile(file) : std::string();
        for (const Arguments& verb : {Arguments{"document", "info", file},
                                      {"document", "tree", file},
                                      {"document", "check", file},
                                      {"document", "update", file, "--library", folder.Lib()},
                                      {"symbol", "list", file},
                                      {"symbol", "remove", file, "s1"},
                                      {"symbol", "place", file, "--entry=a", "--at=1,1", "--library", folder.Lib()},
                                      {"render", file, "-o", out}}) {
            const ProcessResult result = RunLusym(verb, 3);
            EXPECT_EQ(result.out, "");
            EXPECT_TRUE(Contains(result.err, file + ": error: the document cannot be opened: "));
            EXPECT_TRUE(Contains(result.err, reason));
        }
        EXPECT_TRUE(!isFile || TemporaryFolder::ReadFile(file) == bytes) << file;
    }
    EXPECT_EQ(folder.Read("out.svg"), "old");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("../evil")));
}

TEST(Document, NewTellsWhyItIsNotMade)
{
    const TemporaryFolder folder;
    const std::tuple<Arguments, int, std::string> cases[] = {
        {{"-o", folder.Path("d"), "--page", "b17"}, 2, "\"b17\" is no paper. Write a4, a3-landscape, or 210x297"},
        {{"-o", ""}, 2, "-o needs the name of a file"},
        {{"-o", folder.Path("d"), "--library", folder.Path("none.xml")}, 3, "none.xml: error: the library is missing"},
        {{"-o", folder.Path("none/d")}, 4, "none/d: cannot be written: "},
    };
    for (auto [arguments, exitCode, message] : cases) {
        arguments.insert(arguments.begin(), {"document", "new"});
        const ProcessResult result = RunLusym(arguments, exitCode);
        EXPECT_TRUE(Contains(result.err, message));
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

/// The same work gives the same bytes, wherever it goes, and a document that is changed stays as readable as it was.
TEST(Document, IsSavedAsItShouldBe)
{
    namespace fs = std::filesystem;
    const DocumentFolder folder;
    const fs::perms permissions = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
    fs::permissions(folder.Doc(), permissions);
    const std::string bytes = folder.Read("doc.luz");
    const std::string copy = folder.Path("copy.luz");
    folder.Lusym({"symbol", "remove", folder.Doc(), "s1", "-o", copy});
    EXPECT_EQ(folder.Read("doc.luz"), bytes);
    EXPECT_EQ(folder.Lusym({"symbol", "remove", folder.Doc(), "s1", "-o", "-"}).out, folder.Read("copy.luz"));
    folder.Lusym({"symbol", "remove", folder.Doc(), "s1"});
    EXPECT_EQ(folder.Read("doc.luz"), folder.Read("copy.luz"));
    EXPECT_EQ(fs::status(folder.Doc()).permissions(), permissions);
}

} // namespace
