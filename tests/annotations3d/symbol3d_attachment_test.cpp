#include "annotations3d/Symbol3DTest.h"

#include <luk/Kernel.h>

#include <cmath>
#include <limits>

namespace test
{

namespace
{

class SymbolAttachment : public Symbol3DTest
{
};
INSTANTIATE_TEST_SUITE_P(LocksAndRouting, SymbolAttachment, testing::Combine(testing::Bool(), testing::Bool()));

TEST_P(SymbolAttachment, FollowsTheTranslationOfAPartAndNothingElse)
{
    const struct {
        const char* part;
        const char* savedAs;
        const char* assembly;
        Deed moveTo20And5;
    } cases[] = {
        {"/b", "/b", "", [&] { m_root->FindChild(Text("b"))->SetLocation(At(20, 5)); }},
        {"/b", "/b", "", [&] { Move("/b", At(20, 5)); }},
        {"/a/y", "/a/y", "", [&] { Move("/a", At(10, 5)); }},
        {"/a/x", "/g/x", "/g", [&] { Move("/a", At(10, 5)); }},
        {"/a/x", "/g/x", "/g",
         [&] {
             Move("/a/x", {dg::FMat33::Scaling(2.0, 2.0, 2.0), {20.0, 5.0, 0.0}});
         }},
    };
    for (const auto& [part, savedAs, assembly, moveTo20And5] : cases) {
        SCOPED_TRACE(part);
        MakeProduct();
        m_root->FindChild(Text("b"))->SetLocation(At(10));
        m_assembly->FindChild(Text("x"))->SetLocation(At(10));
        m_assembly->FindChild(Text("y"))->SetLocation(At(10));
        SymbolInfo record = Record({12.0, 1.0, 0.0});
        record.locOrientation = dg::Quaternion<float>::FromMat(kQuarterTurn);
        record.locScale = 2.0;
        const Symbol symbol = Attached(record);
        const dg::FMat33 matrix = symbol->GetShapeInstance()->GetLocation().GetMat();
        for (int twice = 0; twice < 2; ++twice) {
            symbol->AddSelectedPart(PartAt(part), m_scene, Find(part), dg::DPoint3D::BAD);
        }
        ASSERT_EQ(PartsOf(symbol).size(), 1u) << "once, however often it is picked";
        EXPECT_EQ(PartsOf(symbol)[0].partId.GetText(), savedAs);
        EXPECT_EQ(PartsOf(symbol)[0].assemblyPartId.GetText(), assembly);
        EXPECT_EQ(PartsOf(symbol)[0].lastPos, dg::DPoint3D(10.0, 0.0, 0.0));
        EXPECT_EQ(PartsOf(symbol)[0].offset, dg::DVec3(2.0, 1.0, 0.0));

        moveTo20And5();
        EXPECT_EQ(Where(symbol), dg::DPoint3D(22.0, 6.0, 0.0));
        EXPECT_EQ(PartsOf(symbol)[0].lastPos, dg::DPoint3D(20.0, 5.0, 0.0));
        symbol->ApplyDeltaByConnectedPart(PartAt(part));
        Move(part, {kQuarterTurn, {20.0, 5.0, 0.0}});
        Move(std::string(part) == "/b" ? "/a/y" : "/b", At(70));
        const auto elsewhere = du::MakeCounted<luk::ShapeScene>(m_tree);
        elsewhere->GetShapeInstance(Find(part))->SetLocation(At(500), true);
        symbol->ApplyDeltaByConnectedPart(elsewhere->GetShapeInstance(Find(part)));
        EXPECT_EQ(Where(symbol), dg::DPoint3D(22.0, 6.0, 0.0)) << "a turn in place, another part, another scene";

        // A part that is nowhere, or flat, says nothing.
        Move(part, {dg::FMat33::IDENTITY, dg::DPoint3D::BAD});
        Move(part, {dg::FMat33::Scaling(0.0, 1.0, 1.0), {3.0, 3.0, 0.0}});
        EXPECT_EQ(PartsOf(symbol)[0].offset, dg::DVec3(2.0, 1.0, 0.0));
        Pump();
        EXPECT_EQ(luk::Kernel::GetKernel()->GetPendingEventCount(), 0u) << "asked once, not for ever";
        Move(part, At(20, 5));

        m_scene->UnloadShapeInstance(Find(part));
        symbol->UpdateAnnotationLocation({matrix, {25.0, 6.0, 0.0}});
        EXPECT_EQ(PartsOf(symbol)[0].offset, dg::DVec3(5.0, 1.0, 0.0)) << "from where the part was last";
        Find(part)->GetComponentInstance()->SetLocation(At(1));
        m_scene->LoadShapeInstance(Find(part));
        Move(part, At(30, 5));
        Pump();
        EXPECT_EQ(Where(symbol), dg::DPoint3D(35.0, 6.0, 0.0));
        EXPECT_EQ(symbol->GetShapeInstance()->GetLocation().GetMat(), matrix);
    }
}

TEST_P(SymbolAttachment, PathsAreLookedUpInTheServiceTreeFirst)
{
    m_services->AddInstance(nullptr, Text("b"), "not what the product calls b", Find("/a/y"));
    m_root->FindChild(Text("b"))->SetLocation(At(50));
    m_assembly->FindChild(Text("y"))->SetLocation(At(10));
    const ConnectedPartInfo saved{Text("/b"), {}, {10.0, 0.0, 0.0}, {2.0, 0.0, 0.0}};
    const Symbol symbol = Attached(Record({12.0, 0.0, 0.0}, {saved}));
    Pump();
    EXPECT_EQ(Where(symbol), dg::DPoint3D(12.0, 0.0, 0.0));
    Move("/a/y", At(11));
    EXPECT_EQ(Where(symbol), dg::DPoint3D(13.0, 0.0, 0.0));
    EXPECT_TRUE(symbol->isConnectedPart(PartAt("/a/y")));
    EXPECT_TRUE(symbol->isConnectedPart(Text("/b")) && !symbol->isConnectedPart(Text("/a/y")));
    m_services->AddInstance(nullptr, Text("none"), "stands for no part", nullptr);
    EXPECT_EQ(Where(Attached(Record({3.0, 0.0, 0.0}, {{Text("/none"), {}, {}, {}}}))), dg::DPoint3D(3.0, 0.0, 0.0));

    du::SmartPtr<luk::illustration::SbomInstance> serviced;
    du::SmartPtr<luk::Instance> part;
    EXPECT_TRUE(symbol->IsSbomTreeIdPath(Text("/b"), serviced) && symbol->IsEbomTreeIdPath(Text("/b"), part));
    lukapp::illustration::DrellinApp::GetDrellinApp()->SetSbomTree(nullptr);
    EXPECT_TRUE(symbol->IsSbomTreeIdPath(Text("/g/x"), serviced)) << "that of the scene";
    for (const Text& nowhere : {Text(), Text(""), Text("/"), Text("/nowhere"), Text("b")}) {
        EXPECT_FALSE(symbol->IsSbomTreeIdPath(nowhere, serviced) || symbol->IsEbomTreeIdPath(nowhere, part));
    }
}

TEST_P(SymbolAttachment, KeepsUnknownPartsUntilItIsInAScene)
{
    const ConnectedPartInfo known{Text("/b"), {}, {}, {}};
    const ConnectedPartInfo unknown{Text("/nowhere"), {}, {}, {}};
    SymbolInfo info = Record({1.0, 2.0, 3.0}, {unknown, known, known, {}});
    info.isAnnotationSymbol = false;
    EXPECT_TRUE(PartsOf(Made(info)).empty()) << "saved parts count for annotation symbols alone";
    info.isAnnotationSymbol = true;
    const Symbol symbol = Made(info);
    EXPECT_EQ(PartsOf(symbol).size(), 3u);
    Attached(symbol);
    ASSERT_EQ(PartsOf(symbol).size(), 1u);
    EXPECT_TRUE(symbol->isConnectedPart(Text("/b")) && !symbol->isConnectedPart(Text("/nowhere")));
    symbol->AddSelectedPart(unknown.partId, {}, {}, {});
    symbol->AddSelectedPart(PartAt("/a"), m_scene, m_tree->GetRoot(), dg::DPoint3D::BAD);
    symbol->AddSelectedPart(nullptr, m_scene, nullptr, dg::DPoint3D::BAD);
    symbol->AddSelectedPart(nullptr, nullptr, symbol->GetShapeInstance()->GetInstance(), dg::DPoint3D::BAD);
    EXPECT_EQ(PartsOf(symbol).size(), 1u) << "none of these is a part to be attached to";
    EXPECT_FALSE(symbol->isConnectedPart(Part()));

    const Symbol lonely = Attached(Record({1.0, 2.0, 3.0}, {unknown}));
    EXPECT_EQ(Where(lonely), dg::DPoint3D(1.0, 2.0, 3.0)) << "all its parts are gone";
}

TEST_P(SymbolAttachment, HidesAndFadesWithItsParts)
{
    const Symbol symbol = AttachedTo({"/a/x", "/b"}, {1.0, 0.0, 0.0});
    const Part own = symbol->GetShapeInstance();
    const auto show = [](const Part& part, bool shown) { return [=] { part->SetVisibility(shown); }; };
    const auto fade = [](const Part& part, float fraction) {
        return [=] { part->SetVisibilityFraction(fraction, true); };
    };
    const struct {
        const char* what;
        Deed deed;
        bool shapeIsShown;
        bool annotationIsShown; ///< by its own setting, which a part never changes
        float fraction;
    } steps[] = {
        {"part hidden", show(PartAt("/b"), false), false, true, 1.0F},
        {"shown in vain", [&] { symbol->Show(true, nullptr); }, false, true, 1.0F},
        {"part shown", show(PartAt("/b"), true), true, true, 1.0F},
        {"assembly hidden", show(PartAt("/a"), false), false, true, 1.0F},
        {"assembly shown", show(PartAt("/a"), true), true, true, 1.0F},
        {"another hidden", show(PartAt("/a/y"), false), true, true, 1.0F},
        {"part faded", fade(PartAt("/b"), 0.5F), true, true, 0.5F},
        {"hidden by its user", [&] { symbol->Hide(true, nullptr, 0); }, false, false, 0.5F},
        {"part hidden as well", show(PartAt("/b"), false), false, false, 0.5F},
        {"part shown to no effect", show(PartAt("/b"), true), false, false, 0.5F},
        {"part brightened to no effect", fade(PartAt("/b"), 0.75F), false, false, 0.5F},
        {"part faded out", fade(PartAt("/b"), 0.0F), false, false, 0.0F},
        {"shown by its user", [&] { symbol->Show(true, nullptr); }, true, true, 0.0F},
        {"part faded in", fade(PartAt("/b"), 1.0F), true, true, 1.0F},
        {"own shape hidden", show(own, false), false, false, 1.0F},
        {"own shape shown", show(own, true), true, true, 1.0F},
        {"part hidden again", show(PartAt("/b"), false), false, true, 1.0F},
        {"part unloaded", [&] { m_scene->UnloadShapeInstance(Find("/b")); }, false, true, 1.0F},
        {"shown without it", [&] { symbol->Show(true, nullptr); }, true, true, 1.0F},
        {"part back, as hidden as before", [&] { m_scene->LoadShapeInstance(Find("/b")); }, false, true, 1.0F},
    };
    for (const auto& [what, deed, shapeIsShown, annotationIsShown, fraction] : steps) {
        deed();
        EXPECT_EQ(own->IsVisible(), shapeIsShown) << what;
        EXPECT_EQ(symbol->luk::Annotation::IsVisible(), annotationIsShown) << what;
        EXPECT_EQ(symbol->IsVisible(), shapeIsShown && annotationIsShown) << what;
        EXPECT_EQ(own->GetVisibilityFraction(), fraction) << what;
    }
    PartAt("/a/x")->SetVisibility(false);
    symbol->DetachScene();
    symbol->AttachScene(m_scene);
    EXPECT_FALSE(symbol->GetShapeInstance()->IsVisible()) << "comes up as hidden as its part";
    SymbolInfo coloured = Record({}, PartsOf(symbol));
    coloured.hasAppearanceOverride = true;
    const Symbol other = Attached(coloured);
    EXPECT_TRUE(!other->GetShapeInstance()->IsVisible() && other->luk::Annotation::IsVisible()) << "by its part alone";
}

TEST_P(SymbolAttachment, RingsEndAndMoveNothingTwice)
{
    const dg::DVec3 offset(1.0, 0.0, 0.0);
    SymbolInfo info =
        Record({1.0, 0.0, 0.0}, {{Text("/symbol:1"), {}, {}, offset}, {Text("/symbol:2"), {}, {}, offset}});
    info.id = Text("symbol:1");
    const Symbol one = Attached(info);
    info.id = Text("symbol:2");
    const Symbol two = Attached(info);
    one->AddSelectedPart(Text("/symbol:1"), {}, offset, {});
    one->AddSelectedPart(Text("/symbol:2"), {}, offset, Text("/symbol:1"));
    Pump();
    for (const Symbol& moved : {one, two}) {
        moved->GetShapeInstance()->SetLocation(At(5), true);
        moved->GetShapeInstance()->SetVisibility(false);
        moved->GetShapeInstance()->SetVisibility(true);
        m_scene->RecreateShapeInstance(moved->GetShapeInstance());
        EXPECT_EQ(Where(moved), dg::DPoint3D(5.0, 0.0, 0.0));
        PartsOf(moved);
        Pump();
    }
    const Symbol self = Attached(Record({0.0, 0.0, 0.0}));
    self->AddSelectedPart(self->GetShapeInstance()->GetInstance()->GetIdPath(), {}, offset, {});
    self->Hide(true, nullptr, 0);
    self->Show(true, nullptr);
    self->GetShapeInstance()->SetLocation(At(3), true);
    self->ApplyDeltaByConnectedPart(self->GetShapeInstance());
    EXPECT_TRUE(self->IsVisible());
    EXPECT_EQ(Where(self), dg::DPoint3D(3.0, 0.0, 0.0));
}

TEST_P(SymbolAttachment, TheFirstPartToPlaceItStartsFromTheRecord)
{
    SymbolInfo info = Record({7.0, 7.0, 7.0}, {{Text("/b"), {}, {}, {2.0, 0.0, 0.0}}});
    info.locOrientation = dg::Quaternion<float>::FromMat(kQuarterTurn);
    const Symbol symbol = Attached(info);
    const dg::Location turned(kQuarterTurn, {2.0, 0.0, 0.0});
    const std::pair<dg::Location, dg::Location> calls[] = {
        {dg::Location(), turned}, {dg::Location(), At(2)}, {{kQuarterTurn, {9.0, 9.0, 9.0}}, turned}};
    for (const auto& [given, expected] : calls) {
        symbol->GetShapeInstance()->SetLocation(At(99), false);
        symbol->UpdateSymbolLocationByOffset(PartAt("/b"), given);
        EXPECT_TRUE(dg::ApproximateEquality(symbol->GetShapeInstance()->GetLocation(), expected, 1e-6));
        EXPECT_FALSE(symbol->IsLegacySymbol());
    }
}

TEST_P(SymbolAttachment, NumbersThatAreNone)
{
    const dg::DPoint3D last(10.0, 0.0, 0.0);
    // saved position, last position and offset, and x of the symbol after the part has moved by one
    const std::tuple<dg::DPoint3D, dg::DPoint3D, dg::DVec3, double> cases[] = {
        {{12.0, 0.0, 0.0}, last, {2.0, 0.0, 0.0}, 13.0},
        {{12.0, 0.0, 0.0}, dg::DPoint3D::BAD, {2.0, 0.0, 0.0}, 13.0},
        {dg::DPoint3D::BAD, {0.0, kNan, 0.0}, {2.0, 0.0, 0.0}, 13.0},
        {{12.0, 0.0, 0.0}, last, dg::DVec3::BAD, kNan},
        {{std::numeric_limits<double>::infinity(), 0.0, 0.0}, last, {2.0, 0.0, kNan}, kNan},
    };
    for (const auto& [position, lastPos, offset, x] : cases) {
        MakeProduct();
        m_root->FindChild(Text("b"))->SetLocation(At(10));
        const Symbol symbol = Attached(Record(position, {{Text("/b"), {}, lastPos, offset}}));
        Pump();
        Move("/b", At(11));
        Saved(symbol);
        EXPECT_TRUE(std::isnan(x) ? !symbol->GetShapeInstance()->GetLocation().HasPosition() : Where(symbol).x == x);
        symbol->DetachScene();
    }
}

} // namespace

} // namespace test
