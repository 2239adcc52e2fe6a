#include "../render/Baselines.h"
#include "ShapeFolder.h"
#include "support/Contains.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace
{

using namespace test;
using Arguments = std::vector<std::string>;

class ViewRender : public testing::Test
{
protected:
    ProcessResult Render(Arguments options, int exitCode = 0) const
    {
        options.insert(options.begin(), {"render", m_folder.Doc()});
        return RunLusym(options, exitCode);
    }

    /// The SVG of a line drawing.
    std::string Lines(Arguments options) const
    {
        options.insert(options.end(), {"-o", "-", "--format=svg", "--style=lines"});
        return Render(options).out;
    }

    /// How far the first line of a part begins from the left border.
    static double LeftOf(const std::string& svg, const std::string& part)
    {
        double left = 1e9;
        const std::string mark = "data-part=\"" + part + "\"";
        for (std::size_t at = svg.find(mark); at != svg.npos; at = svg.find(mark, at + 1)) {
            const std::size_t data = svg.find(" d=\"", at) + 4;
            std::string points = svg.substr(data, svg.find('"', data) - data);
            std::ranges::replace_if(
                points, [](unsigned char c) { return std::isalpha(c) != 0; }, ' ');
            std::istringstream numbers(points);
            for (double x = 0.0, y = 0.0; numbers >> x >> y;) {
                left = std::min(left, x);
            }
        }
        return left;
    }

    ShapeFolder m_folder;
};

TEST_F(ViewRender, DrawsSeveralViewsInOneRun)
{
    Render({"-o", m_folder.Path("{n}-{view}.svg"), "--view", "top", "--view=ISO", "--view", "saved", "--size=200x100"});
    const std::string top = m_folder.Read("1-top.svg");
    EXPECT_TRUE(Contains(top, "width=\"200px\" height=\"100px\""));
    EXPECT_TRUE(Contains(top, "<title>model, view top</title>"));
    EXPECT_TRUE(Contains(top, "<image ")) << "shaded too";
    EXPECT_TRUE(Contains(m_folder.Read("2-iso.svg"), "class=\"visible silhouette\" data-part=\"/cover\""));
    Render({"-o", m_folder.Path("whole.svg"), "--size=200x100"});
    EXPECT_NE(m_folder.Read("3-saved.svg"), top);
    EXPECT_EQ(m_folder.Read("3-saved.svg"), m_folder.Read("whole.svg")) << "the saved camera is the default";
    for (const char* const format : {"svg", "pdf"}) {
        const Arguments again{"-o", "-", std::string("--format=").append(format), "--view=iso", "--shadow"};
        EXPECT_EQ(Render(again).out, Render(again).out) << format;
    }
}

TEST_F(ViewRender, ShowsWhatIsAskedFor)
{
    const std::string plain = Lines({"--view=iso"});
    EXPECT_FALSE(Contains(plain, "<image ") || Contains(plain, "hidden")) << plain;
    EXPECT_TRUE(Contains(plain, "stroke-width=\"1.3228346\"")) << "0.35 mm";
    const std::string hidden = Lines({"--view=iso", "--hidden-lines", "--line-width=silhouette=2"});
    for (const char* const part : {"class=\"hidden crease\"", "stroke-dasharray", "stroke-width=\"7.5590551\""}) {
        EXPECT_TRUE(Contains(hidden, part));
    }
    EXPECT_TRUE(Contains(Lines({"--view=iso", "--dpi=192", "--size=640x400"}),
                         "width=\"320px\" height=\"200px\" viewBox=\"0 0 640 400\""));
    EXPECT_FALSE(Contains(Render({"-o", "-", "--format=svg", "--style=shaded"}).out, "<path"));

    // The cover lies left of the base, which stays where it is whatever else is seen.
    const std::string front = Lines({"--view=front"});
    EXPECT_LT(LeftOf(front, "/cover"), 60.0);
    const std::string without = Lines({"--view=front", "--hide=cover"});
    EXPECT_FALSE(Contains(without, "/cover"));
    EXPECT_LT(LeftOf(without, "/base"), LeftOf(front, "/base"));
    const auto gap = [&](const std::string& svg) { return LeftOf(svg, "/base") - LeftOf(svg, "/cover"); };
    EXPECT_NEAR(gap(Lines({"--explode=0.05"})), 1.05 * gap(Lines({"--explode=0"})), 0.1);
    EXPECT_TRUE(Contains(RunLusym({"part", "list", m_folder.Doc()}).out, "/cover")) << "and nothing is saved";
}

TEST_F(ViewRender, TurnsTheProductThatHasZUp)
{
    EXPECT_EQ(Lines({"--view=bottom", "--up=y"}), Lines({"--view=bottom"}));
    EXPECT_NE(Lines({"--view=front", "--up=z"}), Lines({"--view=front"}));
}

TEST_F(ViewRender, ShowsSymbolsOnTheirParts)
{
    const std::string shape = m_folder.Place({"--entry=pin", "--attach=cover"});
    const std::string path = "data-annotation=\"" + shape + "\"";
    const std::string near = Lines({"--view=front"});
    EXPECT_TRUE(Contains(near, path) && Contains(near, "visible silhouette symbol\""));
    EXPECT_FALSE(Contains(Lines({"--view=front", "--hide=cover"}), path)) << "goes with its part";

    // Within the cover, it is seen when symbols are not covered.
    const std::string inside = m_folder.Place({"--entry=pin", "--at=2,2,2"});
    const auto isSeen = [&](const std::string& covered) {
        return Contains(Lines({"--view=front", "--covered=" + covered}), "data-annotation=\"" + inside + "\"");
    };
    EXPECT_FALSE(isSeen("shapes"));
    EXPECT_TRUE(isSeen("none"));
}

TEST_F(ViewRender, CoversPicturesWhereAsked)
{
    const DocumentFolder pictures;
    const std::string document = pictures.Path("g.luz");
    RunLusym({"document", "new", m_folder.Path("model.obj"), "-o", document, "--library", pictures.Lib()});
    RunLusym({"symbol", "place", document, "--entry=a", "--at=2,2,-5", "--size=4",
              "--description=see https://example.org/a?b&c."});
    RunLusym({"symbol", "place", document, "--entry=b", "--at=5,5,-5", "--size=8"});
    const auto draw = [&](const std::string& format, const std::string& covered) {
        return RunLusym({"render", document, "-o", "-", "--format", format, "--view=front", "--covered", covered}).out;
    };
    const std::string all = draw("svg", "shapes");
    EXPECT_TRUE(Contains(all, "<a xlink:href=\"https://example.org/a?b&amp;c\">"));
    EXPECT_TRUE(Contains(draw("pdf", "shapes"), "/URI (https://example.org/a?b&c)"));
    EXPECT_FALSE(Contains(all, "<mask"));
    const std::string covered = draw("svg", "all");
    EXPECT_FALSE(Contains(covered, "data-annotation=\"s1\"")) << "behind the cover as a whole";
    EXPECT_TRUE(Contains(covered, "<g mask=\"url(#mask1)\" data-annotation=\"s2\">"));
}

TEST_F(ViewRender, TellsWhatIsWrong)
{
    const std::string picture = m_folder.Path("p.png");
    const std::tuple<Arguments, int, std::string> cases[] = {
        {{"--view=tpo"}, 2, "there is no view \"tpo\". Did you mean top?"},
        {{"--view=x"}, 2, "there is no view \"x\". Write one of iso, front, back, left, right, top, bottom, saved"},
        {{"--view=top", "--view=iso"}, 2, "several views would be written to"},
        {{"--view=top", "--page=1"}, 2, "excludes"},
        {{"--style=0"}, 2, "--style: \"0\" is unknown. Write one of both, lines, shaded"},
        {{"--up=x"}, 2, "--up: \"x\" is unknown. Write one of y, z"},
        {{"--explode=-1"}, 2, "--explode: \"-1\" is no number from 0 to 100"},
        {{"--explode=nan"}, 2, "\"nan\" is no number from 0 to 100"},
        {{"--explode-levels=1"}, 2, "--explode"},
        {{"--line-width=bolt=1"}, 2, "\"bolt=1\" is no line width. Write millimetres up to 20"},
        {{"--size=70000"}, 2, "up to 65536"},
        {{"--size=40000x10"}, 1, "view cannot be drawn: the picture is too large"},
        {{"--hide=covr"}, 1, "there is no part \"covr\". Did you mean /cover?"},
    };
    for (auto [options, exitCode, message] : cases) {
        options.insert(options.end(), {"-o", picture});
        EXPECT_TRUE(Contains(Render(options, exitCode).err, message));
        EXPECT_FALSE(std::filesystem::exists(picture)) << message;
    }
    // One picture that cannot be written spoils no other.
    std::filesystem::create_directory(m_folder.Path("p-top.png"));
    const ProcessResult some =
        Render({"--view=top", "--view=front", "-o", m_folder.Path("p-{view}.png"), "--size=50"}, 6);
    EXPECT_TRUE(Contains(some.err, "p-top.png: cannot be written"));
    EXPECT_TRUE(std::filesystem::exists(m_folder.Path("p-front.png")));
}

TEST(ExampleProduct, LooksAsItDid)
{
    const TemporaryFolder folder;
    const std::string document = folder.Path("g.luz");
    RunLusym({"document", "new", EXAMPLE_PRODUCT "/gearbox.glb", "-o", document});
    const Arguments views{"iso", "front", "back", "left", "top", "bottom"};
    for (const std::string style : {"shaded", "lines", "both"}) {
        Arguments options{"render",
                          document,
                          "-o",
                          folder.Path(style + "-{view}.png"),
                          "--style",
                          style,
                          "--size=320x240",
                          "--background=white"};
        for (const std::string& view : views) {
            options.insert(options.end(), {"--view", view});
        }
        RunLusym(options);
        for (const std::string& view : views) {
            ExpectPngBaseline(folder.Read(style + "-" + view + ".png"), "gearbox-" + view + "-" + style);
        }
    }
}

} // namespace
