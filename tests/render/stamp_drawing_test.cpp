#include "Baselines.h"
#include "Pictures.h"
#include "support/SessionTest.h"

#include <dg/Camera3D.h>
#include <luannotations/Annotation.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/StampDrawing.h>
#include <luk/AnnoSet.h>
#include <luk/illustration2d/Document2D.h>
#include <luk/illustration2d/Stamp2D.h>
#include <luk/Scene.h>
#include <lumk/Stamp.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <vector>

using namespace luhost::render;

namespace
{

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr double kRightAngle = 1.5707963267948966;

class Note : public luannotations::Annotation
{
public:
    Note() : luannotations::Annotation(0, 0) {}
};

dg::FMat33 Turned(int axis, double angle)
{
    dg::FMat33 matrix;
    const int first = (axis + 1) % 3;
    const int second = (axis + 2) % 3;
    matrix.Set(first, first, static_cast<float>(std::cos(angle)));
    matrix.Set(first, second, static_cast<float>(-std::sin(angle)));
    matrix.Set(second, first, static_cast<float>(std::sin(angle)));
    matrix.Set(second, second, static_cast<float>(std::cos(angle)));
    return matrix;
}

/// 10 pixels for a unit where it is orthographic, and at a distance of 10 where it is not; looks at the origin.
dg::Camera3D MakeCamera(bool orthographic, double roll = 0.0)
{
    dg::Camera3D camera;
    camera.SetViewport(200, 100);
    camera.SetLocation({Turned(2, roll), {0.0, 0.0, 10.0}});
    camera.SetOrthographic(20.0);
    if (!orthographic) {
        camera.SetPerspective(90.0);
    }
    return camera;
}

class StampDrawingTest : public test::SessionTest
{
protected:
    void TearDown() override { m_scene->Close(); }

    lumk::Stamp& Add(const dg::DPoint3D& center, float halfWidth, float halfHeight, bool screenSpace = false,
                     int layer = 0, int frameWidth = 0)
    {
        const auto stamp = du::MakeCounted<lumk::Stamp>(screenSpace, frameWidth, true, layer);
        stamp->SetCenter(center);
        stamp->SetWidth(halfWidth);
        stamp->SetHeight(halfHeight);
        stamp->SetFillColor({1.0F, 1.0F, 1.0F, 0.0F});
        stamp->SetImage(test::MakeQuarters());
        m_scene->AddMarkup(stamp);
        return *stamp;
    }

