#include "support/SessionTest.h"

#include <lug/Appearance.h>
#include <luk/illustration/SbomTree.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>
#include <luk/Structure.h>
#include <luk/View.h>
#include <luk/World.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace test
{

namespace
{

using du::Symbol;
using Node = du::SmartPtr<luk::ComponentNode>;
using Part = du::SmartPtr<luk::ShapeInstance>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

dg::Location At(double x, double y = 0.0) { return {dg::FMat33::IDENTITY, {x, y, 0.0}}; }

/// A quarter turn about z, so that the order of composition shows.
dg::Location TurnedAt(double x) { return {dg::FMat33(0, -1, 0, 1, 0, 0, 0, 0, 1), {x, 0.0, 0.0}}; }

class Watcher : public luk::ShapeSceneObserver
{
public:
    void OnBeginUpdate() override { Note("["); }
    void OnEndUpdate() override { Note("]"); }
    void OnDetached() override { Note("x"); }
    void OnShapeInstanceCreate(const Part& part) override { Note("+", part); }
    void OnShapeInstanceRemove(const Part& part) override { Note("-", part); }
    void OnShapeInstanceSourceReplace(const Part& part) override { Note("s", part); }
    void OnShapeInstanceVisibilityChanged(const Part& part, bool visible) override { Note(visible ? "v" : "h", part); }
    void OnShapeInstanceVisibilityFractionChanged(const Part& part, float) override { Note("f", part); }
    void OnShapeInstanceLocationChanged(const Part& part) override { Note("~", part); }
    void OnShapeInstanceColorChanged(const Part& part) override { Note("c", part); }
    void OnShapeInstanceTransparencyChanged(const Part& part) override { Note("t", part); }
    void OnShapeInstanceAppearanceChanged(const Part& part) override { Note("a", part); }
    void OnShapeInstanceSelectionChanged(const Part& part) override { Note("l", part); }

    std::string TakeLog() { return std::exchange(log, {}); }

    std::string log;
    std::function<void(const std::string&)> then;

private:
    void Note(const std::string& what, const Part& part = nullptr)
    {
        const std::string noted = part ? what + part->GetInstance()->GetIdPath().GetText() : what;
        log += noted;
        if (then) {
            then(noted);
        }
    }
};

/// Everything with and without routing, which must not make a difference to those who hear everything.
class ShapeSceneTest : public SessionTest, public testing::WithParamInterface<bool>
{
protected:
    ShapeSceneTest()
    {
        Use(m_assembly, m_bolt, "x");
        Use(m_assembly, m_bolt, "y");
        Use(m_root, m_assembly, "a");
        Use(m_root, m_bolt, "b");
        m_structure->SetRoot(m_root);
        m_bolt->SetShapeSource(luk::ShapeSource::CreateFromMesh(m_mesh));
        m_tree = du::MakeCounted<luk::Tree>(m_structure);
        m_scene = du::MakeCounted<luk::ShapeScene>(m_tree);
        m_scene->SetRoutingEnabled(GetParam());
        m_scene->AddView(m_view);
        m_scene->RegisterObserver(m_watcher, nullptr, false);
    }

    static du::SmartPtr<luk::ComponentInstance> Use(const Node& parent, const Node& child, const char* id)
    {
        du::SmartPtr<luk::ComponentInstance> use;
        EXPECT_TRUE(parent->AddChild(child, Symbol(id), use));
        return use;
    }

    Node Make(const char* name) const { return m_structure->CreateComponentNode(Symbol(name)); }
    du::SmartPtr<luk::Instance> Find(const char* path) const { return m_tree->FindInstance(Symbol(path)); }
    Part PartOf(const char* path) const { return m_scene->GetShapeInstance(Find(path)); }
    double XOf(const char* path) const { return PartOf(path)->GetLocation().GetPosition().x; }
    double YOf(const char* path) const { return PartOf(path)->GetLocation().GetPosition().y; }

    du::SmartPtr<Watcher> Watch(const std::vector<const char*>& paths, bool batched)
    {
        auto watcher = du::MakeCounted<Watcher>();
        auto interest = du::MakeCounted<luk::InstanceInterest>();
        for (const char* const path : paths) {
            interest->Add(Symbol(path));
        }
        EXPECT_TRUE(m_scene->RegisterObserver(watcher, interest, batched));
        return watcher;
    }

    du::SmartPtr<luk::Structure> m_structure = du::MakeCounted<luk::Structure>();
    Node m_root = Make("root");
    Node m_assembly = Make("assembly");
    Node m_bolt = Make("bolt");
    du::SmartPtr<luk::Mesh> m_mesh = du::MakeCounted<luk::Mesh>(std::vector<dg::FVec3>{}, std::vector<std::uint32_t>{},
                                                                std::vector<luk::Mesh::Part>{});
    du::SmartPtr<luk::Tree> m_tree;
    du::SmartPtr<luk::ShapeScene> m_scene;
    du::SmartPtr<luk::View> m_view = du::MakeCounted<luk::View>();
    du::SmartPtr<Watcher> m_watcher = du::MakeCounted<Watcher>();
};

class ShapeSceneRoutingTest : public ShapeSceneTest
{
};

INSTANTIATE_TEST_SUITE_P(Routing, ShapeSceneTest, testing::Bool());
INSTANTIATE_TEST_SUITE_P(Routed, ShapeSceneRoutingTest, testing::Values(true));

TEST_P(ShapeSceneTest, PartsFollowWhatIsAboveUnlessPlacedThemselves)
{
    m_assembly->FindChild(Symbol("y"))->SetLocation(At(5));
    m_root->FindChild(Symbol("a"))->SetLocation(TurnedAt(10));
    EXPECT_EQ(m_watcher->TakeLog(), "~/a/y~/a~/a/x~/a/y");
    EXPECT_EQ(XOf("/a/y"), 10.0);
    EXPECT_EQ(YOf("/a/y"), 5.0);

    PartOf("/a/x")->SetLocation(At(1), true);
    EXPECT_EQ(m_watcher->TakeLog(), "~/a/x");
    PartOf("/a")->SetLocation(At(100), true);
    EXPECT_EQ(m_watcher->TakeLog(), "~/a~/a/y");
    EXPECT_EQ(XOf("/a/x"), 1.0);
    EXPECT_EQ(XOf("/a/y"), 105.0);
    EXPECT_EQ(PartOf("/a/y")->GetOriginalLocation().GetPosition().y, 5.0);

    m_root->FindChild(Symbol("a"))->SetLocation(At(-7));
    EXPECT_EQ(m_watcher->TakeLog(), "") << "the structure no longer places it";
    m_assembly->FindChild(Symbol("y"))->SetLocation(At(6));
    EXPECT_EQ(XOf("/a/y"), 106.0);
    EXPECT_EQ(PartOf("/a/y")->GetOriginalLocation(), At(-1));

    PartOf("/a")->SetLocation(dg::Location(), true);
    EXPECT_FALSE(PartOf("/a")->GetLocation().HasPosition() || PartOf("/a/y")->GetLocation().HasPosition());
    PartOf("/a")->SetLocation(At(3), true);
    EXPECT_EQ(XOf("/a/y"), 9.0) << "back from nowhere";
    EXPECT_EQ(XOf("/a/x"), 1.0);
}

TEST_P(ShapeSceneTest, HidingReachesWhatIsBelow)
{
    PartOf("/a/x")->SetVisibility(false);
    PartOf("/a")->SetVisibility(false);
    PartOf("/a/x")->SetVisibility(true);
    EXPECT_EQ(m_watcher->TakeLog(), "h/a/xh/ah/a/y");
    EXPECT_TRUE(PartOf("/a/x")->IsShown());
    EXPECT_FALSE(PartOf("/a/x")->IsVisible());
    Use(m_assembly, m_bolt, "z");
    EXPECT_FALSE(PartOf("/a/z")->IsVisible());
    m_view->SetDirty(false);
    PartOf("/a")->SetVisibility(true, false);
    EXPECT_EQ(m_watcher->TakeLog(), "+/a/z") << "silent";
    EXPECT_TRUE(m_view->IsDirty());
    EXPECT_TRUE(PartOf("/a/x")->IsVisible() && PartOf("/a/z")->IsVisible());
}

TEST_P(ShapeSceneTest, TellsRealChangesOnly)
{
    const Part part = PartOf("/b");
    const dg::Color odd(kNaN, 0.5F, 0.0F, 1.0F);
    const std::vector<std::pair<const char*, std::function<void()>>> changes{
        {"~/b", [&] { part->SetLocation(dg::Location(), true); }},
        {"", [&] { part->SetLocation(part->GetLocation(), true); }},
        {"f/b", [&] { part->SetVisibilityFraction(-3.0F, true); }},
        {"f/b", [&] { part->SetVisibilityFraction(kNaN, true); }},
        {"", [&] { part->SetVisibilityFraction(7.0F, true); }},
        {"c/b", [&] { part->SetColor(odd); }},
        {"a/b", [&] { part->OverrideAppearance(du::MakeCounted<lug::Appearance>()); }},
        {"", [&] { part->RestoreAppearanceOverride(false, true); }},
        {"a/b", [&] { part->RestoreAppearanceOverride(true, false); }},
        {"t/b", [&] { part->OverrideTransparency(2.0F); }},
        {"t/b", [&] { part->RestoreAppearanceOverride(true, true); }},
        {"t/b", [&] { part->OverrideTransparency(kNaN); }},
        {"l/b", [&] { part->SetSelected(true); }},
        {"s/b", [&] { m_scene->ReplaceShapeInstanceShape(part, PartOf("/a")->GetShape()); }},
        {"", [&] { m_scene->RecreateShapeInstance(part); }},
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        changes[i].second();
        EXPECT_EQ(m_watcher->TakeLog(), changes[i].first) << "change " << i;
        changes[i].second();
        EXPECT_EQ(m_watcher->TakeLog(), "") << "again, change " << i;
    }
    EXPECT_EQ(part->GetShape()->GetMesh(), m_mesh) << "what its node has";
    EXPECT_TRUE(part->HasTransparencyOverride());
    EXPECT_EQ(part->GetTransparency(), 0.0F);
}

TEST_P(ShapeSceneTest, RemovingAComponentTakesItsPartsOut)
{
    const Part assembly = PartOf("/a");
    const Part bolt = PartOf("/a/y");
    const auto neighbour = Watch({"/a/x", "/a/y", "/b"}, true);
    m_watcher->then = [&](const std::string& noted) {
        if (noted == "-/a/x") {
            EXPECT_TRUE(m_root->RemoveChild(Symbol("b")));
            EXPECT_FALSE(m_root->RemoveChild(Symbol("a")));
            EXPECT_EQ(m_scene->GetShapeInstance(bolt->GetInstance()), bolt) << "its turn has not come";
        }
        if (noted == "-/a/y") {
            EXPECT_EQ(bolt->GetShapeScene(), m_scene);
            bolt->SetVisibility(false);
            bolt->SetLocation(At(9), true);
            EXPECT_TRUE(m_scene->UnregisterObserver(m_watcher.get()));
        }
    };
    m_root->RemoveChild(Symbol("a"));
    EXPECT_EQ(m_watcher->TakeLog(), "-/a/x-/b-/a/yx");
    if (GetParam()) {
        EXPECT_EQ(neighbour->TakeLog(), "[-/b-/a/x-/a/y]");
    }
    EXPECT_EQ(m_scene->GetShapeInstanceCount(), 1u);
    for (const Part& gone : {assembly, bolt}) {
        EXPECT_EQ(gone->GetShapeScene(), nullptr);
        EXPECT_EQ(m_scene->GetShapeInstance(gone->GetInstance()), nullptr);
        EXPECT_FALSE(m_scene->RecreateShapeInstance(gone));
        EXPECT_FALSE(m_scene->GetInstanceLocation(gone->GetInstance()).HasPosition());
        gone->SetVisibility(true);
        gone->SetSelected(true);
    }
}

TEST_P(ShapeSceneTest, WhatIsUnloadedKeepsItsPlace)
{
    const Part before = PartOf("/a");
    before->SetLocation(At(10), false);
    before->SetVisibility(false, false);
    const auto instance = before->GetInstance();
    EXPECT_TRUE(m_scene->UnloadShapeInstance(instance));
    EXPECT_FALSE(m_scene->UnloadShapeInstance(instance));
    EXPECT_EQ(before->GetShapeScene(), nullptr);
    EXPECT_EQ(m_scene->GetShapeInstance(instance), nullptr);
    EXPECT_EQ(m_scene->GetShapeInstanceCount(), 4u);
    EXPECT_EQ(m_scene->GetInstanceLocation(instance), At(10));
    m_assembly->FindChild(Symbol("x"))->SetLocation(At(1));
    EXPECT_EQ(XOf("/a/x"), 11.0);
    before->SetLocation(At(50), true);

    const Part after = m_scene->LoadShapeInstance(instance);
    EXPECT_EQ(m_scene->LoadShapeInstance(instance), after);
    EXPECT_EQ(after->GetLocation(), At(10));
    EXPECT_FALSE(after->IsVisible());
    after->SetVisibility(true);
    EXPECT_EQ(m_watcher->TakeLog(), "-/a~/a/x+/av/av/a/xv/a/y");
    EXPECT_FALSE(m_scene->LoadShapeInstance(nullptr) || m_scene->UnloadShapeInstance(nullptr));
}

TEST_P(ShapeSceneRoutingTest, TellsEachOnceWhoIsInterestedByEitherTree)
{
    const auto services = du::MakeCounted<luk::illustration::SbomTree>();
    ASSERT_TRUE(services->AddInstance(nullptr, Symbol("s"), "bolt", Find("/a/x")));
    const auto both = Watch({"/a/x", "/s", "/b"}, true);
    const auto service = Watch({"/s"}, false);
    const auto other = Watch({"/a/y", "/nowhere"}, true);
    const auto all = du::MakeCounted<Watcher>();
    EXPECT_TRUE(m_scene->RegisterObserver(all, nullptr, true));
    EXPECT_FALSE(m_scene->RegisterObserver(all, nullptr, true) || m_scene->RegisterObserver(nullptr, nullptr, true));
    EXPECT_EQ(both->log + all->log, "") << "registering calls nobody";

    PartOf("/a/x")->SetSelected(true);
    EXPECT_EQ(both->TakeLog(), "[l/a/x]");
    EXPECT_EQ(service->TakeLog(), "l/a/x");
    EXPECT_EQ(all->TakeLog(), "[l/a/x]");
    {
        const luk::ShapeScene::UpdateBatch batch(*m_scene);
        const luk::ShapeScene::UpdateBatch inner(*m_scene);
        PartOf("/b")->SetSelected(true);
        PartOf("/a/x")->SetLocation(At(1), true);
    }
    EXPECT_EQ(both->TakeLog(), "[l/b~/a/x]");
    EXPECT_EQ(all->TakeLog(), "[l/b~/a/x]");
    EXPECT_EQ(service->TakeLog(), "~/a/x");
    m_root->RemoveChild(Symbol("a"));
    EXPECT_EQ(both->TakeLog(), "[-/a/x]");
    EXPECT_EQ(service->TakeLog(), "-/a/x") << "still known by the service tree while it goes";
    EXPECT_EQ(other->TakeLog(), "[-/a/y]");
    {
        const luk::ShapeScene::UpdateBatch empty(*m_scene);
    }
    EXPECT_EQ(all->TakeLog(), "[-/a/x-/a/y-/a][]");
    EXPECT_EQ(both->log + other->log, "");
}

TEST_P(ShapeSceneRoutingTest, AnInterestMayChangeAtAnyTime)
{
    const auto watcher = du::MakeCounted<Watcher>();
    const auto interest = du::MakeCounted<luk::InstanceInterest>();
    m_scene->RegisterObserver(watcher, interest, false);
    m_watcher->then = [&](const std::string& noted) {
        if (noted == "~/a") {
            EXPECT_TRUE(interest->Add(Symbol("/a")));
            EXPECT_TRUE(interest->Add(Symbol("/a/x")));
            EXPECT_FALSE(interest->Add(Symbol("/a/x")) || interest->Add(Symbol()));
        }
    };
    PartOf("/a")->SetLocation(At(1), true);
    EXPECT_EQ(watcher->TakeLog(), "~/a/x") << "from the next one on";
    m_watcher->then = nullptr;
    EXPECT_TRUE(interest->Remove(Symbol("/a/x")));
    PartOf("/a")->SetLocation(At(2), true);
    EXPECT_EQ(watcher->TakeLog(), "~/a");
    interest->Clear();
    EXPECT_FALSE(interest->Remove(Symbol("/a")));
    PartOf("/a")->SetLocation(At(3), true);
    EXPECT_EQ(watcher->TakeLog(), "");
    m_scene = nullptr;
    interest->Add(Symbol("/a"));
    EXPECT_EQ(watcher->TakeLog(), "x");
}

TEST_P(ShapeSceneRoutingTest, BatchesOpenedAtTheEndOfABatchEndWell)
{
    const auto first = Watch({"/b", "/a/x"}, true);
    const auto second = Watch({"/b", "/a/x", "/a/y"}, true);
    const auto late = Watch({"/a/x"}, true);
    std::unique_ptr<luk::ShapeScene::UpdateBatch> open;
    first->then = [&](const std::string& noted) {
        if (noted == "]") {
            PartOf("/a/x")->SetSelected(true);
        }
    };
    second->then = [&](const std::string& noted) {
        if (noted == "]" && !open) {
            open = std::make_unique<luk::ShapeScene::UpdateBatch>(*m_scene);
            PartOf("/a/y")->SetSelected(true);
        }
    };
    PartOf("/b")->SetSelected(true);
    EXPECT_EQ(first->log, "[l/b][l/a/x");
    EXPECT_EQ(second->log, "[l/bl/a/x][l/a/y");
    EXPECT_EQ(late->log, "[l/a/x");
    open.reset();
    EXPECT_EQ(first->log, "[l/b][l/a/x]");
    EXPECT_EQ(second->log, "[l/bl/a/x][l/a/y]");
    EXPECT_EQ(late->log, "[l/a/x]");
}

TEST_P(ShapeSceneTest, ObserversComeAndGoWhileTheyAreTold)
{
    const auto neighbour = Watch({"/b"}, true);
    const auto newcomer = du::MakeCounted<Watcher>();
    m_watcher->then = [&](const std::string& noted) {
        if (noted == "l/b") {
            m_scene->UnregisterObserver(neighbour.get());
            m_scene->RegisterObserver(newcomer, nullptr, true);
            PartOf("/b")->SetVisibility(false);
        }
    };
    PartOf("/b")->SetSelected(true);
    EXPECT_EQ(neighbour->TakeLog(), "x");
    EXPECT_EQ(newcomer->TakeLog(), "[h/b]") << "what came after it, and not what went before";
    EXPECT_EQ(neighbour->GetReferenceCount(), 1u);
    EXPECT_FALSE(m_scene->UnregisterObserver(neighbour.get()));
}

TEST_P(ShapeSceneTest, EndsWithEverythingLetGo)
{
    const Part part = PartOf("/b");
    const auto watcher = Watch({"/b"}, true);
    watcher->then = [&](const std::string& noted) {
        if (noted == "l/b") {
            luk::World::GetWorld()->CloseScenes();
            EXPECT_FALSE(m_scene->RegisterObserver(watcher, nullptr, true));
        }
        EXPECT_TRUE(noted != "x" || !part->GetShapeScene());
    };
    part->SetSelected(true);
    EXPECT_EQ(watcher->TakeLog(), "[l/bx");
    EXPECT_EQ(watcher->GetReferenceCount(), 1u);
    EXPECT_EQ(PartOf("/b"), nullptr);
    EXPECT_EQ(m_scene->GetShapeInstanceCount(), 0u);
    Use(m_root, m_bolt, "c");
    m_root->RemoveChild(Symbol("b"));

    m_scene = du::MakeCounted<luk::ShapeScene>(m_tree);
    const Part last = PartOf("/c");
    m_scene->RegisterObserver(watcher, nullptr, false);
    watcher->then = [&](const std::string&) { m_scene = nullptr; };
    last->SetSelected(true);
    EXPECT_EQ(watcher->log, "l/cx") << "the scene was dropped while it told";
    EXPECT_EQ(last->GetShapeScene(), nullptr);
    EXPECT_FALSE(du::MakeCounted<luk::ShapeScene>(nullptr)->GetShapeInstance(last->GetInstance()));
}

} // namespace

} // namespace test
