#include "DocumentFolder.h"
#include "support/Contains.h"

namespace
{

using namespace test;
using Arguments = std::vector<std::string>;
using nlohmann::json;

TEST(SymbolPlace, DoesWhatItsOptionsSay)
{
    const DocumentFolder folder;
    const std::pair<Arguments, json> cases[] = {
        {{"--entry=a", "--page=1", "--at=10,20", "--size=40"}, {{"size", {40.0, 20.0}}, {"at", {10.0, 20.0, 0.0}}}},
        {{"--entry=a", "--page=1", "--at=1,1", "--size", ",10", "--rotate=90"},
         {{"size", {5.0, 10.0}}, {"rotate", 90}}},
        {{"--entry=a", "--page=1", "--at=1,1", "--rotate=-90"}, {{"rotate", 270}}},
        {{"--entry=a", "--page=1", "--at=1,1", "--flip=hv"}, {{"flipHorizontally", true}, {"flipVertically", true}}},
        {{"--entry=b", "--at", "-1,2,-3", "--fixed"}, {{"fixed", true}, {"at", {-1.0, 2.0, -3.0}}, {"page", nullptr}}},
        {{"--entry=b", "--at=5,6", "--screen-space"},
         {{"fixed", false}, {"screenSpace", true}, {"size", {30.0, 30.0}}}},
        {{"--entry=b", "--page=2", "--at=1,1", "--frame=red", "--fill=#abc"},
         {{"frame", "#ff0000ff"}, {"fill", "#aabbccff"}}},
        {{"--entry=b", "--page=2", "--at=1,1"}, {{"entry", "b"}, {"title", "Title of b"}, {"picture", "b.svg"}}},
        {{"--entry=b", "--page=2", "--at=1,1", "--title=Own"}, {{"entry", nullptr}, {"title", "Own"}}},
    };
    for (auto [arguments, expected] : cases) {
        arguments.insert(arguments.begin(), {"symbol", "place", folder.Doc()});
        const std::string id = folder.Lusym(arguments).out;
        const json symbol = folder.SymbolOf(id.substr(0, id.find('\n')));
        for (const auto& [key, value] : expected.items()) {
            EXPECT_EQ(symbol[key], value) << key << " of " << testing::PrintToString(arguments);
        }
    }
    EXPECT_EQ(folder.Symbols().size(), 5U + std::size(cases));
}

TEST(SymbolPlace, TellsWhyNothingIsPlaced)
{
    const DocumentFolder folder;
    const std::string bytes = folder.Read("doc.luz");
    const std::tuple<Arguments, int, std::string> cases[] = {
        {{}, 2, "--entry: the id of a library entry is missing"},
        {{"--entry=a"}, 2, "--at: where to place it is missing"},
        {{"--entry=a", "--at=1"}, 2, "--at: \"1\" is not X,Y or X,Y,Z"},
        {{"--entry=a", "--at=1,nan"}, 2, "--at: \"1,nan\" is not X,Y or X,Y,Z"},
        {{"--entry=a", "--at=1,1,1", "--page=1"}, 2, "--at: a page has no Z"},
        {{"--entry=a", "--at=1,1", "--page=0"}, 2, "--page: \"0\" is not the number of a page"},
        {{"--entry=a", "--at=1,1", "--page=1", "--fixed"}, 2, "--fixed: is for symbols over the view"},
        {{"--entry=a", "--at=1,1", "--size=-3"}, 2, "--size: \"-3\" is not W,H"},
        {{"--entry=a", "--at=1,1", "--size=1e-300"}, 2, "--size: \"1e-300\" is not W,H"},
        {{"--entry=a", "--at=1,1", "--rotate=45"}, 2, "--rotate: \"45\" is not a multiple of 90"},
        {{"--entry=a", "--at=1,1", "--fill=mud"}, 2, "--fill: \"mud\" is not #rrggbb"},
        {{"--entry=a", "--from=x"}, 2, "--from: takes the place of"},
        {{"--entry=a", "--at=1,1", "--page=3"}, 1, "there is no page 3. The last one is page 2"},
        {{"--entry=shap", "--at=1,1"}, 1, "no library has the entry \"shap\". The one most like it is \"shape\""},
        {{"--from", folder.Path("none")}, 3, "none: error: the placements cannot be read: "},
        {{"--from", folder.Write("columns", "entry,wide\n")}, 3, "there is no column \"wide\"; there are entry, at, x"},
        {{"--entry=a", "--at=1,1", "--library", folder.Path("none.xml")}, 3, "none.xml"},
        {{"--entry=a", "--at=1,1", "--library", folder.Write("odd.xml", "<odd/>")}, 5, "odd.xml"},
        {{"--entry=a", "--at=1,1", "-o", folder.Path("none/doc.luz")}, 4, "none/doc.luz: cannot be written: "},
    };
    for (auto [arguments, exitCode, message] : cases) {
        arguments.insert(arguments.begin(), {"symbol", "place", folder.Doc()});
        const ProcessResult result = folder.Lusym(arguments, exitCode);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(Contains(result.err, message));
    }
    EXPECT_EQ(folder.Read("doc.luz"), bytes);
}

/// Comma- and semicolon-separated values, an array, and lines of JSON say the same.
TEST(SymbolPlace, ReadsManyFromAFile)
{
    const DocumentFolder folder;
    const std::string forms[] = {
        "entry,x,y,page,title\r\na,1,2,1,\"x, \"\"y\"\"\"\r\n\r\nb,3,4,2,\r\n",
        "\xEF\xBB\xBF"
        "entry;x;y;page;title\na;1;2;1;\"x, \"\"y\"\"\"\nb;3;4;2\n",
        R"([{"entry": "a", "at": [1, 2], "page": 1, "title": "x, \"y\""}, {"entry": "b", "x": 3, "y": 4, "page": 2}])",
        R"({"entry": "a", "at": "1,2", "page": "1", "title": "x, \"y\""})"
        "\n\n"
        R"({"entry": "b", "at": [3, 4], "page": 2})",
    };
    std::string first;
    for (const std::string& form : forms) {
        const std::string out = folder.Path("out.luz");
        const ProcessResult placed =
            folder.Lusym({"symbol", "place", folder.Doc(), "--from", folder.Write("table", form), "-o", out});
        EXPECT_EQ(placed.out, "s6\ns7\n");
        first = first.empty() ? folder.Read("out.luz") : first;
        EXPECT_EQ(folder.Read("out.luz"), first) << form;
    }
    const ProcessResult some = folder.Lusym({"symbol", "place", folder.Doc(), "--quiet", "--from",
                                             folder.Write("table", "entry,x,y,page\na,1,1,9\nb,1,1,1\na,east,1,1\n")},
                                            6);
    EXPECT_EQ(some.out, "");
    EXPECT_TRUE(Contains(some.err, "table:2: error: there is no page 9."));
    EXPECT_TRUE(Contains(some.err, "table:4: error: x: \"east\" is not a number."));
    EXPECT_TRUE(Contains(some.err, "doc.luz: 1 symbol placed.\n"));
    EXPECT_EQ(folder.SymbolOf("s6")["entry"], "b");
}

