#include "ShapeFolder.h"
#include "support/Contains.h"

#include <array>
#include <cmath>
#include <map>
#include <set>

namespace
{

using namespace test;
using Arguments = std::vector<std::string>;
using nlohmann::json;

/// That opening and saving changes nothing.
void ExpectStable(const ShapeFolder& folder)
{
    const std::string before = folder.Read("doc.luz");
    RunLusym({"part", "show", folder.Doc(), "base"});
    EXPECT_TRUE(folder.Read("doc.luz") == before);
}

TEST(ShapeSymbol, StandsWhereItsOptionsSay)
{
    const ShapeFolder folder;
    const std::pair<Arguments, json> cases[] = {
        {{"--entry=pin", "--at=1,2,3"},
         {{"at", {1.0, 2.0, 3.0}}, {"scale", 1.0}, {"shape", "pin.obj"}, {"entry", "pin"}}},
        {{"--entry=pin", "--attach=/cover"}, {{"at", {5.0, 5.0, 5.0}}, {"color", nullptr}}},
        {{"--entry=pin", "--attach=base", "--at=7,0,0", "--attach=cover"},
         {{"at", {7.0, 0.0, 0.0}}, {"visible", true}}},
        {{"--entry=pin", "--at=0,0,0", "--rotate=z,90", "--color=red"}, {{"color", "#ff0000ff"}}},
        {{"--entry=pin", "--at=0,0,0", "--scale=2.5", "--title=Own"},
         {{"scale", 2.5}, {"entry", nullptr}, {"title", "Own"}}},
        // The entry's own scale, and the place in its shape that is put there.
        {{"--entry=flag", "--at=10,0,0"}, {{"scale", 2.0}, {"at", {0.0, 0.0, 0.0}}}},
        {{"--entry=flag", "--at=10,0,0", "--scale=0.5", "--rotate=0,0,1,180"},
         {{"scale", 1.0}, {"at", {15.0, 0.0, 0.0}}}},
    };
    for (const auto& [arguments, expected] : cases) {
        const json symbol = folder.Symbol(folder.Place(arguments));
        for (const auto& [key, value] : expected.items()) {
            const json& real = symbol[key];
            for (std::size_t axis = 0; key == "at" && axis < 3; ++axis) {
                EXPECT_NEAR(real[axis].get<double>(), value[axis].get<double>(), 1e-5) << symbol;
            }
            EXPECT_TRUE(key == "at" || real == value) << key << " of " << testing::PrintToString(arguments) << symbol;
        }
    }
    EXPECT_EQ(folder.Symbol("s3")["attachments"][1], (json{{"path", "/cover"},
                                                           {"part", "/cover"},
                                                           {"name", "cover"},
                                                           {"assembly", nullptr},
                                                           {"offset", {7.0, 0.0, 0.0}},
                                                           {"lastPosition", {0.0, 0.0, 0.0}}}));
    EXPECT_TRUE(
        Contains(folder.Do({"document", "info"}).out, "attached to parts: 2 symbols; to parts that are not there: 0"));
    EXPECT_TRUE(Contains(folder.Do({"document", "tree"}).out, "Title of pin   /cover by 5,5,5"));
    ExpectStable(folder);
    folder.Do({"symbol", "remove", "s1", "s2", "s3", "s4", "s5"});
    EXPECT_EQ(json::parse(folder.Do({"document", "info", "--json"}).out)["shapes"].size(), 1U);
}

TEST(ShapeSymbol, TellsWhyItIsNotPlaced)
{
    const ShapeFolder folder;
    const std::string bytes = folder.Read("doc.luz");
    const std::tuple<Arguments, int, std::string> cases[] = {
        {{"--entry=pin"}, 2, "--at: where to place it is missing"},
        {{"--entry=pin", "--attach=covr"}, 1, "there is no part \"covr\". Did you mean /cover?"},
        {{"--entry=pin", "--attach=/x/cover"}, 1, "there is no part \"/x/cover\". Did you mean /cover?"},
        {{"--entry=pin", "--attach=wheel"}, 1, "List those that there are with \"lusym part list\""},
        {{"--entry=pin", "--at=1,1", "--page=1"}, 1, "page: is for pictures, and the entry \"pin\" is a shape"},
        {{"--entry=pin", "--at=1,1,1", "--size=3"}, 1, "size: is for pictures; say scale"},
        {{"--entry=pin", "--at=1,1,1", "--rotate=90"}, 1, "rotate: names no axis; write z,90"},
        {{"--entry=pin", "--at=1,1,1", "--scale=0"}, 2, "--scale: \"0\" is not a number over 0"},
        {{"--entry=pin", "--at=1,1,1", "--color=none"}, 2, "--color: \"none\" is not"},
    };
    for (auto [arguments, exitCode, message] : cases) {
        arguments.insert(arguments.begin(), {"symbol", "place"});
        EXPECT_TRUE(Contains(folder.Do(arguments, exitCode).err, message));
    }
    folder.Write("SymbolsLibrary/Shape/pin.obj", "f 1 2 3\n");
    const ProcessResult damaged = folder.Do({"symbol", "place", "--entry=pin", "--at=1,1,1"}, 1);
    EXPECT_TRUE(Contains(damaged.err, "the shape \"pin.obj\" of the entry \"pin\" cannot be shown: "));
    EXPECT_EQ(folder.Read("doc.luz"), bytes);
}

TEST(ShapeSymbol, FollowsAndHidesWithItsPart)
{
    const ShapeFolder folder;
    folder.Place({"--entry=pin", "--attach=cover", "--at=0.1,0.7,0.3", "--rotate=1,2,3,37", "--color=red"});
    folder.Place({"--entry=flag", "--at=50,0,0"});
    const ProcessResult moved = folder.Do({"part", "move", "cover", "--by", "0.2,5,1000000.1", "--rotate", "z,45"});
    EXPECT_EQ(moved.out, folder.Doc() + ":s1: follows to 0.3,5.7,1000000.4\n");
    EXPECT_NEAR(folder.Symbol("s1")["at"][2].get<double>(), 1000000.4, 1e-8);
    ExpectStable(folder);
    const std::string shown = folder.Read("doc.luz");
    EXPECT_EQ(folder.Do({"part", "hide", "cover"}).out, folder.Doc() + ":s1: hidden with its part\n");
    EXPECT_FALSE(folder.Symbol("s1")["visible"]);
    EXPECT_TRUE(folder.Symbol("s2")["visible"]);
    EXPECT_EQ(folder.Do({"part", "show", "cover"}).out, folder.Doc() + ":s1: shown with its part\n");
    EXPECT_EQ(folder.Read("doc.luz"), shown);
}

TEST(ShapeSymbol, TakesOverItsEntryWhereItStands)
{
    const std::tuple<std::string, std::string, double, std::string> cases[] = {
        {"New title", "pin", 1.0, ":s1: title: \"Title of pin\" becomes \"New title\"\n"},
        {"Title of pin", "nail", 1.0, ":s1: shape: \"pin.obj\" becomes \"nail.obj\"\n"},
        {"Title of pin", "pin", 3.0, ":s1: shape: \"pin.obj\" becomes \"pin.obj, new\"\n"},
    };
    for (const auto& [title, shape, side, told] : cases) {
        const ShapeFolder folder;
        folder.Place({"--entry=pin", "--attach=cover", "--rotate=z,30"});
        folder.Do({"part", "move", "cover", "--by=1,2,3"});
        const json before = folder.Symbol("s1");
        const std::string bytes = folder.Read("doc.luz");
        folder.WriteShape(shape, side);
        folder.WriteLibrary(title, shape);
        EXPECT_TRUE(Contains(folder.Do({"document", "check"}, 5).out, "[library-differs]"));
        EXPECT_TRUE(Contains(folder.Do({"document", "update", "--dry-run"}).out, told));
        EXPECT_EQ(folder.Read("doc.luz"), bytes);
        EXPECT_TRUE(Contains(folder.Do({"document", "update"}).out, told));
        const json after = folder.Symbol("s1");
        for (const char* const kept : {"at", "orientation", "scale", "attachments", "visible"}) {
            EXPECT_EQ(after[kept], before[kept]) << kept << told;
        }
        EXPECT_EQ(after["title"], title);
        EXPECT_EQ(folder.Findings(), json::array());
        EXPECT_TRUE(Contains(folder.Do({"document", "update"}).err, "no entry has changed"));
    }
}

TEST(ShapeSymbol, FindsTheHeirOfAPartThatIsGone)
{
    const ShapeFolder folder;
    folder.Place({"--entry=pin", "--attach=cover", "--at=1,2,3"});
    folder.Place({"--entry=pin", "--attach=cover", "--attach=base", "--at=9,9,9"});
    folder.WriteModel("base", "cover-2");
    EXPECT_TRUE(Contains(RunLusym({"product", "import", folder.Path("model.obj"), folder.Doc()}).err,
                         "2 symbols are attached to parts that the product does not have"));
    const json findings = folder.Findings();
    ASSERT_EQ(findings.size(), 2U) << findings;
    EXPECT_EQ(findings[0]["code"], "part-gone");
    EXPECT_TRUE(Contains(findings[0]["text"].get<std::string>(),
                         "the part \"/cover\", which is not there; the likeliest heir is \"/cover-2\""));
    EXPECT_EQ(folder.Symbol("s1")["lostAttachments"][0]["path"], "/cover");
    const std::string bytes = folder.Read("doc.luz");
    EXPECT_TRUE(Contains(folder.Do({"document", "update", "--reattach", "--dry-run"}).out,
                         ":s1: part \"/cover\" becomes \"/cover-2\"; the symbol stands at 1,2,3\n"));
    EXPECT_EQ(folder.Read("doc.luz"), bytes);
    folder.Do({"document", "update", "--reattach"});
    EXPECT_EQ(folder.Findings(), json::array());
    EXPECT_EQ(folder.Symbol("s2")["attachments"].size(), 2U);
    EXPECT_EQ(folder.Do({"part", "move", "cover-2", "--by=0,0,1"}).out.find(folder.Doc() + ":s1: follows to 1,2,4\n"),
              0U);
    ExpectStable(folder);
}

/// Many of them are as near as each other, and then the first by its path counts.
TEST(ShapeSymbol, OfManyPartsCalledAlikeTheNearestIsTheHeir)
{
    const ShapeFolder folder;
    folder.Place({"--entry=pin", "--attach=base", "--at=1,2,3"});
    std::uint32_t seed = 1;
    const auto draw = [&seed] { return static_cast<double>((seed = seed * 1664525U + 1013904223U) >> 28U); };
    const auto text = [](const std::array<double, 3>& at) {
        return std::to_string(at[0]) + " " + std::to_string(at[1]) + " " + std::to_string(at[2]);
    };
    std::map<std::string, std::array<double, 3>> parts;
    std::string uses;
    std::string attachments;
    std::vector<std::string> heirs;
    for (int i = 0; i < 400; ++i) {
        const std::array<double, 3>& at = parts["/bolt-" + std::to_string(i)] = {draw(), draw(), draw()};
        uses += "<use id=\"bolt-" + std::to_string(i) + "\" component=\"0\" location=\"1 0 0 0 1 0 0 0 1 " + text(at) +
                "\"/>";
    }
    for (int i = 0; i < 100; ++i) {
        const std::array<double, 3> from = {draw(), draw(), draw()};
        attachments += "<element name=\"attachedToPart\"><symbol key=\"attachedToPartId\" value=\"/old/bolt-" +
                       std::to_string(1000 + i) + "\"/><point key=\"attachedToPartLastPos\" value=\"" + text(from) +
                       "\"/></element>";
        heirs.push_back(std::ranges::min_element(parts, {}, [&from](const auto& part) {
                            const auto& [path, at] = part;
                            return std::pair(std::hypot(at[0] - from[0], at[1] - from[1], at[2] - from[2]), path);
                        })->first);
    }
    folder.Edit("<use id=\"base\"", uses + "<use id=\"base\"");
    folder.Edit("<element name=\"attachedToPart\">", attachments + "<element name=\"attachedToPart\">");
    const json findings = folder.Findings();
    ASSERT_EQ(findings.size(), heirs.size());
    for (std::size_t i = 0; i < heirs.size(); ++i) {
        EXPECT_TRUE(Contains(findings[i]["text"].get<std::string>(), "heir is \"" + heirs[i] + "\""));
    }
    folder.Do({"document", "update", "--reattach"});
    EXPECT_EQ(folder.Symbol("s1")["attachments"].size(), 1 + std::set(heirs.begin(), heirs.end()).size());
    ExpectStable(folder);
}

TEST(ShapeSymbol, TellsWhatADocumentLacks)
{
    const std::tuple<std::string, std::string, json> cases[] = {
        {"Symbols/pin.obj", "shape-missing", false},
        {"library.xml", "entry-gone", true},
    };
    for (const auto& [entry, code, visible] : cases) {
        const ShapeFolder folder;
        folder.Place({"--entry=pin", "--attach=cover"});
        folder.Drop(entry);
        EXPECT_EQ(folder.Findings()[0]["code"], code) << folder.Findings();
        EXPECT_EQ(folder.Symbol("s1")["attachments"].size(), 1U);
        ExpectStable(folder);
    }
}

/// What a hostile document may say of attachments ends, and reads as it was saved.
TEST(ShapeSymbol, EndsWhateverItIsAttachedTo)
{
    const std::string own = "attachedToPartId\" value=\"/cover\"";
    for (const char* const path : {"/symbol:1", "/symbol:2", "/", "", "//", "/cover/x"}) {
        const ShapeFolder folder;
        folder.Place({"--entry=pin", "--attach=cover"});
        folder.Place({"--entry=pin", "--attach=cover"});
        folder.Edit(own, std::string("attachedToPartId\" value=\"") + path + "\"");
        folder.Edit(own, "attachedToPartId\" value=\"/symbol:1\"");
        folder.Do({"part", "move", "cover", "--by=1,1,1"});
        folder.Do({"part", "move", "cover", "--by=1,1,1"});
        EXPECT_EQ(json::parse(folder.Do({"part", "list", "--json"}).out)["parts"].size(), 2U) << path;
        ExpectStable(folder);
        folder.Do({"symbol", "remove", "s1", "s2"});
        EXPECT_EQ(json::parse(folder.Do({"part", "list", "--json"}).out)["parts"].size(), 2U) << path;
    }
}

TEST(ShapeSymbol, CarriesThoseThatAreOnIt)
{
    const ShapeFolder folder;
    folder.Place({"--entry=pin", "--attach=cover", "--at=1,2,3"});
    folder.Place({"--entry=pin", "--attach=base", "--at=5,5,5"});
    folder.Edit("key=\"ID\" value=\"symbol:1\"", "key=\"ID\" value=\"odd\"");
    folder.Edit("attachedToPartId\" value=\"/base\"", "attachedToPartId\" value=\"/odd\"");
    EXPECT_EQ(folder.Findings(), json::array());
    EXPECT_EQ(json::parse(folder.Do({"part", "list", "--json"}).out)["parts"].size(), 2U) << "whatever its id";
    const std::string before = folder.Symbol("s2")["at"].dump();
    const std::string told = folder.Do({"part", "move", "cover", "--by=1,1,1"}).out;
    EXPECT_TRUE(Contains(told, ":s1: follows to 2,3,4\n") && Contains(told, ":s2: follows to ")) << told;
    EXPECT_NE(folder.Symbol("s2")["at"].dump(), before);
    ExpectStable(folder);
}

TEST(Flatten, BakesTheViewIntoAPage)
{
    const DocumentFolder pictures;
    RunLusym({"symbol", "place", pictures.Doc(), "--entry=b", "--at=0,20,0", "--size=30", "--fixed"});
    const std::string page = pictures.Path("page.luz");
    EXPECT_TRUE(Contains(RunLusym({"flatten", pictures.Doc(), "-o", page}).err, "3 symbols on the page"));
    const json list = json::parse(RunLusym({"symbol", "list", page, "--json"}).out)["symbols"];
    ASSERT_EQ(list.size(), 3U);
    // The view is 400 wide on 1280 x 800 pixels, and the sheet 297 x 210.
    EXPECT_NEAR(list[0]["at"][0].get<double>(), 148.5, 1e-3);
    EXPECT_NEAR(list[0]["at"][1].get<double>(), 105.0, 1e-3);
    EXPECT_NEAR(list[2]["size"][0].get<double>(), 30.0 * 297.0 / 400.0, 0.3) << "with its frame";
    EXPECT_NEAR(list[2]["at"][1].get<double>(), 105.0 + 20.0 * 297.0 / 400.0, 1e-2);
    EXPECT_EQ(list[2]["entry"], "b");
    EXPECT_EQ(list[2]["page"], 1);
    const std::string svg = RunLusym({"flatten", pictures.Doc(), "-o", "-", "--format", "svg"}).out;
    RunLusym({"flatten", pictures.Doc(), "-o", page, "--view", "iso"});
    const json size = json::parse(RunLusym({"symbol", "list", page, "--json"}).out)["symbols"][2]["size"];
    EXPECT_NEAR(size[0].get<double>(), size[1].get<double>(), 1e-3) << "not as its box is seen";
    RunLusym({"flatten", pictures.Doc(), "-o", page});
    EXPECT_TRUE(Contains(svg, "data-annotation=\"s6\""));
    EXPECT_EQ(svg, RunLusym({"render", page, "-o", "-", "--format", "svg"}).out);

    const ShapeFolder folder;
    folder.Place({"--entry=pin", "--attach=cover"});
    folder.Place({"--entry=pin", "--attach=base"});
    folder.Do({"part", "hide", "base"});
    RunLusym({"flatten", folder.Doc(), "-o", folder.Path("page.luz"), "--page", "a5"});
    const json shapes = json::parse(RunLusym({"symbol", "list", folder.Path("page.luz"), "--json"}).out)["symbols"];
    ASSERT_EQ(shapes.size(), 1U) << "what is hidden stays behind";
    EXPECT_EQ(shapes[0]["kind"], "symbol3dflattened");
    EXPECT_EQ(shapes[0]["title"], "Title of pin");
    EXPECT_GT(shapes[0]["size"][0].get<double>(), 0.1);
    const json info = json::parse(RunLusym({"document", "info", folder.Path("page.luz"), "--json"}).out);
    EXPECT_EQ(info["pictures"].size(), 0U);
    EXPECT_EQ(info["shapes"].size(), 1U) << "it is kept for whoever opens the page again";
    const auto draw = [&](const Arguments& more) {
        Arguments arguments = {"flatten", folder.Doc(), "-o", "-", "--format", "svg"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunLusym(arguments).out;
    };
    const std::string lines = draw({"--page", "a5"});
    EXPECT_TRUE(Contains(lines, "data-part=\"/cover\""));
    EXPECT_FALSE(Contains(lines, "data-part=\"/base\""));
    EXPECT_TRUE(Contains(lines, " symbol\" data-annotation=\"s1\""));
    EXPECT_EQ(lines, RunLusym({"render", folder.Path("page.luz"), "-o", "-", "--format", "svg"}).out);
    EXPECT_FALSE(Contains(lines, "hidden"));
    EXPECT_TRUE(Contains(draw({"--hidden-lines"}), "class=\"hidden "));
    EXPECT_NE(draw({"--view", "top"}), draw({"--view", "top", "--up", "z"}));
    folder.Do({"part", "show", "base"});
    RunLusym({"symbol", "remove", folder.Path("page.luz"), shapes[0]["id"].get<std::string>()});
    EXPECT_FALSE(Contains(RunLusym({"render", folder.Path("page.luz"), "-o", "-", "--format", "svg"}).out, "symbol"));
    const std::tuple<Arguments, int, std::string> faults[] = {
        {{"flatten", folder.Doc(), "-o", folder.Doc()}, 2, "is the document, which the page would replace"},
        {{"flatten", folder.Doc(), "-o", "page.dxf"}, 2, "say luz, svg, pdf or png"},
        {{"flatten", folder.Doc(), "-o", "x.svg", "--page", "big"}, 2, "\"big\" is no paper"},
    };
    for (const auto& [arguments, exitCode, message] : faults) {
        EXPECT_TRUE(Contains(RunLusym(arguments, exitCode).err, message));
    }
}

} // namespace
