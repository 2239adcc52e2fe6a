#include "Pictures.h"
#include "Shapes.h"
#include "support/Contains.h"
#include "support/SessionTest.h"

#include <luhost/render/DrawingOutput.h>
#include <luhost/render/PictureCover.h>
#include <luhost/render/Raster.h>
#include <luhost/render/SceneDrawing.h>
#include <luhost/render/SymbolsForward.h>
#include <luhost/render/ViewCameras.h>
#include <luk/Instance.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

using namespace luhost::render;
using test::At;
using test::CameraOf;
using test::MakeBlock;
using test::Part;

namespace
{

constexpr int kSide = 200;

/// What bodies, symbols and pictures in one view do to one another.
class ViewPartsTest : public test::SessionTest
{
protected:
    static Drawing DrawLines(const PreparedScene& scene, const dg::Camera3D& camera)
    {
        return test::DrawPicture(scene, camera, SceneDrawingOptions::Style::Lines);
    }

    /// How many straight pieces the lines of each class have, and how long they are.
    struct Sum {
        std::size_t pieces = 0;
        double length = 0.0;
    };
    static std::map<std::string, Sum> SumsOf(const std::vector<Part>& parts, StandardView view)
    {
        const auto scene = test::Prepare(parts);
        std::map<std::string, Sum> sums;
        for (const DrawnStrokes& strokes : DrawLines(*scene, CameraOf(*scene, view)).strokes) {
            for (const DrawnStrokes::Stroke& stroke : strokes.strokes) {
                for (std::size_t i = stroke.closed ? 0 : 1; i < stroke.points.size(); ++i) {
                    const dg::DPoint2D& from = stroke.points[i == 0 ? stroke.points.size() - 1 : i - 1];
                    for (const std::string& key : {strokes.lineClass, std::string("all")}) {
                        ++sums[key].pieces;
                        sums[key].length += std::hypot(stroke.points[i].x - from.x, stroke.points[i].y - from.y);
                    }
                }
            }
        }
        return sums;
    }

    /// Two blocks as one mesh.
    static test::MeshPtr Join(const luk::Mesh& a, const luk::Mesh& b, const dg::FVec3& move)
    {
        auto positions = a.GetPositions();
        auto indices = a.GetIndices();
        const auto first = static_cast<std::uint32_t>(positions.size());
        for (const dg::FVec3& p : b.GetPositions()) {
            positions.emplace_back(p.x + move.x, p.y + move.y, p.z + move.z);
        }
        for (const std::uint32_t index : b.GetIndices()) {
            indices.push_back(first + index);
        }
        return test::MakeMesh(positions, indices);
    }

