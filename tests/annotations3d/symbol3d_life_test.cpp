#include "annotations3d/Symbol3DTest.h"
#include "support/Native.h"

#include <lug/Appearance.h>
#include <luk/illustration/RunningMode.h>
#include <luk/Kernel.h>
#include <luk/Observer.h>
#include <lukapp/LukApp.h>

namespace test
{

namespace
{

class SymbolLife : public Symbol3DTest
{
protected:
    static std::string IdOf(const Symbol& symbol) { return symbol->GetInstanceIdPath().GetText(); }
};
INSTANTIATE_TEST_SUITE_P(LocksAndRouting, SymbolLife, testing::Combine(testing::Bool(), testing::Bool()));

TEST_P(SymbolLife, AnIdMakesFindsOrRefusesANodeAndLeavesTheProductAlone)
{
    enum Kind { MADE, TAKEN_OVER, FOREIGN };
    const std::tuple<const char*, const char*, Kind> cases[] = {
        {"", "symbol:2", MADE},     {"symbol:3", "symbol:3", MADE},
        {"own", "own", MADE},       {"/a/x", "symbol:2", MADE},
        {"/", "symbol:2", MADE},    {"a//x", "symbol:2", MADE},
        {"a/x/", "symbol:2", MADE}, {"a/none", "symbol:2", MADE},
        {"../b", "symbol:2", MADE}, {"symbol:", "symbol:", MADE},
        {"b", "b", FOREIGN},        {"a/x", "a/x", FOREIGN},
        {"a", "a", FOREIGN},        {"symbol:1", "symbol:1", TAKEN_OVER},
    };
    for (const auto& [id, becomes, kind] : cases) {
        SCOPED_TRACE(id);
        MakeProduct();
        Use(m_root, m_structure->CreateComponentNode(Text("from an earlier life")), "symbol:1");
        const std::size_t before = m_root->GetChildCount();
        const auto item = AddItem("A", "s.shp");
        SymbolInfo info = Record({1.0, 2.0, 3.0});
        info.id = Text(id);
        info.hasAppearanceOverride = true;
        info.templateIndex = 0;
        const std::string product = Product();
        const Symbol symbol = Attached(info);
        EXPECT_EQ(IdOf(symbol), becomes);
        EXPECT_EQ(m_root->GetChildCount(), before + (kind == MADE ? 1 : 0));
        EXPECT_EQ(symbol->GetShapeInstance()->GetInstance(), Find("/" + IdOf(symbol)));
        EXPECT_TRUE(symbol->AttachScene(m_scene)) << "again, without another node";
        Pump();
        // Whatever is done with a symbol that sits on a part of the product, the part stays as it is.
        symbol->AddSelectedPart(PartAt("/a/y"), m_scene, Find("/a/y"), dg::DPoint3D::BAD);
        symbol->UpdateAnnotationLocation(At(77));
        dg::DPoint3D origin;
        symbol->SetCsysPos(origin, true);
        symbol->Hide(true, nullptr, 0);
        symbol->Show(true, nullptr);
        symbol->SetSelected(true, nullptr);
        PartAt("/a/y")->SetVisibility(false);
        PartAt("/a/y")->SetVisibility(true);
        Change(*item, "t.shp");
        symbol->SetInstanceIdPath(Text("b")); // another id does not make the part its own either
        Pump();
        EXPECT_EQ(Where(symbol), dg::DPoint3D::ORIGIN);
        symbol->DetachScene();
        EXPECT_EQ(m_root->GetChildCount(), before - (kind == TAKEN_OVER ? 1 : 0));
        EXPECT_EQ(Product(), product);
        Collection().Clear();
    }
}

TEST_P(SymbolLife, ANewSymbolStandsWhereItWasPicked)
{
    const dg::Location part(kQuarterTurn, {1.0, 0.0, 0.0});
    const dg::Location picked(dg::FMat33::Scaling(2.0, 3.0, 4.0), {1.0, 5.0, 0.0});
    const dg::Location flat(dg::FMat33::Scaling(0.0, 0.0, 0.0), {0.0, 0.0, 0.0});
    const std::tuple<dg::Location, dg::Location, dg::Location> cases[] = {
        {dg::Location::IDENTITY, picked, At(1, 5)},
        {part, picked, {dg::FMat33(0, 1, 0, -1, 0, 0, 0, 0, 1), {5.0, 0.0, 0.0}}},
        {flat, picked, At(1, 5)},
        {dg::Location::IDENTITY, flat, flat},
        {dg::Location::IDENTITY, dg::Location::IDENTITY, dg::Location::IDENTITY},
    };
    for (const auto& [partCsys, selectedCsys, expected] : cases) {
        const auto symbol = du::MakeCounted<SymbolAnnotation>();
        symbol->SetName(Text("s.shp"), Text("N"));
        symbol->SetPartCsys(partCsys);
        symbol->SetSelectedCsys(selectedCsys);
        Attached(Symbol(symbol));
        EXPECT_EQ(symbol->GetShapeInstance()->GetLocation(), expected);
        EXPECT_EQ(Find("/" + IdOf(symbol))->GetComponentInstance()->GetLocation(), expected);
        dg::DPoint3D position(1.0, 6.0, 0.0);
        symbol->SetCsysPos(position, true);
        EXPECT_EQ(Where(symbol) == position, !(partCsys == part));
        const dg::Location init = symbol->GetInitLocation();
        symbol->UpdateAnnotationLocation(At(9));
        symbol->SetSymbolLocation();
        EXPECT_EQ(symbol->GetShapeInstance()->GetLocation(), init);
    }
    // Turned as the view is, or as it differs from the preview.
    dg::Camera3D camera;
    camera.SetLocation({kQuarterTurn, {0.0, 0.0, 9.0}});
    const auto view = du::MakeCounted<luk::ShapeView>(camera);
    const auto symbol = du::MakeCounted<SymbolAnnotation>();
    symbol->SetUseCurrentOrientation(true);
    for (const bool hasPreview : {false, true}) {
        dg::Location placed;
        dg::Location identity = dg::Location::IDENTITY;
        dg::Location selected = picked;
        symbol->CalculateSymbolLocation(placed, identity, selected, nullptr);
        EXPECT_EQ(placed, picked) << "no view, nothing to turn by";
        symbol->CalculateSymbolLocation(placed, identity, selected, view);
        EXPECT_EQ(placed, dg::Location(hasPreview ? dg::FMat33::IDENTITY : kQuarterTurn, {1.0, 5.0, 0.0}));
        symbol->SetCameraPreviewLocation({kQuarterTurn, dg::DPoint3D::ORIGIN});
    }
}

TEST_P(SymbolLife, DetachingAndAttachingShowsItWhereItWas)
{
    const Symbol symbol = AttachedTo({"/b"}, {12.0, 1.0, 0.0});
    const std::string id = IdOf(symbol);
    const std::string product = Product();
    for (int undone = 0; undone < 3; ++undone) {
        // Moved past everybody, as a tool does while it drags.
        symbol->GetShapeInstance()->SetLocation({kQuarterTurn, {3.0 + undone, 0.0, 0.0}}, false);
        const Part before = symbol->GetShapeInstance();
        EXPECT_TRUE(m_scene->GetAnnoSet()->RemoveAnnotationFromSet(symbol));
        EXPECT_FALSE(symbol->HasContent() || before->GetShapeScene() || Find("/" + id));
        if (undone == 2) {
            Move("/b", At(100));
        }
        Attached(symbol);
        Pump();
        EXPECT_EQ(IdOf(symbol), id);
        EXPECT_EQ(Where(symbol), dg::DPoint3D(undone == 2 ? 105.0 : 3.0 + undone, 0.0, 0.0));
        EXPECT_EQ(symbol->GetShapeInstance()->GetLocation().GetMat(), kQuarterTurn);
    }
    Move("/b", At(0));
    // The scene goes, with a load under way, and another shows the same product.
    const Symbol viewed = Made(Record({}));
    luk::illustration::SetRunningIllustrate(false);
    Attached(viewed);
    m_scene->Close();
    EXPECT_FALSE(symbol->HasContent());
    m_scene = du::MakeCounted<luk::illustration::Illustration3dScene>(m_tree, m_services);
    Attached(symbol);
    Pump();
    EXPECT_EQ(Where(symbol), dg::DPoint3D(5.0, 0.0, 0.0));
    Attached(viewed);
    Pump();
    EXPECT_TRUE(viewed->IsSymbolLoaded()) << "a viewer finds the shape with the document";
}

TEST_P(SymbolLife, ACopySharesTheShapeAndNothingThatEnds)
{
    AddItem("A", "s.shp");
    SymbolInfo info = Record({1.0, 2.0, 3.0}, {{Text("/b"), {}, {}, {1.0, 2.0, 3.0}}});
    info.templateIndex = 0;
    const Symbol symbol = Attached(info);
    Pump();
    auto copy = du::DynamicCast<SymbolAnnotation>(symbol->Clone());
    EXPECT_EQ(copy->GetShapeInstance(), symbol->GetShapeInstance());
    EXPECT_EQ(Collection().GetObserverCount(), 1u);
    copy = nullptr;
    EXPECT_TRUE(Find("/" + IdOf(symbol)));

    copy = Attached(du::DynamicCast<SymbolAnnotation>(symbol->Clone()));
    EXPECT_EQ(Collection().GetObserverCount(), 2u) << "a copy in a scene follows the library for itself";
    Move("/b", At(10));
    copy->DetachScene();
    EXPECT_TRUE(Find("/" + IdOf(symbol))) << "the node belongs to the original";
    const Symbol last = Attached(du::DynamicCast<SymbolAnnotation>(symbol->Clone()));
    symbol->DetachScene();
    EXPECT_EQ(last->GetAnnoSet(), nullptr) << "its shape went with the original's node";
    Attached(last);
    Pump();
    EXPECT_TRUE(last->HasContent());
}

TEST_P(SymbolLife, TheOneWhoWaitsIsReleasedOnce)
{
    const auto nothing = [](SymbolAnnotation&) {};
    const std::tuple<const char*, std::function<void(SymbolAnnotation&)>, bool> cases[] = {
        {"s.shp", nothing, true},
        {"bad.shp", nothing, false},
        {"missing.shp", nothing, false},
        {"../part.shp", nothing, false},
        {"s.shp", [](SymbolAnnotation& symbol) { symbol.DetachScene(); }, false},
        {"s.shp", [](SymbolAnnotation& symbol) { symbol.SymbolLoadFail(); }, false},
        {"bad.shp", [](SymbolAnnotation& symbol) { symbol.SymbolLoadedOK(); }, false},
        {"s.shp", [this](SymbolAnnotation& symbol) { symbol.DetachScene(), symbol.AttachScene(m_scene); }, true},
        {"s.shp", [this](SymbolAnnotation&) { m_scene->Close(); }, false},
        {"s.shp", [this](SymbolAnnotation& symbol) { m_root->RemoveChild(symbol.GetInstanceIdPath()); }, false},
    };
    for (const auto& [file, whileLoading, isLoaded] : cases) {
        SCOPED_TRACE(file);
        MakeProduct();
        SymbolInfo info = Record({1.0, 0.0, 0.0});
        info.fileName = Text(file);
        const Symbol symbol = Made(info);
        const auto event = du::MakeCounted<Waiting>();
        symbol->SetEvent(event);
        Attached(symbol);
        EXPECT_EQ(event->completions, 0) << "never from inside the call";
        whileLoading(*symbol);
        Pump();
        EXPECT_EQ(event->completions, 1);
        EXPECT_EQ(symbol->IsSymbolLoaded(), isLoaded);
        const auto second = du::MakeCounted<Waiting>();
        symbol->SetEvent(second);
        if (symbol->AttachScene(m_scene)) {
            Pump();
            EXPECT_EQ(second->completions, 1) << "also by a symbol that is there already";
        }
    }
    const std::function<void(SymbolAnnotation&)> answers[] = {
        [](SymbolAnnotation& symbol) { symbol.SetEvent(du::MakeCounted<Waiting>()), symbol.SetSymbolInfo({}); },
        [&](SymbolAnnotation& symbol) { symbol.AttachScene(m_scene), symbol.DetachScene(); },
        [&](SymbolAnnotation&) { m_scene->Close(); },
    };
    for (const auto& answer : answers) {
        MakeProduct();
        const auto event = du::MakeCounted<Waiting>();
        const Symbol symbol = Made(Record({}));
        symbol->SetEvent(event);
        event->deed = [&] { answer(*symbol); };
        Attached(symbol);
        Pump();
        EXPECT_EQ(event->completions, 1);
    }
    // An assembly has no shape to be loaded, and a symbol without a file nothing at all.
    for (const char* const file : {"s.shp", ""}) {
        SymbolInfo info = Record({});
        info.id = Text("a");
        info.fileName = Text(file);
        const auto event = du::MakeCounted<Waiting>();
        const Symbol symbol = Made(info);
        symbol->SetEvent(event);
        symbol->AttachScene(m_scene);
        EXPECT_EQ(event->completions, 0);
        Pump();
        EXPECT_EQ(event->completions, 1);
        symbol->DetachScene();
        EXPECT_EQ(event->completions, 1);
    }
    // The session ends with a load under way and an event that holds its own symbol.
    const auto event = du::MakeCounted<Waiting>();
    MakeProduct();
    const Symbol symbol = Made(Record({}));
    symbol->SetEvent(event);
    event->deed = [symbol] {};
    symbol->AttachScene(m_scene);
}

TEST_P(SymbolLife, WhateverHappensToAPartBeforeOrAfterItHasLoaded)
{
    // x of the symbol, which is saved at 12 on a part at 10, and whether it is shown
    const std::tuple<const char*, Deed, double, bool> cases[] = {
        {"nothing", [] {}, 12.0, true},
        {"moved", [&] { Move("/b", At(20)); }, 22.0, true},
        {"moved in the structure", [&] { m_root->FindChild(Text("b"))->SetLocation(At(30)); }, 32.0, true},
        {"hidden", [&] { PartAt("/b")->SetVisibility(false); }, 12.0, false},
        {"rebuilt", [&] { m_scene->RecreateShapeInstance(PartAt("/b")); }, 12.0, true},
        {"replaced", [&] { m_scene->ReplaceShapeInstanceShape(PartAt("/b"), nullptr); }, 12.0, true},
        {"unloaded and back",
         [&] {
             m_scene->UnloadShapeInstance(Find("/b"));
             m_root->FindChild(Text("b"))->SetLocation(At(20));
             m_scene->LoadShapeInstance(Find("/b"));
         },
         22.0, true},
        {"replaced by a new one elsewhere",
         [&] {
             const auto node = m_root->FindChild(Text("b"))->GetNode();
             m_root->RemoveChild(Text("b"));
             Use(m_root, node, "b");
             m_root->FindChild(Text("b"))->SetLocation(At(40));
         },
         42.0, true},
        {"its shape loads badly", [&] { m_folder.Write("temp/part.shp", "no shape"); }, 12.0, true},
    };
    for (const bool isLoadedBefore : {false, true}) {
        for (const auto& [what, deed, x, isShown] : cases) {
            SCOPED_TRACE(std::string(what) + (isLoadedBefore ? ", loaded" : ", loading"));
            m_folder.Write("temp/part.shp", "S");
            MakeProduct();
            m_root->FindChild(Text("b"))->SetLocation(At(10));
            const ConnectedPartInfo saved{Text("/b"), {}, {10.0, 0.0, 0.0}, {2.0, 0.0, 0.0}};
            const Symbol symbol = Attached(Record({12.0, 0.0, 0.0}, {saved}));
            EXPECT_FALSE(symbol->GetShapeInstance()->GetLocation().HasPosition()) << "its part says where it is";
            EXPECT_EQ(symbol->GetShapeInstance()->GetLocation().GetMat(), dg::FMat33::IDENTITY);
            if (isLoadedBefore) {
                Pump();
            }
            deed();
            Pump();
            EXPECT_EQ(Where(symbol), dg::DPoint3D(x, 0.0, 0.0));
            EXPECT_EQ(symbol->GetShapeInstance()->IsVisible(), isShown);
        }
        // A part that goes for good leaves its symbol where it is, or nowhere until it is attached again.
        MakeProduct();
        const Symbol symbol = Attached(Record({12.0, 0.0, 0.0}, {{Text("/b"), {}, {}, {2.0, 0.0, 0.0}}}));
        isLoadedBefore ? Pump() : void();
        m_root->RemoveChild(Text("b"));
        Pump();
        EXPECT_EQ(symbol->GetShapeInstance()->GetLocation().HasPosition(), isLoadedBefore);
        symbol->DetachScene();
        Attached(symbol);
        EXPECT_EQ(Where(symbol).x, isLoadedBefore ? 2.0 : 12.0);
        EXPECT_TRUE(PartsOf(symbol).empty());
    }
}

TEST_P(SymbolLife, FollowsItsLibraryEntryWhereItStands)
{
    const auto item = AddItem("A", "s.shp");
    SymbolInfo info = Record({12.0, 0.0, 0.0});
    info.templateIndex = 0;
    const Symbol symbol = Attached(info);
    Pump();
    EXPECT_EQ(symbol->GetTitle(), "title of A") << "checked once the shape is there";
    EXPECT_EQ(item->GetConsumerCount(), 1u);
    symbol->AddSelectedPart(PartAt("/b"), m_scene, Find("/b"), dg::DPoint3D::BAD);
    symbol->UpdateAnnotationLocation({kQuarterTurn, {7.0, 0.0, 0.0}});
    symbol->GetShapeInstance()->OverrideTransparency(0.5F);
    symbol->GetShapeInstance()->SetColor({1.0F, 0.0F, 0.0F, 1.0F});
    const Part shape = symbol->GetShapeInstance();

    const std::pair<Deed, const char*> changes[] = {
        {[&] { item->SetName("n"); }, "s.shp"},
        {[&] { item->SetTitle("t"); }, "s.shp"},
        {[&] { item->SetShowTooltipTitle(true); }, "s.shp"},
        {[&] { item->SetDescription("d"); }, "s.shp"},
        {[&] { item->SetShowTooltipDescription(true); }, "s.shp"},
        {[&] { item->AddSequencerTag(du::MakeCounted<luk::illustration::SequencerTag>()); }, "s.shp"},
        {[] {}, "t.shp"},
    };
    for (const auto& [change, file] : changes) {
        change();
        for (const bool isNew : {true, false}) {
            const auto before = m_scene->GetAnnoSet()->GetChangeCount();
            m_scene->GetView(0)->SetDirty(false);
            Change(*item, file);
            EXPECT_EQ(m_scene->GetAnnoSet()->GetChangeCount() - before, isNew ? 1u : 0u);
            EXPECT_EQ(m_scene->GetView(0)->IsDirty(), isNew);
        }
    }
    Pump();
    EXPECT_EQ(symbol->GetTitle() + symbol->GetDescription() + symbol->GetName().GetText(), "tdn");
    EXPECT_EQ(symbol->GetFileName().GetText(), "t.shp");
    EXPECT_EQ(symbol->GetShapeInstance(), shape);
    EXPECT_TRUE(shape->GetShape()->IsLoaded() && shape->GetShape()->GetPath().ends_with(test::Native("Symbols/t.shp")));
    EXPECT_EQ(shape->GetLocation(), dg::Location(kQuarterTurn, {7.0, 0.0, 0.0}));
    EXPECT_EQ(shape->GetTransparency(), 0.5F);
    EXPECT_EQ(shape->GetAppearanceOverride()->GetMaterial()->GetDiffuse().red, 1.0F);
    Move("/b", At(1));
    EXPECT_EQ(Where(symbol), dg::DPoint3D(8.0, 0.0, 0.0)) << "still follows its part";
    Change(*item, "missing.shp");
    Change(*item, "");
    EXPECT_EQ(symbol->GetFileName().GetText(), "t.shp") << "an entry without a file takes no shape away";

    symbol->DetachScene();
    EXPECT_EQ(Collection().GetObserverCount() + item->GetConsumerCount(), 0u);
    Change(*item, "s.shp");
    EXPECT_EQ(symbol->GetFileName().GetText(), "t.shp") << "a detached symbol follows nothing";
    Attached(symbol);
    Pump();
    EXPECT_EQ(symbol->GetFileName().GetText(), "s.shp");
    EXPECT_EQ(Where(symbol), dg::DPoint3D(8.0, 0.0, 0.0));
    Collection().RemoveAssociativeObject(item);
    symbol->DetachScene();
    EXPECT_EQ(item->GetConsumerCount(), 0u) << "also of an entry that is no longer in the collection";

    const auto another = AddItem("B", "s.shp");
    info.templateIndex = *Collection().AssociativeObjectIdToIndices("B").begin();
    Symbol loose = Made(info);
    EXPECT_EQ(another->GetConsumerCount() + Collection().GetObserverCount(), 2u);
    loose = nullptr;
    EXPECT_EQ(another->GetConsumerCount() + Collection().GetObserverCount(), 0u) << "bound and never attached";
}

/// Counts how often an annotation is shown or hidden.
class VisibilityCount : public luk::Observer
{
public:
    void OnObservableEvent(luk::Observable&, int kind) override
    {
        count += kind == luk::Observable::EVENT_VISIBILITY_CHANGED ? 1 : 0;
    }
    int count = 0;
};

TEST_P(SymbolLife, LooksAtItsOwnShapeOnceForEachBatch)
{
    const Symbol symbol = AttachedTo({}, {});
    const auto counter = du::MakeCounted<VisibilityCount>();
    symbol->RegisterObserver(counter);
    const Part own = symbol->GetShapeInstance();
    {
        const luk::ShapeScene::UpdateBatch batch(*m_scene);
        own->SetVisibility(false);
        own->OverrideTransparency(0.5F);
        own->SetVisibility(true);
        own->SetColor({});
    }
    Pump();
    EXPECT_EQ(counter->count, 0) << "shown before and after";
    {
        const luk::ShapeScene::UpdateBatch batch(*m_scene);
        own->SetVisibility(false);
        own->SetSelected(true);
    }
    Pump();
    EXPECT_EQ(counter->count, 1);
    EXPECT_FALSE(symbol->luk::Annotation::IsVisible());
    symbol->UnregisterObserver(counter.get());

    const std::string id = IdOf(symbol);
    EXPECT_TRUE(m_root->RemoveChild(Text(id)));
    EXPECT_EQ(m_scene->GetAnnoSet()->GetCount(), 0u) << "deleted with its node";
    EXPECT_EQ(symbol->GetScene(), nullptr);
    // The set alone holds this one, which ends in the middle of being told.
    const std::string last = IdOf(Attached(Record({})));
    EXPECT_TRUE(m_root->RemoveChild(Text(last)));
    EXPECT_EQ(m_scene->GetAnnoSet()->GetCount() + m_scene->GetRegisteredAnnotations().size(), 0u);
}

TEST_P(SymbolLife, EveryPartOfTheHostMayBeMissing)
{
    const auto item = AddItem("A", "s.shp");
    const auto world = luk::World::GetWorld();
    const auto container = world->GetContainer();
    const auto kernel = luk::Kernel::GetKernel();
    const auto loader = luloader::Loader::GetLoader();
    const auto app = lukapp::LukApp::Get();
    const du::SmartPtr<luk::illustration::SymbolTemplateCollection> collection(&Collection());
    const std::function<void(bool)> absences[] = {
        [&](bool there) { luk::World::SetWorld(there ? world : nullptr); },
        [&](bool there) { world->SetContainer(there ? container : nullptr); },
        [&](bool there) { world->SetContainer(there ? container : du::MakeCounted<luk::MultiRootContainer>()); },
        [&](bool there) { world->SetTree(there ? m_tree : nullptr); },
        [&](bool there) { m_structure->SetRoot(there ? m_root : nullptr); },
        [&](bool there) { luk::Kernel::SetKernel(there ? kernel : nullptr); },
        [&](bool there) { luloader::Loader::SetLoader(there ? loader : nullptr); },
        [&](bool there) { lukapp::LukApp::Set(there ? app : nullptr); },
        [&](bool there) { luk::illustration::SymbolTemplateCollection::SetCollection(there ? collection : nullptr); },
    };
    Move("/b", At(0));
    const std::string product = Product();
    for (const auto& set : absences) {
        SymbolInfo info = Record({1.0, 0.0, 0.0}, {{Text("/b"), {}, {}, {1.0, 0.0, 0.0}}});
        info.templateIndex = 0;
        const Symbol symbol = Attached(info);
        Pump();
        set(false);
        symbol->SetUseCurrentOrientation(true);
        symbol->AttachScene(m_scene);
        const Element saved = Saved(symbol);
        const auto copy = du::DynamicCast<SymbolAnnotation>(symbol->Clone());
        copy->InitializeFromSerializedContent(&saved);
        copy->AttachScene(m_scene);
        copy->DetachScene();
        Move("/b", At(2));
        Move("/b", At(0));
        symbol->Hide(true, nullptr, 0);
        symbol->Show(true, nullptr);
        for (const char* const file : {"t.shp", "s.shp"}) {
            item->SetOlUrl(std::string("SymbolsLibrary/Shape/") + file);
            collection->NotifyChanged(item);
        }
        symbol->DetachScene();
        const Symbol fresh = Made(Record({}));
        fresh->AttachScene(m_scene);
        fresh->AttachScene(nullptr);
        set(true);
        fresh->DetachScene();
        symbol->AttachScene(m_scene);
        Pump();
        EXPECT_EQ(Where(symbol), dg::DPoint3D(1.0, 0.0, 0.0));
        m_scene->GetAnnoSet()->RemoveAnnotationFromSet(symbol);
        EXPECT_EQ(Collection().GetObserverCount(), 0u);
        EXPECT_EQ(Product(), product);
    }
}

} // namespace

} // namespace test
