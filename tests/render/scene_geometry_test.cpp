#include "Pictures.h"
#include "Shapes.h"
#include "support/Contains.h"
#include "support/SessionTest.h"

#include <luhost/render/DrawingOutput.h>
#include <luhost/render/SceneGeometry.h>
#include <luhost/render/ViewCameras.h>
#include <luk/ShapeScene.h>

#include <cmath>
#include <limits>

using namespace luhost::render;
using test::At;
using test::MakeBlock;

namespace
{

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class SceneGeometryTest : public test::SessionTest
{
};

TEST_F(SceneGeometryTest, SharesMeshesAndTellsWhatCannotBePlaced)
{
    const test::MeshPtr block = MakeBlock(2, 2, 2);
    const dg::FMat33 flat{1, 0, 0, 0, 1, 0, 1, 1, 0};
    const auto hidden = [](luk::ShapeInstance& part) { part.SetVisibility(false); };
    const auto faded = [](luk::ShapeInstance& part) { part.SetVisibilityFraction(0.0F, true); };
    const auto scene = test::MakeScene({{block, At(1, 0, 0)},
                                        {block, At(5, 0, 0)},
                                        {block, dg::Location()},
                                        {block, {dg::FMat33::Scaling(kNaN, 1, 1), {0, 0, 0}}},
                                        {block, {flat, {0, 0, 0}}},
                                        {block, At(1e31, 0, 0)},
                                        {block, At(9, 0, 0), hidden, ""},
                                        {block, At(9, 0, 0), faded, ""},
                                        {nullptr, At(9, 0, 0)}});
    const SceneGeometry geometry = SceneGeometry::Collect(*scene);
    EXPECT_EQ(geometry.meshes.size(), 1U);
    ASSERT_EQ(geometry.shapes.size(), 2U);
    EXPECT_EQ(geometry.shapes[1].idPath, du::Symbol("/p1"));
    EXPECT_EQ(geometry.problems,
              (std::vector<std::string>{"/p2: it has no position", "/p3: its placement is not a number",
                                        "/p4: its placement flattens it", "/p5: it is too far away"}));
    EXPECT_EQ(geometry.box.GetMax(), (dg::DPoint3D{6, 1, 1}));
    EXPECT_EQ(geometry.frame.center, (dg::DPoint3D{3, 0, 0}));
    EXPECT_EQ(geometry.frame.scale, 0.25);
}

/// Where the ends of the axes appear: right, left, above or below the middle, or in it.
std::string LooksOf(StandardView view, UpAxis up)
{
    dg::DBox box;
    box.Enclose({-1, -2, -1});
    box.Enclose({1, 2, 1});
    const dg::Camera3D camera = MakeViewCamera(view, up, box, 300, 200, 0.05);
    std::string looks;
    for (const dg::DPoint3D& end : {dg::DPoint3D{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}) {
        dg::DPoint2D screen;
        EXPECT_TRUE(camera.ProjectPoint(end, screen));
        const double x = screen.x - 150;
        const double y = screen.y - 100;
        looks += std::hypot(x, y) < 1e-3       ? '.'
                 : std::fabs(x) > std::fabs(y) ? (x > 0 ? '>' : '<')
                                               : (y > 0 ? 'v' : '^');
    }
    double highest = 100;
    for (unsigned corner = 0; corner < 8; ++corner) {
        dg::DPoint2D screen;
        EXPECT_TRUE(camera.ProjectPoint(
            {(corner & 1U) ? 1.0 : -1.0, (corner & 2U) ? 2.0 : -2.0, (corner & 4U) ? 1.0 : -1.0}, screen));
        highest = std::min(highest, std::min(screen.y, screen.x / 1.5));
    }
    EXPECT_GE(highest, 10.0 / 1.5 - 1e-3);
    EXPECT_LE(highest, 10.0 + 1e-3);
    return looks;
}

TEST_F(SceneGeometryTest, StandardViewsFollowOneRule)
{
    const std::tuple<const char*, const char*, const char*> views[] = {
        {"front", ">^.", ">.^"}, {"back", "<^.", "<.^"}, {"left", ".^>", ".<^"},
        {"right", ".^<", ".>^"}, {"top", ">.v", ">^."},  {"bottom", ">.^", ">v."}};
    for (const auto& [name, withYUp, withZUp] : views) {
        const auto view = StandardViewOf(name);
        ASSERT_TRUE(view);
        EXPECT_EQ(LooksOf(*view, UpAxis::Y), withYUp) << name;
        EXPECT_EQ(LooksOf(*view, UpAxis::Z), withZUp) << name;
    }
    EXPECT_EQ(LooksOf(*StandardViewOf("iso"), UpAxis::Y), ">^<");
    EXPECT_FALSE(StandardViewOf("Front"));
}

/// Lines of a drawing, whoever made them.
TEST_F(SceneGeometryTest, OutputsDrawLines)
{
    Drawing drawing;
    drawing.width = 100;
    drawing.height = 50;
    DrawnStrokes strokes;
    strokes.strokes = {{{{-1e6, 25}, {1e6, 25}}, false},
                       {{{-1e300, 20}, {1e300, 20}}, false},
                       {{{kNaN, 1}, {5, 5}}, false},
                       {{{10, 10}, {20, 10}, {20, 15}}, true},
                       {{{3, 3}}, false}};
    strokes.width = 2.0;
    strokes.color = {1, 0, 0, 1};
    strokes.lineClass = "visible border";
    strokes.part = "/a&b";
    strokes.title = "Nut <M8>";
    DrawnStrokes dashed = strokes;
    dashed.strokes = {{{{0, 40}, {100, 40}}, false}};
    dashed.dashes = {10, 10};
    DrawnStrokes nothing = strokes;
    nothing.width = kNaN;
    drawing.strokes = {strokes, dashed, nothing};
    std::string svg;
    std::string png;
    std::string pdf;
    std::string error;
    ASSERT_TRUE(WriteSvg(drawing, svg, error) && WritePng(drawing, 0, 0, png, error) && WritePdf(drawing, pdf, error));
    EXPECT_TRUE(test::Contains(svg,
                               "<g fill=\"none\" stroke=\"#ff0000\" stroke-width=\"2\" stroke-linecap=\"round\" "
                               "stroke-linejoin=\"round\">\n<path class=\"visible border\" data-part=\"/a&amp;b\" "
                               "d=\"M-5 25L105 25M10 10L20 10 20 15Z\"><title>Nut &lt;M8&gt;</title></path>\n</g>"))
        << svg;
    EXPECT_TRUE(test::Contains(svg, "stroke-dasharray=\"10 10\"")) << svg;
    for (const test::Pixels& pixels : {test::DecodePng(png), test::ShowSvg(svg, 100, 50)}) {
        EXPECT_EQ(pixels.ColorAt(50, 24.5), 'R');
        EXPECT_EQ(pixels.ColorAt(50, 20), '.');
        EXPECT_EQ(pixels.ColorAt(5, 39.5), 'R');
        EXPECT_EQ(pixels.ColorAt(15, 39.5), '.');
    }
}

} // namespace
