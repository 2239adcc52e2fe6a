#include "Pictures.h"
#include "Shapes.h"
#include "support/SessionTest.h"

#include <luhost/render/DrawingOutput.h>
#include <luhost/render/Strokes.h>
#include <luk/ShapeInstance.h>

#include <cmath>
#include <string>
#include <tuple>

using namespace luhost::render;
using test::At;
using test::MakeBlock;
using test::Part;

namespace
{

class LineJoiningTest : public test::SessionTest
{
protected:
    /// How many strokes there are of a class of lines, from one end to the other each; all for an empty word.
    static std::size_t CountStrokes(const std::vector<Part>& parts, StandardView view, const std::string& lineClass)
    {
        const auto scene = test::Prepare(parts);
        const Drawing drawing =
            test::DrawPicture(*scene, test::CameraOf(*scene, view), SceneDrawingOptions::Style::Lines);
        std::size_t count = 0;
        for (const DrawnStrokes& strokes : drawing.strokes) {
            count += lineClass.empty() || strokes.lineClass == lineClass ? strokes.strokes.size() : 0;
        }
        return count;
    }

    static dg::Location Turned(double angle, int axis, const dg::DPoint3D& place)
    {
        const auto cosine = static_cast<float>(std::cos(angle));
        const auto sine = static_cast<float>(std::sin(angle));
        const int first = (axis + 1) % 3;
        const int second = (axis + 2) % 3;
        dg::FMat33 turn = dg::FMat33::IDENTITY;
        turn.Set(first, first, cosine);
        turn.Set(first, second, -sine);
        turn.Set(second, first, sine);
        turn.Set(second, second, cosine);
        return {turn, place};
    }
};

/// The outline of a mesh of few triangles runs to and fro, now before and now behind itself.
TEST_F(LineJoiningTest, OutlinesOfCoarseRingsAreTwoLines)
{
    for (const unsigned rows : {12U, 16U, 20U}) {
        for (const double tilt : {0.6, 0.8, 1.0, 1.2}) {
            const Part ring{test::MakeTorus(rows, 1.0F, 0.25F), Turned(tilt, 0, dg::DPoint3D::ORIGIN)};
            EXPECT_EQ(CountStrokes({ring}, StandardView::Front, "visible silhouette"), 2U) << rows << ' ' << tilt;
        }
    }
}

using Edges = std::vector<std::tuple<std::uint32_t, std::uint32_t, bool>>; ///< from place to place, whether it is seen

/// Where the strokes that are seen begin and end along x, to a pixel.
std::string SeenStrokes(const std::vector<dg::DPoint2D>& places, const Edges& edges, bool isSmooth)
{
    std::vector<FeatureLine> lines;
    LineSpans spans;
    for (const auto& [start, end, isVisible] : edges) {
        FeatureLine& line = lines.emplace_back();
        line.kind = LineKind::Silhouette;
        line.isSmooth = isSmooth;
        line.startVertex = start;
        line.endVertex = end;
        line.screenStart = places[start];
        line.screenEnd = places[end];
        spans.first.push_back(spans.spans.size());
        spans.spans.push_back({0.0, 1.0, isVisible});
    }
    spans.first.push_back(spans.spans.size());
    std::string seen;
    for (const Stroke& stroke : MakeStrokes(lines, spans)) {
        seen += stroke.isVisible ? std::to_string(std::lround(stroke.points.front().x)) + "-" +
                                       std::to_string(std::lround(stroke.points.back().x)) + " "
                                 : "";
    }
    return seen;
}

/// In a mesh with edges of less than a pixel they meet by fours, and each piece alone would be too short to be drawn.
TEST_F(LineJoiningTest, OutlinesGoOnWhereTheyTurnBackAndMeetAnother)
{
    const std::vector<dg::DPoint2D> places = {{0, 0}, {4, 0}, {8, 0}, {1, 0.2}, {4.4, 0}, {5, 0}, {4.6, 0.1}, {8, 0.1}};
    const Edges edges = {{0, 1, true},  {1, 2, true},  {3, 4, true}, {4, 1, true},
                         {1, 5, false}, {5, 6, false}, {6, 7, true}};
    EXPECT_EQ(SeenStrokes(places, edges, true), "0-8 1-8 ");
    EXPECT_EQ(SeenStrokes(places, edges, false), "0-8 1-4 5-8 ");
}

/// Hooks at the ends of outlines go; the steps of a fine mesh, which turn back within a pixel, are no hooks.
TEST_F(LineJoiningTest, OutlinesLoseTheirHooksAndNothingElse)
{
    const Edges chain = {{0, 1, true}, {1, 2, true}, {2, 3, true}, {3, 4, true}, {4, 5, true}};
    EXPECT_EQ(SeenStrokes({{0, 0}, {0.5, 0}, {0.3, 0}, {3, 0}, {2.8, 0}, {20, 1}}, chain, true), "0-20 ");
    EXPECT_EQ(SeenStrokes({{3, 0.4}, {2, 0.2}, {0, 0}, {3, 0}, {6, 0}, {20, 1}}, chain, true), "0-20 ");
}

TEST_F(LineJoiningTest, EdgesInOneLineAreOneStroke)
{
    // Steps, seen from the front: a long side above another, nearer one that ends at the same place.
    const Part high{MakeBlock(2, 2, 1), At(0, 0, 0)};
    const Part low{MakeBlock(2, 1, 1), At(0, -0.5, 1)};
    EXPECT_EQ(CountStrokes({high, low}, StandardView::Front, ""), 2U) << "an outline for each";
    // Round bars end to end, the sides of one between those of the other, which now the one and now the other hides.
    const Part lower{test::MakeCylinder(24, 1, 1), At(0, -0.5, 0)};
    const Part upper{test::MakeCylinder(24, 1, 1), Turned(0.131, 1, {0, 0.5, 0})};
    EXPECT_LE(CountStrokes({lower, upper}, StandardView::Front, ""), 3U);
}

TEST_F(LineJoiningTest, BodiesMeetBehindGlassToo)
{
    const Part plate{MakeBlock(4, 0.5F, 4)};
    const Part post{MakeBlock(1, 3, 1)};
    const auto clear = [](luk::ShapeInstance& part) { part.OverrideTransparency(0.5F); };
    const Part pane{MakeBlock(8, 8, 0.1F), At(4, 4, 4), clear, "pane"};
    const std::string meeting = "visible intersection";
    EXPECT_EQ(CountStrokes({plate, post, pane}, StandardView::Iso, meeting),
              CountStrokes({plate, post}, StandardView::Iso, meeting));
    EXPECT_GT(CountStrokes({plate, post}, StandardView::Iso, meeting), 0U);
}

/// Whoever looks at a line sees no dot where two pieces of it meet.
TEST(LineJoints, AreNoDarkerThanTheLine)
{
    Drawing drawing;
    drawing.width = drawing.height = 40.0;
    for (const double begin : {5.0, 20.25}) {
        DrawnStrokes& strokes = drawing.strokes.emplace_back();
        strokes.width = 1.3;
        strokes.strokes = {{{{begin, 10.1}, {begin + 15.25, 10.1}}, false}, {{{begin, 30.1}, {begin, 34.0}}, false}};
    }
    std::string png;
    std::string error;
    ASSERT_TRUE(WritePng(drawing, 0, 0, png, error)) << error;
    const test::Pixels pixels = test::DecodePng(png);
    for (int row = 8; row < 13; ++row) {
        for (int column = 8; column < 32; ++column) {
            EXPECT_EQ(pixels.At(column, row), pixels.At(8, row)) << column << ' ' << row;
        }
    }
    EXPECT_NE(pixels.At(20, 9) & 0xFF000000U, 0U);
}

} // namespace