    du::SmartPtr<luk::Scene> m_scene = du::MakeCounted<luk::Scene>();
};

using Corners = std::array<dg::DPoint2D, 4>;

void ExpectCorners(const Drawing& drawing, const std::vector<Corners>& expected)
{
    ASSERT_EQ(drawing.pictures.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        for (std::size_t corner = 0; corner < 4; ++corner) {
            EXPECT_NEAR(drawing.pictures[i].corners[corner].x, expected[i][corner].x, 1e-4) << i << " " << corner;
            EXPECT_NEAR(drawing.pictures[i].corners[corner].y, expected[i][corner].y, 1e-4) << i << " " << corner;
        }
    }
}

Corners Upright(double left, double top, double right, double bottom)
{
    return test::PutInto(left, top, right, bottom, nullptr).corners;
}

TEST_F(StampDrawingTest, StampsLieWhereTheViewShowsThem)
{
    Add({2, 1, -5}, 3, 2);
    Add({0, 0, 0}, 3, 2).SetReverse(true);
    Add({0, 0, 0}, 3, 2).SetFlipHorizontally(true);
    Add({50, 30, 1e9}, 10, 5, true);
    lumk::Stamp& turned = Add({0, 0, 0}, 3, 2);
    turned.SetBillboard(false);
    turned.SetLocationMat(Turned(2, kRightAngle));
    lumk::Stamp& scaled = Add({0, 0, 0}, 3, 2);
    scaled.SetBillboard(false);
    scaled.SetLocationMat(dg::FMat33::Scaling(2.0, 1.0, 1.0));
    scaled.SetLocationPosition({7.0, 7.0, 7.0});
    lumk::Stamp& leaning = Add({0, 0, 0}, 3, 2);
    leaning.SetBillboard(false);
    leaning.SetLocationMat(Turned(1, std::asin(0.8)));

    const Corners screen = Upright(40, 25, 60, 35);
    const Corners onItsSide{dg::DPoint2D{80, 80}, {80, 20}, {120, 20}, {120, 80}};
    ExpectCorners(DrawView(*m_scene, MakeCamera(true), {}),
                  {Upright(90, 20, 150, 60), Upright(70, 70, 130, 30), Upright(130, 30, 70, 70), screen, onItsSide,
                   Upright(40, 30, 160, 70), Upright(82, 30, 118, 70)});
    // At a distance of 15 what is 10 pixels here is 6.67, at 7.6 and 12.4 it is 13.16 and 8.06.
    const double nearer = 100.0 / 7.6;
    const double farther = 100.0 / 12.4;
    ExpectCorners(DrawView(*m_scene, MakeCamera(false), {}), {Upright(280.0 / 3.0, 30, 400.0 / 3.0, 170.0 / 3.0),
                                                              Upright(70, 70, 130, 30),
                                                              Upright(130, 30, 70, 70),
                                                              screen,
                                                              onItsSide,
                                                              Upright(40, 30, 160, 70),
                                                              {dg::DPoint2D{100 - 1.8 * nearer, 50 - 2 * nearer},
                                                               {100 + 1.8 * farther, 50 - 2 * farther},
                                                               {100 + 1.8 * farther, 50 + 2 * farther},
                                                               {100 - 1.8 * nearer, 50 + 2 * nearer}}});
    // A camera that lies on its side: what faces the viewer stays upright.
    ExpectCorners({DrawView(*m_scene, MakeCamera(true, kRightAngle), {})},
                  {Upright(80, 50, 140, 90),
                   Upright(70, 70, 130, 30),
                   Upright(130, 30, 70, 70),
                   screen,
                   Upright(70, 30, 130, 70),
                   {dg::DPoint2D{120, -10}, {120, 110}, {80, 110}, {80, -10}},
                   {dg::DPoint2D{120, 32}, {120, 68}, {80, 68}, {80, 32}}});
}

TEST_F(StampDrawingTest, LeavesOutWhatAppearsNowhere)
{
    Add({0, 0, 11}, 1, 1);
    lumk::Stamp& partlyBehind = Add({0, 0, 9}, 3, 1);
    partlyBehind.SetBillboard(false);
    partlyBehind.SetLocationMat(Turned(1, 1.0));
    Add({0, 0, 0}, 1, 1).SetVisibility(false);
    Add({0, 0, 0}, -0.01F, -0.01F);
    Add({0, 0, 0}, kNaN, 1);
    Add({0, 0, 0}, 1, HUGE_VALF, true);
    Add(dg::DPoint3D::BAD, 1, 1);
    EXPECT_TRUE(DrawView(*m_scene, MakeCamera(false), {}).pictures.empty());
    EXPECT_TRUE(DrawView(*m_scene, dg::Camera3D(), {}).pictures.empty());
}

TEST_F(StampDrawingTest, DrawsByLayerThenByTheOrderOfTheAnnotations)
{
    std::vector<du::SmartPtr<Note>> notes;
    for (const char* name : {"a", "b", "c"}) {
        notes.push_back(du::MakeCounted<Note>());
        notes.back()->SetObjectName(du::Symbol(name));
        m_scene->GetAnnoSet()->AddAnnotation(notes.back());
    }
    const auto stranger = du::MakeCounted<Note>();
    const std::pair<Note*, int> stamps[] = {{nullptr, 0},        {notes[2].get(), 0}, {notes[0].get(), 5},
                                            {stranger.get(), 0}, {notes[1].get(), 0}, {notes[0].get(), -1},
                                            {notes[1].get(), 0}};
    float transparency = 0.0F;
    for (const auto& [note, layer] : stamps) {
        lumk::Stamp& stamp = Add({0, 0, 0}, 1, 1, false, layer, 3);
        stamp.SetController(note);
        stamp.SetTransparency(transparency += 0.125F);
    }
    const auto wordsOf = [](const luk::Annotation& note) { return Words{note.GetObjectName().GetText(), "t", "d"}; };
    std::vector<std::pair<std::string, double>> drawn;
    for (const DrawnPicture& picture : DrawView(*m_scene, MakeCamera(true), wordsOf).pictures) {
        drawn.emplace_back(picture.id, picture.opacity);
        EXPECT_EQ(picture.title.empty(), picture.id.empty());
        EXPECT_EQ(picture.lineWidth, 3.0);
    }
    EXPECT_EQ(drawn, (std::vector<std::pair<std::string, double>>{
                         {"a", 0.25}, {"b", 0.375}, {"b", 0.125}, {"c", 0.75}, {"", 0.875}, {"", 0.5}, {"a", 0.625}}));
    for (const auto& [value, opacity] : {std::pair{kNaN, 1.0}, {-2.0F, 1.0}, {2.0F, 0.0}, {HUGE_VALF, 0.0}}) {
        Add({0, 0, 0}, 1, 1, false, 9).SetTransparency(value);
        EXPECT_EQ(DrawView(*m_scene, MakeCamera(true), {}).pictures.back().opacity, opacity) << value;
    }
}

/// A page with everything that a page can show.
du::SmartPtr<luk::illustration2d::Document2D> MakePage()
{
    using luk::illustration2d::Stamp2D;
    const auto page = du::MakeCounted<luk::illustration2d::Document2D>(60.0, 40.0);
    const auto image = du::MakeCounted<luk::Image>();
    image->SetImageData(test::MakeQuarters());
    const auto vectors = du::MakeCounted<luk::Image>();
    vectors->SetImageData(test::MakeVectorQuarters()->CreateCWRotated(1));
    const std::function<void(Stamp2D&)> stamps[] = {
        [&](Stamp2D& stamp) {
            stamp.SetExtents({{2.0, 26.0}, {20.0, 38.0}});
            stamp.SetIDPath(du::Symbol("0/1"));
            stamp.SetTitle("Glue & press");
            stamp.SetUseTitle(true);
            stamp.SetDescription("not shown");
        },
        [](Stamp2D& stamp) {
            stamp.SetExtents({{22.0, 26.0}, {40.0, std::numeric_limits<double>::infinity()}});
        },
        [](Stamp2D& stamp) {
            stamp.SetExtents({{22.0, 26.0}, {40.0, 38.0}});
            stamp.SetFlipVertically(true);
            stamp.SetDescription("shown");
            stamp.SetUseDescription(true);
        },
        [&](Stamp2D& stamp) {
            stamp.SetExtents({{42.0, 20.0}, {54.0, 38.0}});
            stamp.SetFlipHorizontally(true);
            stamp.SetImage(vectors);
        },
        [](Stamp2D& stamp) {
            stamp.SetExtents({{2.0, 2.0}, {20.0, 14.0}});
            stamp.SetImage(nullptr);
        }};
    for (const auto& fill : stamps) {
        const auto stamp = du::MakeCounted<Stamp2D>();
        stamp->SetImage(image);
        fill(*stamp);
        page->AppendNode(stamp);
    }
    return page;
}

TEST_F(StampDrawingTest, PagesTurnTheirYAxis)
{
    const Drawing drawing = DrawPage(*MakePage());
    ExpectCorners(drawing,
                  {Upright(2, 2, 20, 14), Upright(22, 14, 40, 2), Upright(54, 2, 42, 20), Upright(2, 26, 20, 38)});
    EXPECT_EQ(drawing.pictures[0].id, "0/1");
    EXPECT_EQ(drawing.pictures[0].title + drawing.pictures[0].description, "Glue & press");
    EXPECT_EQ(drawing.pictures[1].title + drawing.pictures[1].description, "shown");
}

TEST_F(StampDrawingTest, LooksAsItDid)
{
    test::ExpectBaseline(DrawPage(*MakePage()), "page");

    Add({-7, 2, 0}, 2, 2, false, 0, 4).SetFillColor({1.0F, 0.9F, 0.5F, 1.0F});
    lumk::Stamp& faded = Add({-3, 2, 0}, 2.4F, 1.6F, false, 1, 6);
    faded.SetTransparency(0.5F);
    faded.SetLineColor({0.0F, 0.2F, 0.6F, 1.0F});
    lumk::Stamp& leaning = Add({3, 1, 0}, 3, 2, false, 0, 2);
    leaning.SetBillboard(false);
    leaning.SetLocationMat(Turned(1, 0.9) * Turned(2, 0.3));
    lumk::Stamp& vectors = Add({5, -2, 2}, 3, 2);
    vectors.SetBillboard(false);
    vectors.SetLocationMat(Turned(0, -1.0));
    vectors.SetImage(test::MakeVectorQuarters());
    Add({25, 80, 0}, 20, 15, true).SetImage(nullptr);
    const auto wordsOf = [](const luk::Annotation&) { return Words(); };
    test::ExpectBaseline(DrawView(*m_scene, MakeCamera(true), wordsOf), "view-orthographic");
    test::ExpectBaseline(DrawView(*m_scene, MakeCamera(false), wordsOf), "view-perspective");
}

} // namespace
