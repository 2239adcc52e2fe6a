#include "Baselines.h"
#include "Pictures.h"
#include "Shapes.h"
#include "support/Contains.h"
#include "support/SessionTest.h"

#include <du/UserData.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/Raster.h>
#include <luhost/render/SceneDrawing.h>
#include <luhost/render/ViewCameras.h>
#include <luk/Instance.h>
#include <luk/ShapeScene.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numbers>

using namespace luhost::render;
using test::At;
using test::CameraOf;
using test::MakeBlock;
using test::Part;

namespace
{

using Style = SceneDrawingOptions::Style;

class SceneDrawingTest : public test::SessionTest
{
protected:
    static Drawing Draw(const PreparedScene& scene, const dg::Camera3D& camera, Style style, unsigned threads = 2)
    {
        return test::DrawPicture(scene, camera, style, true, threads);
    }

    static Drawing DrawLines(const std::vector<Part>& parts, StandardView view)
    {
        const auto scene = test::Prepare(parts);
        return Draw(*scene, CameraOf(*scene, view), Style::Lines);
    }

    /// A colour on a shaded picture seen from the front: of the pixel at a place of the scene, between 0 and 1.
    static dg::Color ColorAt(const Drawing& drawing, double x, double y)
    {
        const std::uint32_t word = drawing.underlay->At(static_cast<int>(x), static_cast<int>(y));
        const auto level = [word](unsigned shift) { return static_cast<float>((word >> shift) & 0xFF) / 255.0F; };
        return {level(16), level(8), level(0), level(24)};
    }
};

/// How many straight pieces each class of lines has.
std::map<std::string, std::size_t> CountPieces(const Drawing& drawing)
{
    std::map<std::string, std::size_t> pieces;
    for (const DrawnStrokes& strokes : drawing.strokes) {
        for (const DrawnStrokes::Stroke& stroke : strokes.strokes) {
            pieces[strokes.lineClass] += stroke.points.size() - (stroke.closed ? 0 : 1);
        }
    }
    return pieces;
}

using Pieces = std::map<std::string, std::size_t>;

const Pieces kCubeFromCorner{{"visible silhouette", 6}, {"visible crease", 3}, {"hidden crease", 3}};

TEST_F(SceneDrawingTest, CubeHasNineVisibleEdgesAndThreeHiddenOnes)
{
    EXPECT_EQ(CountPieces(DrawLines({{MakeBlock(2, 2, 2)}}, StandardView::Iso)), kCubeFromCorner);
    for (const StandardView view : {StandardView::Front, StandardView::Back, StandardView::Left, StandardView::Right,
                                    StandardView::Top, StandardView::Bottom}) {
        EXPECT_EQ(CountPieces(DrawLines({{MakeBlock(2, 2, 2)}}, view))["visible silhouette"], 4U);
    }
    const Drawing drawing = DrawLines({{MakeBlock(2, 2, 2)}}, StandardView::Front);
    const DrawnStrokes& outline = drawing.strokes.back();
    ASSERT_EQ(outline.strokes.size(), 1U);
    EXPECT_TRUE(outline.strokes[0].closed);
    for (const dg::DPoint2D& point : outline.strokes[0].points) {
        EXPECT_NEAR(std::fabs(point.x - 100.0), 80.0, 0.002);
        EXPECT_NEAR(std::fabs(point.y - 100.0), 80.0, 0.002);
    }
    EXPECT_EQ(outline.part, "/p0");
    EXPECT_EQ(outline.title, "Part 0");
    EXPECT_NEAR(outline.width, 0.35 * 96.0 / 25.4, 1e-9);
}

/// The same cube, told in worse ways.
TEST_F(SceneDrawingTest, MeshesOfOneBodyGiveTheSameLines)
{
    const test::MeshPtr cube = MakeBlock(2, 2, 2);
    const auto changed = [&cube](const auto& change) {
        auto positions = test::Split(*cube)->GetPositions();
        auto indices = test::Split(*cube)->GetIndices();
        change(positions, indices);
        return test::MakeMesh(positions, indices);
    };
    using Positions = std::vector<dg::FVec3>;
    using Indices = std::vector<std::uint32_t>;
    const std::pair<const char*, test::MeshPtr> meshes[] = {
        {"split normals", test::Split(*cube)},
        {"one triangle wound the wrong way",
         changed([](Positions&, Indices& indices) { std::swap(indices[0], indices[1]); })},
        {"all triangles twice, once from behind", changed([](Positions&, Indices& indices) {
             indices.insert(indices.end(), indices.rbegin(), indices.rend());
         })},
        {"rounded seams", changed([](Positions& positions, Indices&) {
             for (std::size_t i = 0; i < positions.size(); ++i) {
                 positions[i].x += i % 2 == 0 ? 3e-7F : 0.0F;
             }
         })},
        {"a side with a point on it, and a triangle without an area",
         changed([](Positions& positions, Indices& indices) {
             const auto middle = static_cast<std::uint32_t>(positions.size());
             const dg::FVec3 a = positions[indices[0]];
             const dg::FVec3 b = positions[indices[1]];
             positions.emplace_back((a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2);
             indices.insert(indices.end(), {middle, indices[1], indices[2], indices[0], indices[1], middle});
             indices[1] = middle;
         })},
    };
    for (const auto& [name, mesh] : meshes) {
        EXPECT_EQ(CountPieces(DrawLines({{mesh}}, StandardView::Iso)), kCubeFromCorner) << name;
    }
}

/// Each triangle by itself, as rounding leaves them: some thousandths of their sides apart.
test::MeshPtr Crack(const luk::Mesh& mesh)
{
    const test::MeshPtr split = test::Split(mesh);
    std::vector<dg::FVec3> positions = split->GetPositions();
    for (std::size_t i = 0; i < positions.size(); ++i) {
        positions[i].x += 2e-5F * static_cast<float>(i / 3 % 3);
    }
    return test::MakeMesh(positions, split->GetIndices());
}

TEST_F(SceneDrawingTest, RoundThingsHaveOutlinesAlone)
{
    for (const auto& mesh : {test::MakeSphere(48), test::Split(*test::MakeSphere(48)), Crack(*test::MakeSphere(48))}) {
        const Drawing drawing = DrawLines({{mesh}}, StandardView::Iso);
        ASSERT_EQ(drawing.strokes.size(), 1U);
        EXPECT_EQ(drawing.strokes[0].lineClass, "visible silhouette");
        ASSERT_EQ(drawing.strokes[0].strokes.size(), 1U);
        EXPECT_TRUE(drawing.strokes[0].strokes[0].closed);
        const auto radiusOf = [](const dg::DPoint2D& point) { return std::hypot(point.x - 100.0, point.y - 100.0); };
        for (const dg::DPoint2D& point : drawing.strokes[0].strokes[0].points) {
            EXPECT_NEAR(radiusOf(point), radiusOf(drawing.strokes[0].strokes[0].points[0]), 0.1);
        }
    }
    const Pieces cylinder = CountPieces(DrawLines({{test::MakeCylinder(48, 1, 2)}}, StandardView::Front));
    EXPECT_EQ(cylinder, (Pieces{{"visible silhouette", 4}}));
}

TEST_F(SceneDrawingTest, RoundingsInCoarseStepsLeaveNoScrapsOfLines)
{
    struct Fold {
        const char* name;
        double degrees;
        bool fades;
        bool hasLine;
    };
    for (const Fold& fold : {Fold{"blunt, from side to side", 40, false, true},
                             {"blunt, fading", 40, true, false},
                             {"sharp, fading", 110, true, true}}) {
        const double slope = std::tan(fold.degrees / 360.0 * std::numbers::pi);
        const auto sheet = test::MakeSurface(8, 2, [&](float u, float v) {
            const double height = slope * std::abs(v - 0.5) * (fold.fades ? std::sin(std::numbers::pi * u) : 1.0);
            return dg::FVec3(10.0F * u, static_cast<float>(height), -v);
        });
        EXPECT_EQ(CountPieces(DrawLines({{sheet}}, StandardView::Top)).contains("visible crease"), fold.hasLine)
            << fold.name;
    }
}

TEST_F(SceneDrawingTest, LinesEndExactlyWhereSomethingHidesThem)
{
    const Drawing drawing =
        DrawLines({{MakeBlock(4, 1, 1), At(0, 0, -2)}, {MakeBlock(1, 4, 1), At(0, 0, 2)}}, StandardView::Front);
    std::vector<double> ends;
    for (const DrawnStrokes& strokes : drawing.strokes) {
        if (strokes.part == "/p0" && strokes.lineClass == "visible silhouette") {
            for (const DrawnStrokes::Stroke& stroke : strokes.strokes) {
                EXPECT_EQ(stroke.points.size(), 4U);
                ends.push_back(stroke.points.front().x);
                ends.push_back(stroke.points.back().x);
            }
        }
    }
    std::sort(ends.begin(), ends.end());
    EXPECT_EQ(ends, (std::vector<double>{80, 80, 120, 120}));
}

TEST_F(SceneDrawingTest, SheetsSeamsAndColorsHaveLinesOfTheirOwn)
{
    using Mesh = luk::Mesh;
    const std::vector<dg::FVec3> grid{{-1, -1, 0}, {0, -1, 0}, {1, -1, 0},  {-1, 1, 0},
                                      {0, 1, 0},   {1, 1, 0},  {0.5F, 0, 2}};
    const std::vector<std::uint32_t> sheet{0, 1, 3, 1, 4, 3, 1, 2, 4, 2, 5, 4};
    const auto colored =
        du::MakeCounted<Mesh>(grid, sheet, std::vector<Mesh::Part>{{0, 2, {1, 0, 0, 1}}, {2, 2, {0, 0, 1, 1}}});
    EXPECT_EQ(CountPieces(DrawLines({{colored}}, StandardView::Front)),
              (Pieces{{"visible border", 4}, {"visible boundary", 1}}));
    auto withFin = sheet;
    withFin.insert(withFin.end(), {1, 4, 6});
    EXPECT_EQ(CountPieces(DrawLines({{test::MakeMesh(grid, withFin)}}, StandardView::Front))["visible crease"], 1U);
}

TEST_F(SceneDrawingTest, SymbolsAreAClassAndClearPartsHideNothing)
{
    const auto clear = [](luk::ShapeInstance& part) { part.OverrideTransparency(0.5F); };
    const auto mark = [](luk::ShapeInstance& part) {
        part.SetUserData(du::UserData::GetId("drellin::Drellin3DSymbolUserDataId"), part.GetShape());
    };
    const std::pair<std::string, std::function<void(luk::ShapeInstance&)>> symbols[] = {
        {std::string(luk::Instance::s_content_symbolPrefix.GetText()).append("7"), {}}, {"own", mark}};
    for (const auto& [symbol, change] : symbols) {
        const Drawing drawing = DrawLines(
            {{MakeBlock(1, 1, 1), At(0, 0, -3), change, symbol}, {MakeBlock(3, 3, 1), At(0, 0, 0), clear, ""}},
            StandardView::Front);
        EXPECT_EQ(drawing.strokes.back().lineClass, "visible silhouette symbol");
        EXPECT_EQ(drawing.strokes.back().part, std::string("/").append(symbol));
        EXPECT_EQ(drawing.strokes.back().strokes.at(0).points.size(), 4U);
    }
}

TEST_F(SceneDrawingTest, ShadesInTheColorsOfTheParts)
{
    constexpr dg::Color kRed{0.8F, 0.1F, 0.1F, 1.0F};
    constexpr dg::Color kBlue{0.1F, 0.1F, 0.8F, 1.0F};
    const auto blue = [&](luk::ShapeInstance& part) { part.SetColor(kBlue); };
    const auto half = [&](luk::ShapeInstance& part) { part.SetVisibilityFraction(0.5F, true); };
    const auto clear = [&](luk::ShapeInstance& part) { part.OverrideTransparency(0.75F); };
    const auto gone = [&](luk::ShapeInstance& part) { part.SetVisibility(false); };
    const auto scene = test::Prepare({{MakeBlock(2, 2, 2, kRed), At(-4, 0, 0)},
                                      {MakeBlock(2, 2, 2, kRed), At(-1, 0, 0), blue, ""},
                                      {MakeBlock(2, 2, 2, kRed), At(2, 0, 0), half, ""},
                                      {MakeBlock(2, 2, 2, kRed), At(5, 0, 0), clear, ""},
                                      {MakeBlock(9, 9, 2, kBlue), At(0, 0, 9), gone, ""}});
    dg::Camera3D camera = CameraOf(*scene, StandardView::Front, 110, 20);
    camera.SetOrthographic(11.0);
    const Drawing drawing = Draw(*scene, camera, Style::Shaded);
    const dg::Color red = ColorAt(drawing, 10, 10);
    EXPECT_GT(red.red, 0.65F);
    EXPECT_LT(red.red, 0.82F);
    EXPECT_NEAR(red.green, red.red / 8.0F, 0.01F);
    EXPECT_EQ(red.alpha, 1.0F);
    EXPECT_NEAR(ColorAt(drawing, 40, 10).blue, red.red, 0.01F);
    // Front and back: two layers each.
    EXPECT_NEAR(ColorAt(drawing, 70, 10).alpha, 0.75F, 0.01F);
    EXPECT_NEAR(ColorAt(drawing, 100, 10).alpha, 1.0F - 0.75F * 0.75F, 0.01F);
    EXPECT_EQ(ColorAt(drawing, 25, 10).alpha, 0.0F);
    EXPECT_EQ(ColorAt(drawing, 25, 1).alpha, 0.0F);
}

TEST_F(SceneDrawingTest, SidesOfABoxDifferInTheirLight)
{
    const auto scene = test::Prepare({{MakeBlock(2, 2, 2, {1, 1, 1, 1})}});
    const Drawing drawing = Draw(*scene, CameraOf(*scene, StandardView::Iso), Style::Shaded);
    const float top = ColorAt(drawing, 100, 60).red;
    const float left = ColorAt(drawing, 60, 130).red;
    const float right = ColorAt(drawing, 140, 130).red;
    EXPECT_GT(top, 1.15F * left);
    EXPECT_GT(left, 1.15F * right);
    EXPECT_GT(right, 0.5F) << "black lines show on it";
}

std::vector<Part> MakeStillLife()
{
    const auto glass = [](luk::ShapeInstance& part) { part.OverrideTransparency(0.6F); };
    return {{MakeBlock(8, 0.6F, 6, {0.55F, 0.6F, 0.66F, 1}), At(0, -0.3, 0)},
            {test::MakeCylinder(64, 1.2F, 2, {0.85F, 0.55F, 0.25F, 1}), At(-2, 1, 1)},
            {test::MakeTorus(32, 1.1F, 0.4F, {0.35F, 0.55F, 0.8F, 1}), At(1.6, 0.4, 0.7)},
            {test::Split(*test::MakeSphere(32, 0.9F, {0.75F, 0.3F, 0.3F, 1})), At(1.5, 0.9, -1.5)},
            {MakeBlock(2, 2, 0.2F, {0.6F, 0.8F, 0.9F, 1}), At(2.4, 1, 2.5), glass, ""},
            {test::MakeCylinder(6, 0.35F, 0.4F, {0.8F, 0.1F, 0.1F, 1}),
             At(0, 0.2, 2.2),
             {},
             std::string(luk::Instance::s_content_symbolPrefix.GetText()).append("1")}};
}

TEST_F(SceneDrawingTest, LooksAsItDid)
{
    const auto scene = test::Prepare(MakeStillLife());
    const dg::Camera3D iso = CameraOf(*scene, StandardView::Iso, 480, 360);
    test::ExpectBaseline(Draw(*scene, iso, Style::Lines), "scene-iso-lines");
    test::ExpectBaseline(Draw(*scene, CameraOf(*scene, StandardView::Right, 480, 360), Style::Lines),
                         "scene-right-lines");
    dg::Camera3D perspective = iso;
    perspective.SetPerspective(50.0);
    const dg::DVec3 towardsViewer = iso.GetU().Cross(iso.GetV());
    perspective.SetLocation({iso.GetLocation().GetMat(), dg::DPoint3D::ORIGIN + towardsViewer * 11.0});
    SceneDrawingOptions options;
    options.castsGroundShadow = true;
    Drawing drawing;
    std::string error;
    ASSERT_TRUE(DrawScene(*scene, perspective, options, {2, nullptr}, drawing, error));
    drawing.background.alpha = 1.0F;
    test::ExpectBaseline(drawing, "scene-perspective-both");
}

TEST_F(SceneDrawingTest, SameBytesForAnyNumberOfThreads)
{
    std::string first;
    for (const unsigned threads : {1U, 2U, 5U}) {
        const auto scene = test::Prepare(MakeStillLife(), threads);
        const Drawing drawing = Draw(*scene, CameraOf(*scene, StandardView::Iso), Style::Both, threads);
        std::string svg;
        std::string error;
        ASSERT_TRUE(WriteSvg(drawing, svg, error));
        first = first.empty() ? svg : first;
        EXPECT_TRUE(svg == first) << threads;
    }
}

TEST_F(SceneDrawingTest, StopsWhenAsked)
{
    const auto scene = test::Prepare(MakeStillLife());
    const std::atomic<bool> stop = true;
    Drawing drawing;
    std::string error;
    EXPECT_FALSE(DrawScene(*scene, CameraOf(*scene, StandardView::Iso), {}, {2, &stop}, drawing, error));
    EXPECT_EQ(error, "stopped");
    EXPECT_FALSE(PreparedScene::Prepare(scene->geometry, {}, {2, &stop}, error));
}

/// Whatever a scene holds, every output is a picture.
TEST_F(SceneDrawingTest, DrawsOddScenes)
{
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kHuge = std::numeric_limits<float>::max();
    const dg::FMat33 large = dg::FMat33::Scaling(1e15, 1e15, 1e15);
    const dg::FMat33 small = dg::FMat33::Scaling(1e-15, 1e-15, 1e-15);
    const auto triangle = [](const dg::FVec3& a, const dg::FVec3& b, const dg::FVec3& c) {
        return test::MakeMesh({a, b, c}, {0, 1, 2});
    };
    struct Case {
        const char* name;
        std::vector<Part> parts;
        bool isSeen;
    };
    const Case cases[] = {
        {"empty scene", {}, false},
        {"part without a mesh", {{nullptr}}, false},
        {"mesh without faces", {{test::MakeMesh({}, {})}}, false},
        {"zero area", {{triangle({0, 0, 0}, {1, 1, 1}, {2, 2, 2})}}, false},
        {"a point", {{triangle({1, 1, 1}, {1, 1, 1}, {1, 1, 1})}}, false},
        {"no numbers", {{triangle({kNaN, 0, 0}, {1, 1, 0}, {0, 2, 0})}}, false},
        {"infinitely far", {{triangle({HUGE_VALF, 0, 0}, {1, 1, 0}, {0, 2, 0})}}, false},
        {"too far", {{triangle({kHuge, 0, 0}, {1, 1, 0}, {0, 2, 0})}}, false},
        {"indices of nothing", {{test::MakeMesh({{0, 0, 0}, {1, 0, 0}}, {0, 1, 2})}}, false},
        {"no numbers beside a cube", {{triangle({kNaN, 0, 0}, {1, 1, 0}, {0, 2, 0})}, {MakeBlock(1, 1, 1)}}, true},
        {"far from the origin", {{MakeBlock(1, 1, 1), At(1e12, -1e12, 1e12)}}, true},
        {"very large", {{MakeBlock(1, 1, 1), {large, {1e15, 0, 0}}}}, true},
        {"very small", {{MakeBlock(1, 1, 1), {small, {0, 0, 0}}}}, true},
        {"a grain beside a world", {{MakeBlock(1, 1, 1), {large, {0, 0, 0}}}, {MakeBlock(1, 1, 1)}}, true},
        {"mirrored", {{MakeBlock(1, 1, 1), {dg::FMat33::Scaling(-1, 1, 1), {0, 0, 0}}}}, true},
    };
    for (const Case& odd : cases) {
        const auto scene = test::Prepare(odd.parts);
        const Drawing drawing = Draw(*scene, CameraOf(*scene, StandardView::Iso), Style::Both);
        std::string file;
        std::string error;
        EXPECT_TRUE(WriteSvg(drawing, file, error) && WritePdf(drawing, file, error)) << odd.name;
        EXPECT_TRUE(WritePng(drawing, 0, 0, file, error)) << odd.name;
        EXPECT_EQ(test::DecodePng(file).At(100, 110) != 0, odd.isSeen) << odd.name;
        if (odd.isSeen) {
            EXPECT_EQ(CountPieces(drawing), kCubeFromCorner) << odd.name;
        }
    }
}

TEST_F(SceneDrawingTest, LooksOutOfAPart)
{
    const auto scene = test::Prepare({{MakeBlock(4, 4, 4)}, {MakeBlock(1, 1, 1), At(0, 0, -1)}});
    dg::Camera3D camera = CameraOf(*scene, StandardView::Front);
    camera.SetPerspective(90.0);
    camera.SetLocation(At(0, 0, 1.5));
    const Drawing drawing = Draw(*scene, camera, Style::Both);
    EXPECT_EQ(ColorAt(drawing, 1, 1).alpha, 1.0F);
    EXPECT_EQ(ColorAt(drawing, 199, 100).alpha, 1.0F);
    // The room's far square and its four edges towards the eye; the cube before the square.
    Pieces room;
    for (const DrawnStrokes& strokes : drawing.strokes) {
        room[strokes.part + " " + strokes.lineClass] += strokes.strokes.size();
    }
    EXPECT_EQ(room["/p0 visible crease"], 8U);
    EXPECT_EQ(room["/p1 visible silhouette"], 1U);
    // A view so wide that single precision knows no place in it.
    camera.SetOrthographic(1e25);
    EXPECT_TRUE(Draw(*scene, camera, Style::Both).strokes.empty());
    camera.SetPerspective(180.0);
    Drawing none;
    std::string error;
    EXPECT_FALSE(DrawScene(*scene, camera, {}, {}, none, error));
    EXPECT_EQ(error, "the camera shows nothing");
}

} // namespace