TEST(SymbolRemove, TakesItsSymbolsAndWhatOnlyTheyNeed)
{
    const DocumentFolder folder;
    const json before = folder.Symbols();
    const std::string bytes = folder.Read("doc.luz");
    const ProcessResult none = folder.Lusym({"symbol", "remove", folder.Doc(), "x9"}, 1);
    EXPECT_TRUE(Contains(none.err, "there is no symbol \"x9\". List those that there are with \"lusym symbol list\""));
    EXPECT_EQ(folder.Read("doc.luz"), bytes);
    folder.Lusym({"symbol", "remove", folder.Doc(), "s2", "s4", "x9"}, 6);
    json expected = before;
    std::erase_if(expected.get_ref<json::array_t&>(),
                  [](const json& symbol) { return symbol["id"] == "s2" || symbol["id"] == "s4"; });
    EXPECT_EQ(folder.Symbols(), expected);
    const json info = folder.Json({"document", "info", folder.Doc()});
    EXPECT_EQ(info["pictures"].size(), 1U);
    EXPECT_EQ(info["entries"].size(), 1U);
    EXPECT_EQ(folder.Place("entry,x,y\nb,1,1\n"), "s6\n");
}

TEST(SymbolList, FindsByTextAndPage)
{
    const DocumentFolder folder;
    const std::pair<Arguments, std::vector<std::string>> cases[] = {
        {{}, {"s4", "s5", "s1", "s2", "s3"}}, {{"--page=1"}, {"s1", "s2"}},     {{"--page=9"}, {}},
        {{"--find=TITLE own"}, {"s4"}},       {{"--find=b.svg"}, {"s4", "s2"}}, {{"--find=title", "--page=2"}, {"s3"}},
    };
    for (auto [arguments, expected] : cases) {
        arguments.insert(arguments.begin(), {"symbol", "list", folder.Doc()});
        std::vector<std::string> found;
        const json list = folder.Json(arguments);
        for (const json& symbol : list["symbols"]) {
            found.push_back(symbol["id"]);
        }
        EXPECT_EQ(found, expected) << testing::PrintToString(arguments);
    }
    EXPECT_TRUE(Contains(folder.Lusym({"symbol", "list", folder.Doc()}).out, "s2  1     100,100  30 x 30"));
}

} // namespace