    const std::string m_symbol = std::string(luk::Instance::s_content_symbolPrefix.GetText()).append("1");
};

TEST_F(ViewPartsTest, LinesWhereBodiesGoThroughOneAnother)
{
    const std::string key = "visible intersection";
    const auto through = [&](std::vector<Part> parts) { return SumsOf(parts, StandardView::Iso)[key].pieces; };
    const auto plate = MakeBlock(4, 0.5F, 4);
    const auto post = MakeBlock(1, 3, 1);
    EXPECT_EQ(through({{plate}, {post}}), 2U) << "two of the four are behind the post";
    EXPECT_EQ(through({{Join(*plate, *post, {0, 0, 0})}}), 2U) << "bodies of one mesh";
    EXPECT_EQ(through({{plate}, {post, At(0, 1.75, 0)}}), 0U) << "one that stands on the other";
    EXPECT_EQ(through({{plate}, {post, At(3, 0, 0)}}), 0U) << "one beside the other";
    EXPECT_EQ(SumsOf({{plate}, {post, At(0, 0, 0), {}, m_symbol}}, StandardView::Iso)[key + " symbol"].pieces, 2U);
    // A closed line around a round post, all of it: an ellipse.
    const auto top = SumsOf({{MakeBlock(4, 4, 0.5F)}, {test::MakeSphere(48, 1.0F)}}, StandardView::Front)[key];
    EXPECT_NEAR(top.length, 2.0 * M_PI * std::sqrt(1.0 - 0.0625) * 0.8 * kSide / 4.0, 1.0);
}

TEST_F(ViewPartsTest, BodiesInOnePlaneAreOneFace)
{
    // A block of 2 x 2 with one of 2 x 1 that overlaps it by a half, as wide in z.
    const auto angle = Join(*MakeBlock(2, 2, 1), *MakeBlock(2, 1, 1), {1.5F, -0.5F, 0});
    const Sum front = SumsOf({{angle}}, StandardView::Front)["all"];
    EXPECT_NEAR(front.length, (3.5 + 2.0 + 3.5 + 2.0) * 0.8 * kSide / 3.5, 2.0);
    // As parts they keep their lines; those that lie upon one another are one.
    const auto apart =
        SumsOf({{MakeBlock(2, 2, 1)}, {MakeBlock(2, 2, 1), At(2, 0, 0)}}, StandardView::Front)["all"].length;
    EXPECT_NEAR(apart, (4.0 + 2.0 + 4.0 + 2.0 + 2.0) * 0.8 * kSide / 4.0, 1.0);
}

TEST_F(ViewPartsTest, CamerasShowEverythingAsLargeAsItFits)
{
    std::vector<dg::DPoint3D> points;
    for (int i = 0; i < 40; ++i) {
        points.push_back({1e6 + 30.0 * std::sin(i), -5.0 + 8.0 * std::cos(2.0 * i), 3.0 * std::sin(5.0 * i)});
    }
    for (const bool isOrthographic : {true, false}) {
        dg::Camera3D camera = MakeViewCamera(StandardView::Iso, UpAxis::Z, {}, 300, 200, 0.0);
        if (!isOrthographic) {
            camera.SetPerspective(70.0);
        }
        camera = FitCamera(camera, points, 0.05);
        dg::DPoint2D low{1e9, 1e9};
        dg::DPoint2D high{-1e9, -1e9};
        for (const dg::DPoint3D& point : points) {
            dg::DPoint2D screen;
            ASSERT_TRUE(camera.ProjectPoint(point, screen));
            low = {std::min(low.x, screen.x), std::min(low.y, screen.y)};
            high = {std::max(high.x, screen.x), std::max(high.y, screen.y)};
        }
        EXPECT_NEAR(std::min({low.x, low.y, 300.0 - high.x, 200.0 - high.y}), 10.0, 0.1) << isOrthographic;
        EXPECT_TRUE(high.x - low.x > 279.0 || high.y - low.y > 179.0) << isOrthographic;
        std::ranges::reverse(points);
        EXPECT_EQ(FitCamera(camera, points, 0.05).GetLocation(), camera.GetLocation())
            << "to the last bit, whatever the order";
    }
}

TEST_F(ViewPartsTest, SymbolsComeForwardToWhereTheyWere)
{
    const std::vector<Part> parts{{MakeBlock(4, 4, 1)}, {MakeBlock(1, 1, 1), At(1, 0.5, -3), {}, m_symbol}};
    const auto covered = test::Prepare(parts);
    for (const bool isOrthographic : {true, false}) {
        dg::Camera3D camera = CameraOf(*covered, StandardView::Front);
        if (!isOrthographic) {
            camera.SetPerspective(60.0);
        }
        EXPECT_EQ(DrawLines(*covered, camera).strokes.back().part, "/p0") << "nothing of the symbol is seen";
        SceneGeometry geometry = covered->geometry;
        BringSymbolsForward(geometry, camera);
        std::string error;
        const auto forward = PreparedScene::Prepare(std::move(geometry), {}, {2, nullptr}, error);
        const DrawnStrokes outline = DrawLines(*forward, camera).strokes.back();
        ASSERT_EQ(outline.lineClass, "visible silhouette symbol");
        dg::DPoint2D corner;
        ASSERT_TRUE(camera.ProjectPoint({1.5, 1, -2.5}, corner));
        const auto& points = outline.strokes.at(0).points;
        const auto nearest = std::ranges::min_element(
            points, {}, [&](const dg::DPoint2D& point) { return std::hypot(point.x - corner.x, point.y - corner.y); });
        EXPECT_NEAR(nearest->x, corner.x, 0.02);
        EXPECT_NEAR(nearest->y, corner.y, 0.02);
    }
}

TEST_F(ViewPartsTest, PicturesAreHiddenByWhatStandsBeforeThem)
{
    const auto scene = test::Prepare({{MakeBlock(2, 8, 1)}, {MakeBlock(8, 8, 1), At(0, 0, -9)}});
    dg::Camera3D camera = CameraOf(*scene, StandardView::Front);
    camera.SetOrthographic(10.0);
    // Four units wide, at several depths, the block before the middle of those that are behind it.
    const auto draw = [&](double z, bool isInSpace) {
        Drawing drawing;
        drawing.width = drawing.height = kSide;
        drawing.pictures = {test::PutInto(60, 80, 140, 120, test::MakePicture(1, 1, {0xFF0000FF}))};
        if (isInSpace) {
            drawing.pictures[0].plane = DrawnPlane{{0, 0, z}, {0, 0, 1}};
        }
        EXPECT_EQ(CoverPictures(*scene, camera, 0.0, {2, nullptr}, drawing), Outcome::Done);
        return drawing;
    };
    EXPECT_TRUE(draw(-20, true).pictures.empty());
    EXPECT_FALSE(draw(-20, false).pictures.at(0).mask);
    EXPECT_FALSE(draw(0.5, true).pictures.at(0).mask) << "on the surface";
    const Drawing half = draw(-3, true);
    ASSERT_TRUE(half.pictures.at(0).mask);
    std::string svg;
    std::string png;
    std::string error;
    ASSERT_TRUE(WriteSvg(half, svg, error) && WritePng(half, 0, 0, png, error)) << error;
    for (const test::Pixels& pixels : {test::DecodePng(png), test::ShowSvg(svg, kSide, kSide)}) {
        const std::pair<double, char> places[] = {{50, '.'}, {62, 'R'}, {78, 'R'}, {82, '.'}, {118, '.'}, {122, 'R'}};
        for (const auto& [x, color] : places) {
            EXPECT_EQ(pixels.ColorAt(x, 100), color) << x;
        }
    }
}

TEST_F(ViewPartsTest, LinksAndResolutionsGoIntoTheFiles)
{
    Drawing drawing;
    drawing.width = 300;
    drawing.height = 150;
    drawing.pixelsPerInch = 288;
    drawing.title = "A <b>";
    drawing.pictures = {test::PutInto(30, 30, 90, 60, test::MakePicture(1, 1, {0xFF0000FF}))};
    drawing.pictures[0].link = "https://example.org/it's?a=1&b=(2";
    std::string svg;
    std::string pdf;
    std::string png;
    std::string error;
    ASSERT_TRUE(WriteSvg(drawing, svg, error) && WritePdf(drawing, pdf, error) && WritePng(drawing, 0, 0, png, error));
    EXPECT_TRUE(test::Contains(svg, "width=\"100px\" height=\"50px\" viewBox=\"0 0 300 150\""));
    EXPECT_TRUE(test::Contains(svg, "<a xlink:href=\"https://example.org/it's?a=1&amp;b=(2\">"));
    EXPECT_EQ(test::DecodePng(png).width, 300);
    for (const char* const text : {"/MediaBox [ 0 0 75 37.5 ]", "/URI (https://example.org/it%27s?a=1&b=%282)",
                                   "/Rect [ 7 22.5 23 30.5 ]", "/Title (A <b>)"}) {
        EXPECT_TRUE(test::Contains(pdf, text));
    }
    // Each number that the file tells a place of is there.
    std::istringstream table(pdf.substr(pdf.rfind("\nxref\n0 ") + 8));
    std::size_t count = 0;
    table >> count;
    for (std::size_t number = 0; number < count; ++number) {
        std::size_t place = 0;
        std::string use;
        table >> place >> use >> use;
        const std::string opening = std::to_string(number) + " 0 obj";
        EXPECT_TRUE(use == "f" || pdf.compare(place, opening.size(), opening) == 0) << opening;
    }
}

} // namespace
