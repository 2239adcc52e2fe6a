#include "Process.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace
{

using namespace test;
using nlohmann::json;

json Listed(const std::string& document, const std::string& words)
{
    return json::parse(RunLusym({"part", "list", document, "--json", "--find", words}).out).at("parts");
}

TEST(Product, GoesFromTheModelIntoTheDocumentAndMoves)
{
    const TemporaryFolder folder;
    const std::string document = folder.Path("g.luz");
    const std::string examples = EXAMPLE_PRODUCT;
    RunLusym(
        {"document", "new", examples + "/gearbox.glb", "--service", examples + "/gearbox-service.xml", "-o", document});
    const json tree = json::parse(RunLusym({"document", "tree", document, "--json"}).out);
    EXPECT_EQ(tree["product"]["name"], "Gearbox");
    EXPECT_EQ(tree["product"]["parts"].size(), 4u);
    EXPECT_GE(Listed(document, "").size(), 40u);
    EXPECT_EQ(Listed(document, "input ball-1")[0]["name"], "Ball 6304");
    EXPECT_TRUE(Contains(RunLusym({"document", "tree", document}).out, "drain: Drain plug = /housing/drain-plug\n"));

    // A part is named by its path, with or without its slash, or by its node in the service tree.
    RunLusym({"part", "move", document, "output", "--by", "0,5,0", "--rotate", "x,90", "--about", "0,0,192"});
    const json shaft = Listed(document, "output/shaft")[0];
    EXPECT_NEAR(shaft["at"][1].get<double>(), 5.0, 1e-4);
    EXPECT_NEAR(shaft["matrix"][5].get<double>(), -1.0, 1e-6);
    EXPECT_FALSE(shaft["moved"]) << "its assembly was";
    const ProcessResult hidden = RunLusym({"part", "hide", document, "/lubrication/drain", "/nowhere"}, 6);
    EXPECT_TRUE(Contains(hidden.err, "there is no part \"/nowhere\""));
    EXPECT_TRUE(Listed(document, "drain-plug")[0]["hidden"]);

    // The same model again leaves all that as it is.
    const std::string before = folder.Read("g.luz");
    RunLusym({"product", "import", examples + "/gearbox.glb", document});
    EXPECT_EQ(folder.Read("g.luz"), before);
    RunLusym({"part", "show", document, "/housing/drain-plug"});
    EXPECT_FALSE(Listed(document, "drain-plug")[0]["hidden"]);
}

TEST(Product, LeavesTheDocumentAsItWasWhenSomethingIsWrong)
{
    const TemporaryFolder folder;
    const std::string document = folder.Path("g.luz");
    RunLusym({"document", "new", "-o", document});
    const std::string before = folder.Read("g.luz");
    const std::string bad = folder.Write("bad.glb", "glTF");
    const std::string good = folder.Write("good.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const std::string service = folder.Write("s.xml", "<service><node/></service>");
    const std::tuple<std::vector<std::string>, int, const char*> cases[] = {
        {{"product", "import", bad, document}, 3, "bad.glb: error: the model cannot be read: it is no glb file"},
        {{"product", "import", good, document, "--service", service},
         3,
         "s.xml: error: the service tree cannot be read"},
        {{"product", "import", good, document, "--unit", "furlong"}, 2, "\"furlong\" is no unit"},
        {{"product", "import", folder.Path("gone.obj"), document}, 3, "there is no such file"},
        {{"part", "move", document, "/a", "--by", "1,2,3"}, 1, "there is no part \"/a\""},
        {{"part", "move", document, "/a"}, 2, "--by, --to or --rotate"},
        {{"part", "move", document, "/a", "--rotate", "w,1"}, 2, "is no turn"},
    };
    for (const auto& [arguments, exitCode, message] : cases) {
        EXPECT_TRUE(Contains(RunLusym(arguments, exitCode).err, message));
        EXPECT_EQ(folder.Read("g.luz"), before) << message;
    }
    RunLusym({"product", "import", good, document, "--unit", "in"});
    EXPECT_EQ(RunLusym({"part", "move", document, "/good", "--to", "1e12,0,0"}, 1).out, "");
}

} // namespace
