#include "annotations2d/Symbol2D.h"
#include "catalog/PartslibraryImageItem.h"
#include "support/Native.h"
#include "support/SessionTest.h"

#include <dg/DMat33.h>
#include <dg/DMat44.h>
#include <dg/Pipeline.h>
#include <dp/LUTracer.h>
#include <luk/Anchor.h>
#include <luk/AnnoSet.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/RunningMode.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Document2D.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/illustration2d/Stamp2D.h>
#include <luk/InstanceCheck.h>
#include <luk/Kernel.h>
#include <luk/Operation.h>
#include <luk/SerializedContentElement.h>
#include <luk/ShapeView.h>
#include <luk/World.h>
#include <lukapp/LukApp.h>
#include <luloader/Loader.h>
#include <lumk/Stamp.h>

#include <limits>

namespace
{

using Element = luk::SerializedContentElement;
using luannotations::Symbol2D;
using luannotations::Symbol2DInfo;
using luk::illustration::SymbolTemplateCollection;
using luk::illustration2d::Scene2D;
using luk::illustration2d::Stamp2D;
using lusymbols::PartslibraryImageItem;
using Properties = std::vector<std::pair<const char*, Element::Value>>;
using Size = std::pair<float, float>;
using Symbol = du::SmartPtr<Symbol2D>;
using Text = du::Symbol;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// Reads "84" as a picture of 8 by 4 pixels.
class SizeDecoder : public luloader::ImageDecoder
{
public:
    bool Recognises(std::string_view bytes) const override { return bytes.size() == 2; }
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string&) const override
    {
        const luk::ImageData::Frame frame{bytes[0] - '0', bytes[1] - '0',
                                          std::make_shared<luk::ImageData::Pixels>(4 * 9 * 9)};
        return du::MakeCounted<luk::ImageData>(std::vector{frame});
    }
};

/// Counts its completions and does something then.
struct Waiting : luk::AsyncEvent {
    void OnCompleted(int) override { ++completions, deed(); }
    std::function<void()> deed = [] {};
    int completions = 0;
};

/// A session whose pictures "WH.pic" are W by H pixels; run with the locks of annotations and without.
class Symbol2DTest : public test::SessionTest, public testing::WithParamInterface<bool>
{
protected:
    Symbol2DTest()
    {
        luk::ObjectWithRWLock::SetLocksEnabled(GetParam());
        m_config.temporaryDirectory = m_folder.Path("temp");
        m_config.loader.decoders = {std::make_shared<SizeDecoder>()};
        for (const char* const size : {"84", "48", "55"}) {
            m_folder.Write(std::string("SymbolsLibrary/2D/") + size + ".pic", size);
            m_folder.Write(std::string("temp/Symbols/") + size + ".pic", size);
        }
        RestartSession();
    }
    ~Symbol2DTest() override { luk::ObjectWithRWLock::SetLocksEnabled(true); }

    static luk::illustration::SymbolTemplateCollection& Collection()
    {
        return *luk::illustration::SymbolTemplateCollection::GetCollection();
    }
    static void Pump() { EXPECT_TRUE(luloader::Loader::GetLoader()->WaitForLoads()); }

    static du::SmartPtr<PartslibraryImageItem> AddItem(const std::string& id, const std::string& file)
    {
        const auto item = du::MakeCounted<PartslibraryImageItem>();
        item->SetId(id);
        item->SetTitle("title of " + id);
        item->SetImageUrl("SymbolsLibrary\\2D\\" + file);
        Collection().AddAssociativeObject(item);
        return item;
    }
    static void Change(PartslibraryImageItem& item, const std::string& file)
    {
        item.SetImageUrl("SymbolsLibrary/2D/" + file);
        Collection().NotifyChanged(du::SmartPtr<PartslibraryImageItem>(&item));
    }

    /// A scene whose view shows 10 pixels a unit.
    static du::SmartPtr<luk::Scene> MakeScene()
    {
        dg::Camera3D camera;
        camera.SetViewport(1000, 800);
        camera.SetOrthographic(100.0);
        auto scene = du::MakeCounted<luk::Scene>();
        scene->AddView(du::MakeCounted<luk::ShapeView>(camera));
        return scene;
    }
    static Symbol2DInfo Record(const std::string& file, std::uint64_t templateIndex = Symbol2DInfo::kNoTemplate)
    {
        Symbol2DInfo record;
        record.imageFileName = du::Symbol(file);
        record.width = 20.0F;
        record.height = 10.0F;
        record.templateIndex = templateIndex;
        return record;
    }
    static Symbol Attach(const Symbol2DInfo& record, const du::SmartPtr<luk::Scene>& scene,
                         const du::SmartPtr<Waiting>& event = nullptr)
    {
        auto symbol = du::MakeCounted<Symbol2D>(record);
        symbol->SetEvent(event);
        EXPECT_TRUE(symbol->AttachScene(scene));
        return symbol;
    }
    static du::SmartPtr<lumk::Stamp> StampIn(const du::SmartPtr<luk::Scene>& scene)
    {
        const auto markups = scene->GetMarkups();
        return markups.empty() ? nullptr : du::DynamicCast<lumk::Stamp>(markups.front());
    }
    static Size SizeOf(const Symbol& symbol) { return {symbol->GetMarkupSize(0).x, symbol->GetMarkupSize(0).y}; }

    static Element Make(const char* name, const Properties& properties)
    {
        Element element{du::Symbol(name)};
        for (const auto& [key, value] : properties) {
            element.AddProperty({du::Symbol(key), value});
        }
        return element;
    }
    static Symbol Opened(const Element& element)
    {
        auto symbol = du::MakeCounted<Symbol2D>();
        EXPECT_TRUE(symbol->InitializeFromSerializedContent(&element));
        return symbol;
    }
    static Element Saved(const Symbol& symbol, const dg::Pipeline* flattenedBy = nullptr)
    {
        Element parent;
        flattenedBy ? void(symbol->Flatten(parent, {}, luk::InstanceCheck(), *flattenedBy)) : symbol->Visit(parent);
        return parent.GetChild(0);
    }

    std::string m_traces;

private:
    dp::TraceSink m_sink = dp::LUTracer::SetSink([this](const dp::TraceMessage& message) {
        m_traces += std::string(message.channel.channel) + message.channel.parent + ' ' + std::string(message.text);
    });
};
INSTANTIATE_TEST_SUITE_P(Locks, Symbol2DTest, testing::Bool());

TEST_P(Symbol2DTest, ThroughScenesAndBack)
{
    const auto event = du::MakeCounted<Waiting>();
    const auto scene = MakeScene();
    Symbol2DInfo record = Record("84.pic");
    record.rotateRight = 90;
    const Symbol symbol = Attach(record, scene, event);
    EXPECT_TRUE(symbol->AttachScene(scene));
    EXPECT_EQ(luloader::Loader::GetLoader()->GetPendingCount(), 1u) << "attaching again loads nothing";
    EXPECT_EQ(scene->GetMarkupCount(), 0u) << "nothing is shown without its picture";
    // The turn belongs to each load, so that a second life shows the same picture.
    for (int life = 0; life < 2; ++life) {
        Pump();
        EXPECT_EQ(event->completions, 1);
        const auto stamp = StampIn(scene);
        ASSERT_TRUE(stamp && stamp->IsVisible());
        EXPECT_EQ(stamp->GetTransparency(), 0.0F);
        EXPECT_EQ(stamp->GetController(), symbol.get());
        EXPECT_EQ(stamp->GetImage()->GetQuarterTurns(), 1);
        symbol->SetToOriginalSize();
        EXPECT_EQ(SizeOf(symbol), Size(2.0F, 4.0F)) << "half the turned picture";
        EXPECT_TRUE(symbol->DetachScene());
        EXPECT_EQ(scene->GetMarkupCount() + scene->GetRegisteredAnnotations().size(), 0u);
        EXPECT_EQ(stamp->GetController(), nullptr);
        EXPECT_TRUE(symbol->AttachScene(scene));
    }
    const auto failed = MakeScene();
    const Symbol bad = Attach(Record("no.pic"), failed);
    Pump();
    ASSERT_TRUE(StampIn(failed) && StampIn(failed)->IsVisible()) << "shown without its picture";
    EXPECT_EQ(StampIn(failed)->GetImage(), nullptr);
    EXPECT_TRUE(bad->IsOriginalSize()) << "the natural size stays that of the record";
}

TEST_P(Symbol2DTest, WhatHappensWhileAPictureLoadsAndWhenItIsThere)
{
    const auto other = MakeScene();
    std::vector<du::SmartPtr<Waiting>> later;
    using Deed = std::function<void(Symbol2D&, luk::Scene&)>;
    const std::pair<std::size_t, Deed> deeds[] = {
        {1,
         [&](Symbol2D& symbol, luk::Scene&) {
             later.push_back(du::MakeCounted<Waiting>());
             symbol.SetEvent(later.back());
             symbol.Initialise();
         }},
        {1, [&](Symbol2D& symbol, luk::Scene&) { symbol.SetSymbolInfo(Symbol2DInfo()); }},
        {0, [&](Symbol2D& symbol, luk::Scene&) { symbol.AttachScene(other); }},
        {0, [&](Symbol2D& symbol, luk::Scene&) { symbol.DetachScene(); }},
        {0, [&](Symbol2D&, luk::Scene& scene) { scene.Close(); }},
    };
    for (const bool isLoading : {true, false}) {
        for (const auto& [markups, deed] : deeds) {
            const auto scene = MakeScene();
            const auto event = du::MakeCounted<Waiting>();
            Symbol2D* const symbol = Attach(Record("84.pic"), scene, event).get(); // held by its scene alone
            if (isLoading) {
                deed(*symbol, *scene);
            } else {
                event->deed = [&, &act = deed] { act(*symbol, *scene); };
            }
            Pump();
            EXPECT_EQ(event->completions, 1);
            EXPECT_EQ(scene->GetMarkupCount(), markups);
        }
    }
    ASSERT_EQ(later.size(), 2u);
    EXPECT_TRUE(later[0]->completions == 1 && later[1]->completions == 1);
    EXPECT_EQ(other->GetMarkupCount(), 2u);
    // The session ends with a load under way and an event that holds its own symbol.
    const auto event = du::MakeCounted<Waiting>();
    event->deed = [symbol = Attach(Record("84.pic"), MakeScene(), event)] {};
}

TEST_P(Symbol2DTest, CloneCopyAndUndo)
{
    const auto item = AddItem("A", "84.pic");
    const auto scene = MakeScene();
    const Symbol symbol = Attach(Record("84.pic", 0), scene);
    Pump();
    EXPECT_TRUE(symbol->Clone()->CreatedFromFile());
    EXPECT_EQ(du::MakeCounted<Symbol2D>(*symbol)->GetMarkupShadow(0), symbol->GetMarkupShadow(0));
    EXPECT_EQ(item->GetConsumerCount(), 1u) << "neither outlives its end";
    EXPECT_EQ(Collection().GetObserverCount(), 1u);
    const auto stamp = StampIn(scene);
    EXPECT_EQ(stamp->GetController(), symbol.get()) << "a copy leaves the markup to its original";
    du::MakeCounted<Symbol2D>(*symbol)->Hide(false, nullptr, 0);
    EXPECT_TRUE(stamp->IsVisible());
    scene->GetView(0)->SetDirty(false);
    symbol->Hide(false, nullptr, 0);
    EXPECT_TRUE(!stamp->IsVisible() && scene->GetView(0)->IsDirty());
    symbol->Show(false, nullptr);
    EXPECT_TRUE(stamp->IsVisible());
    EXPECT_TRUE(Symbol2D().DetachScene()) << "of one that nobody counts";

    const auto shadow = du::DynamicCast<lumk::StampShadow>(symbol->GetMarkupShadow(0));
    const auto operation = du::MakeCounted<luk::Operation>();
    stamp->SetCenter({5.0, 6.0, 0.0});
    shadow->SetSize(3.0F, 4.0F);
    EXPECT_TRUE(symbol->MarkupUpdated(nullptr, shadow, operation));
    EXPECT_EQ(operation->GetStepCount(), 0u) << "not this symbol's markup";
    EXPECT_TRUE(symbol->MarkupUpdated(stamp, shadow, operation));
    EXPECT_EQ(operation->GetStepCount(), 2u);
    for (const bool isUndone : {false, true, false}) {
        EXPECT_EQ(stamp->GetCenter(), isUndone ? dg::DPoint3D() : dg::DPoint3D(5.0, 6.0, 0.0));
        EXPECT_EQ(symbol->GetMarkupLocation(0).GetPosition(), stamp->GetCenter());
        EXPECT_EQ(SizeOf(symbol), isUndone ? Size(20.0F, 10.0F) : Size(3.0F, 4.0F));
        isUndone ? operation->Redo() : operation->Undo();
    }
}

TEST_P(Symbol2DTest, OnAPage)
{
    const auto item = AddItem("A", "84.pic");
    const auto page = du::MakeCounted<Scene2D>(du::MakeCounted<luk::illustration2d::Document2D>(210.0, 297.0));
    Symbol2DInfo record = Record("84.pic", 0);
    record.center = {50.0, 60.0, 0.0};
    record.reverse = true;
    const Symbol symbol = Attach(record, page);
    symbol->CreateAnnotation2D(page);
    const auto nodes = page->GetDocument()->GetNodes();
    ASSERT_EQ(nodes.size(), 1u);
    const auto element = du::DynamicCast<Stamp2D>(nodes.front());
    EXPECT_EQ(element->GetMinorZOrder(), 700);
    EXPECT_EQ(element->GetLayer(), page->GetDocument()->GetCurrentLayer());
    EXPECT_TRUE(element->IsDerivedFromSymbol());
    EXPECT_TRUE(element->GetFlipVertically() && !element->GetFlipHorizontally());
    Pump();
    EXPECT_EQ(page->GetMarkupCount(), 0u) << "the element stands for the stamp";
    EXPECT_EQ(element->GetExtents(), dg::DBox2D({30.0, 50.0}, {70.0, 70.0}));
    symbol->ApplyExtents2D(dg::DBox2D({0.0, 0.0}, {40.0, 20.0}));
    // No view of a page gives a size: the width stays and the height follows the new picture.
    Change(*item, "48.pic");
    Pump();
    EXPECT_EQ(element->GetExtents(), dg::DBox2D({0.0, -30.0}, {40.0, 50.0}));
    EXPECT_EQ(element->GetImageFileName().GetText(), "48.pic");
    EXPECT_EQ(element->GetImage(), symbol->GetImage());
}

TEST_P(Symbol2DTest, EveryPartOfTheHostMayBeMissing)
{
    using luk::illustration::SymbolTemplateCollection;
    const auto item = AddItem("A", "84.pic");
    const auto scene = MakeScene();
    const Symbol symbol = Attach(Record("84.pic", 0), scene);
    Pump();
    const auto world = luk::World::GetWorld();
    const auto kernel = luk::Kernel::GetKernel();
    const auto loader = luloader::Loader::GetLoader();
    const auto app = lukapp::LukApp::Get();
    const du::SmartPtr<SymbolTemplateCollection> collection = SymbolTemplateCollection::GetCollection();
    const std::function<void(bool)> parts[] = {
        [&](bool there) { luk::World::SetWorld(there ? world : nullptr); },
        [&](bool there) { luk::Kernel::SetKernel(there ? kernel : nullptr); },
        [&](bool there) { luloader::Loader::SetLoader(there ? loader : nullptr); },
        [&](bool there) { lukapp::LukApp::Set(there ? app : nullptr); },
        [&](bool there) { SymbolTemplateCollection::SetCollection(there ? collection : nullptr); },
    };
    for (const auto& set : parts) {
        set(false);
        luk::SerializedContentElement content;
        symbol->Clone()->Visit(content);
        symbol->InitializeFromSerializedContent(&content.GetChild(0));
        item->SetImageUrl("SymbolsLibrary/2D/missing.pic");
        symbol->CheckForTemplateUpdate();
        symbol->DetachScene();
        symbol->AttachScene(scene);
        symbol->OnImageLoaded(symbol->GetImage(), false);
        set(true);
        Pump();
        EXPECT_EQ(SizeOf(symbol), Size(20.0F, 10.0F));
    }
}

TEST_P(Symbol2DTest, BindingByIndex)
{
    AddItem("A", "84.pic");
    const auto second = AddItem("B", "48.pic");
    auto symbol = du::MakeCounted<Symbol2D>(Record("48.pic", 1));
    EXPECT_EQ(symbol->GetSymbolTemplateById(), second);
    symbol->SetSymbolInfo(Record("48.pic"));
    EXPECT_EQ(symbol->GetSymbolTemplateById(), second) << "a record that names no template leaves the symbol bound";
    Symbol2DInfo named = Record("48.pic");
    named.templateId = "A";
    symbol->SetSymbolInfo(named);
    EXPECT_EQ(symbol->GetSymbolTemplateById()->GetId(), "A") << "one with an id alone is taken as it is";
    symbol->AssignTemplate(0);
    EXPECT_EQ(symbol->GetTemplateHolder().GetRelatedId(), "A");
    EXPECT_EQ(second->GetConsumerCount(), 0u);
    EXPECT_EQ(Collection().GetObserverCount(), 1u);
    symbol->AssignTemplate(std::uint64_t{1} << 63);
    EXPECT_FALSE(symbol->GetTemplateHolder().HasRelation());
    EXPECT_EQ(Collection().GetObserverCount(), 0u);
    symbol->AssignTemplate(1);
    Collection().RemoveAssociativeObject(second);
    symbol = nullptr;
    EXPECT_EQ(second->GetConsumerCount(), 0u) << "also of an entry that is no longer in the collection";
}

TEST_P(Symbol2DTest, TextsFollowWithoutALoad)
{
    const auto item = AddItem("A", "84.pic");
    const auto scene = MakeScene();
    const Symbol symbol = Attach(Record("84.pic", 0), scene);
    scene->GetAnnoSet()->AddAnnotation(symbol);
    Pump();
    const std::pair<std::size_t, std::function<void()>> changes[] = {
        {0, [&] { item->SetName("n"); }},
        {1, [&] { item->SetTitle("t"); }},
        {1, [&] { item->SetShowTooltipTitle(true); }},
        {0, [&] { item->SetDescription("d"); }},
        {1, [&] { item->AddSequencerTag(du::MakeCounted<luk::illustration::SequencerTag>()); }},
    };
    for (const auto& [notified, change] : changes) {
        const auto before = scene->GetAnnoSet()->GetChangeCount();
        change();
        for (const bool isNew : {true, false}) {
            scene->GetView(0)->SetDirty(false);
            Change(*item, isNew ? "84.pic" : "");
            EXPECT_EQ(scene->GetView(0)->IsDirty(), isNew);
        }
        EXPECT_EQ(scene->GetAnnoSet()->GetChangeCount() - before, notified);
    }
    EXPECT_EQ(luloader::Loader::GetLoader()->GetPendingCount(), 0u);
    EXPECT_EQ(symbol->GetTitle() + symbol->GetDescription() + symbol->GetImageName().GetText(), "tdn");
    symbol->DetachScene();
    item->SetTitle("unseen");
    Change(*item, "84.pic");
    EXPECT_EQ(symbol->GetTitle(), "t") << "a detached symbol follows nothing";
    symbol->AttachScene(scene);
    EXPECT_EQ(symbol->GetTitle(), "unseen");
}

TEST_P(Symbol2DTest, NewPicturesKeepTheWidthAndFailedOnesEverything)
{
    const struct {
        std::vector<std::string> files; ///< one after the other, before any is loaded
        std::pair<float, float> size;
        std::size_t loads;
    } cases[] = {
        {{"48.pic"}, {20.0F, 40.0F}, 1},           {{"48.pic", "48.pic"}, {20.0F, 40.0F}, 1},
        {{"48.pic", "55.pic"}, {20.0F, 20.0F}, 2}, {{"48.pic", "84.pic"}, {20.0F, 10.0F}, 2},
        {{"no.pic"}, {20.0F, 10.0F}, 1},           {{"no.pic", "55.pic"}, {20.0F, 20.0F}, 2},
        {{"48.pic", "no.pic"}, {20.0F, 10.0F}, 2}, {{"48.pic", "55.pic", "48.pic"}, {20.0F, 40.0F}, 3},
    };
    for (const bool isShownBefore : {true, false}) {
        for (const auto& [files, size, loads] : cases) {
            SCOPED_TRACE(files.front() + ' ' + files.back() + (isShownBefore ? " shown" : " new"));
            m_traces.clear();
            Collection().Clear();
            const auto item = AddItem("A", isShownBefore ? "84.pic" : files.front());
            const auto scene = MakeScene();
            const auto event = du::MakeCounted<Waiting>();
            const Symbol symbol = Attach(Record("84.pic", 0), scene, event);
            if (isShownBefore) {
                Pump();
            }
            for (const std::string& file : files) {
                Change(*item, file);
            }
            EXPECT_TRUE(symbol->IsSourceUpdated());
            EXPECT_EQ(SizeOf(symbol), Size(-0.01F, -0.01F));
            EXPECT_EQ(luloader::Loader::GetLoader()->GetPendingCount(), loads);
            Pump();
            const bool hasFailed = files.back() == "no.pic";
            const auto stamp = StampIn(scene);
            EXPECT_FALSE(symbol->IsSourceUpdated());
            EXPECT_EQ(symbol->GetImageFileName().GetText(), hasFailed ? "84.pic" : files.back());
            EXPECT_EQ(SizeOf(symbol), size);
            ASSERT_TRUE(stamp->GetImage()) << "a symbol that had not loaded its own picture does so after a failure";
            EXPECT_EQ(stamp->GetImage(), symbol->GetImage()->GetImageData());
            EXPECT_EQ(symbol->GetImageWidth(), symbol->GetImageFileName().GetText()[0] - '0');
            EXPECT_EQ(event->completions, 1);
            scene->Close(); // or the symbol, which its scene holds, would follow the entries of the next case
            EXPECT_EQ(m_traces, hasFailed ? "symbol3dsymbol2d UpdateStampEvent failed to complete successfully\n" : "");
        }
    }
}

TEST_P(Symbol2DTest, WhatElseHappensWhileAPictureLoads)
{
    const auto item = AddItem("A", "84.pic");
    const auto scene = MakeScene();
    const Symbol symbol = Attach(Record("84.pic", 0), scene);
    Pump();
    Change(*item, "48.pic");
    symbol->SetSymbolInfo(Record("84.pic"));
    symbol->Initialise();
    Pump();
    EXPECT_FALSE(symbol->IsSourceUpdated()) << "a record is newer than the template's picture";
    EXPECT_EQ(SizeOf(symbol), Size(20.0F, 10.0F));
    EXPECT_EQ(symbol->GetImageWidth(), 8);

    Change(*item, "48.pic");
    symbol->DetachScene();
    const auto event = du::MakeCounted<Waiting>();
    symbol->SetEvent(event);
    symbol->AttachScene(scene);
    Pump();
    EXPECT_EQ(event->completions, 1) << "an attachment waits for the load that is under way";
    EXPECT_EQ(SizeOf(symbol), Size(20.0F, 40.0F));

    Change(*item, "55.pic");
    const auto copy = du::MakeCounted<Symbol2D>(*symbol);
    copy->AttachScene(MakeScene());
    Pump();
    EXPECT_EQ(SizeOf(copy), Size(20.0F, 20.0F)) << "a copy loads for itself";

    Symbol2DInfo saved = Record("84.pic");
    saved.width = saved.height = -0.01F;
    const auto reopened = du::MakeCounted<Symbol2D>(saved);
    reopened->SetCreatedFromFile(true);
    reopened->AttachScene(scene);
    Pump();
    EXPECT_FLOAT_EQ(reopened->GetMarkupSize(0).x, 0.4F) << "saved during a load: pixel by pixel, 10 a unit";
}

TEST_P(Symbol2DTest, ManyLoadsAndChanges)
{
    constexpr std::size_t kEntries = 5;
    constexpr std::size_t kRounds = 8;
    const std::string files[] = {"84.pic", "48.pic", "55.pic", "84.pic", "no.pic", "48.pic", "55.pic"};
    std::vector<du::SmartPtr<PartslibraryImageItem>> items;
    const auto scene = MakeScene();
    std::vector<Symbol> symbols;
    for (std::size_t i = 0; i < kEntries; ++i) {
        items.push_back(AddItem(std::to_string(i), files[i]));
    }
    for (std::size_t i = 0; i < 60; ++i) {
        symbols.push_back(Attach(Record(files[i % kEntries], i % kEntries), scene));
    }
    for (std::size_t round = 1; round <= kRounds; ++round) {
        for (std::size_t i = 0; i < kEntries; ++i) {
            Change(*items[i], files[round * (i + 1) % 7]);
        }
        luk::Kernel::GetKernel()->ProcessEvents();
        for (std::size_t i = round; i < symbols.size(); i += kRounds) {
            symbols[i]->DetachScene();
            symbols[i] = du::DynamicCast<Symbol2D>(symbols[i]->Clone());
            symbols[i]->SetMarkupSize(0, {20.0F, 10.0F, 0.0F});
            symbols[i]->AttachScene(scene);
        }
    }
    Pump();
    for (const Symbol& symbol : symbols) {
        EXPECT_EQ(symbol->GetMarkupSize(0).x, 20.0F);
        EXPECT_GT(symbol->GetMarkupSize(0).y, 0.0F);
    }
    EXPECT_EQ(scene->GetMarkupCount(), symbols.size());
    EXPECT_EQ(Collection().GetObserverCount(), symbols.size());
}

TEST_P(Symbol2DTest, KeysInTheirOrderAndRoundTrip)
{
    const dg::Location place(dg::FMat33::Scaling(2.0, 3.0, 4.0), {7.0, 8.0, 9.0});
    Properties properties = {{"annoId", Text("/s1")}, {"annoName", Text("name")}, {"annoVisible", false}};
    properties.insert(properties.end(), {{"title", Text("T")}, {"description", Text("D")}});
    properties.insert(properties.end(), {{"showTooltipTitle", false}, {"showTooltipDescription", true}});
    properties.insert(properties.end(), {{"imageName", Text("N")}, {"imageFileName", Text("84.pic")}});
    properties.insert(properties.end(), {{"center", dg::DPoint3D(1.0, 2.0, 3.0)}, {"width", 4.0F}, {"height", 5.0F}});
    properties.insert(properties.end(), {{"lineColor", dg::Color(0.1F, 0.2F, 0.3F, 0.4F)}, {"lineWidth", 2}});
    properties.insert(properties.end(), {{"lineStipple", 3}, {"fillColor", dg::Color(0.5F, 0.6F, 0.7F, 0.8F)}});
    properties.insert(properties.end(), {{"transparency", 0.25F}, {"screenSpace", true}, {"anchor", 4}});
    properties.insert(properties.end(), {{"reverse", true}, {"flipHorizontally", true}, {"rotateRight", 90}});
    properties.insert(properties.end(), {{"rotateLeft", 180}, {"isbillboard", false}, {"bbXform", place}});
    properties.insert(properties.end(), {{"pageNum", 5}, {"templateIndex", std::uint64_t{1}}});
    Element content = Make("symbol2d", properties);
    AddItem("other", "84.pic");
    const auto item = AddItem("A", "84.pic");
    AddItem("A", "84.pic");
    for (const char* const name : {"first", "second"}) {
        Properties tag = {{"sequencerTagType", Text("TORQUE")}, {"sequencerTagDescription", Text("d")}};
        tag.insert(tag.end(), {{"sequencerTagName", Text(name)}, {"sequencerTagUnits", Text("Nm")}});
        tag.insert(tag.end(), {{"sequencerTagQuantity", Text("25")}});
        content.AddChild(Make("sequencerTag", tag));
    }
    const Symbol symbol = Opened(content);
    Symbol2D::SequencerTags tags;
    symbol->GetSequencerTags(tags);
    for (const auto& tag : tags) {
        item->AddSequencerTag(tag);
    }
    item->SetName("N");
    item->SetTitle("T");
    item->SetDescription("D");
    item->SetShowTooltipDescription(true);
    EXPECT_EQ(Saved(symbol).GetProperties().size(), properties.size() - 1) << "no markup, no place of its own";
    symbol->AssignTemplate(2);
    symbol->AttachScene(MakeScene());
    EXPECT_EQ(Saved(symbol), content) << "with the first entry of the id";
    Collection().Clear();
    EXPECT_EQ(Saved(symbol).GetProperties().size(), properties.size() - 1) << "bound to an entry that is gone";
    const Symbol plain = Attach(Record("84.pic"), MakeScene());
    EXPECT_EQ(Saved(plain).GetProperties().size(), properties.size() - 2) << "a billboard that is bound to nothing";
    EXPECT_FALSE(plain->InitializeFromSerializedContent(nullptr));
}

TEST_P(Symbol2DTest, UnknownKeysAreToldAndKept)
{
    std::string traces;
    const dp::TraceSink old = dp::LUTracer::SetSink([&](const dp::TraceMessage& message) {
        EXPECT_EQ(std::string(message.channel.channel) + message.channel.parent, "symbol3dsymbol2d");
        EXPECT_EQ(message.type, dp::LUTracer::WARNING);
        traces += message.text;
    });
    Properties unknown = {{"%s%n", Text("text")}, {"c", dg::Color::BLACK}, {"p", dg::DPoint3D()}, {"i", 1}};
    unknown.insert(unknown.end(), {{"width", 1}, {"f", 1.0F}, {"u", std::uint64_t{1}}, {"l", dg::Location::IDENTITY}});
    unknown.insert(unknown.end(), {{"b", true}, {"v", dg::DVec3()}});
    Element content = Make("symbol2d", unknown);
    content.AddProperty(Text("sequencerTagName"), Text("outside of any tag"));
    content.AddProperty(Text("rotateRight"), true);
    content.AddChild(Make("unknown", {{"title", Text("not ours")}, {"x", 1.0F}}));
    const Symbol symbol = Opened(content);
    dp::LUTracer::SetSink(old);
    EXPECT_EQ(traces, "Unhandle symbol %s%n\nUnhandle color c\nUnhandle point p\nUnhandle int32 i\n"
                      "Unhandle int32 width\nUnhandle float f\n");
    EXPECT_EQ(symbol->GetRotateRight(), 1);
    EXPECT_EQ(symbol->GetTitle(), "");
    EXPECT_EQ(symbol->GetLineColor(), dg::Color(0.5F, 0.6F, 0.9F, 0.2F)) << "a missing key leaves the preferred colour";
    EXPECT_EQ(du::MakeCounted<Symbol2D>()->GetLineColor(), dg::Color::BLACK) << "as a factory makes it";
    const Element saved = Saved(symbol);
    for (std::size_t i = 0; i < unknown.size(); ++i) {
        EXPECT_EQ(saved.GetProperties()[3 + i].key.GetText(), unknown[i].first);
    }
    ASSERT_EQ(saved.GetChildCount(), 1u);
    EXPECT_EQ(saved.GetChild(0), content.GetChild(0));
}

TEST_P(Symbol2DTest, HostileValuesAreKeptAndDoNoHarm)
{
    const dg::Location bad(dg::FMat33::Scaling(2.0, 1.0, 1.0), dg::DPoint3D::BAD);
    const auto scene = MakeScene();
    Properties hostile = {{"width", kNan}, {"height", -std::numeric_limits<float>::infinity()}, {"bbXform", bad}};
    hostile.insert(hostile.end(), {{"center", dg::DPoint3D::BAD}, {"rotateRight", std::numeric_limits<int>::min()}});
    hostile.insert(hostile.end(), {{"isbillboard", false}, {"templateIndex", ~std::uint64_t{1}}});
    hostile.insert(hostile.end(), {{"rotateLeft", std::numeric_limits<int>::min()}, {"imageFileName", Text("84.pic")}});
    const Symbol symbol = Opened(Make("symbol2d", hostile));
    symbol->AttachScene(scene);
    Pump();
    EXPECT_EQ(StampIn(scene)->GetImage()->GetQuarterTurns(), 4 - 4294967296 / 90 % 4);
    EXPECT_EQ(StampIn(scene)->GetLocation()->GetMat(), bad.GetMat()) << "the turn counts without a position";
    EXPECT_TRUE(symbol->GetBBox().IsEmpty());
    symbol->SetMarkupSizeAsImage();
    const dg::Pipeline pipeline(dg::Camera3D(), static_cast<double>(kNan));
    EXPECT_EQ(std::get<float>(Saved(symbol, &pipeline).GetProperties()[10].value), 0.0F);
    const auto flat = du::MakeCounted<Symbol2D>();
    flat->GetImage()->SetImageData(du::MakeCounted<luk::ImageData>(std::vector{luk::ImageData::Frame{0, 4, nullptr}}));
    flat->OnImageLoaded(flat->GetImage(), false);
    Size natural;
    flat->GetOrigSize(natural.first, natural.second);
    EXPECT_EQ(natural, Size(0.0F, 2.0F));
}

TEST_P(Symbol2DTest, FlatteningMeasuresWhatIsDrawn)
{
    // 10 pixels a unit from the middle of 1000 by 800, y down; the frame adds half a pixel to each side.
    const auto scene = MakeScene();
    const dg::Pipeline pipeline(du::DynamicCast<luk::ShapeView>(scene->GetView(0))->GetCamera(), 1.0);
    for (const bool isBillboard : {true, false}) {
        Symbol2DInfo record = Record("84.pic");
        record.center = {5.0, 2.0, 0.0};
        record.isBillboard3D = isBillboard;
        record.location = {dg::FMat33(0.0F, -1.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 1.0F), dg::DPoint3D()};
        const auto symbol = du::DynamicCast<Symbol2D>(du::MakeCounted<Symbol2D>(record)->Clone());
        symbol->AttachScene(scene);
        const Element flat = Saved(symbol, &pipeline);
        EXPECT_EQ(std::get<dg::DPoint3D>(flat.GetProperties()[9].value), dg::DPoint3D(550.0, 380.0, 0.0));
        EXPECT_EQ(std::get<float>(flat.GetProperties()[10].value), isBillboard ? 200.5F : 100.5F);
        EXPECT_EQ(std::get<float>(flat.GetProperties()[11].value), isBillboard ? 100.5F : 200.5F);
    }
}

TEST_P(Symbol2DTest, APictureFileIsOneComponent)
{
    using namespace std::string_literals;
    m_folder.Write("temp/outside.pic", "84");
    const auto structure = du::MakeCounted<luk::Structure>();
    structure->SetAnchor(du::MakeCounted<luk::Anchor>(du::Symbol(m_folder.Path("temp"))));
    luk::World::GetWorld()->SetContainer(du::MakeCounted<luk::MultiRootContainer>());
    luk::World::GetWorld()->GetContainer()->SetPrimaryStructure(structure);
    const std::string names[] = {
        "84.pic",    "",          ".", "..", "./84.pic", "84.pic:x", "../outside.pic", "C:84.pic", "../Symbols/84.pic",
        "x\\84.pic", "84.pic\0b"s};
    for (const bool isAuthoring : {true, false}) {
        luk::illustration::SetRunningIllustrate(isAuthoring);
        for (const std::string& name : names) {
            const auto symbol = du::MakeCounted<Symbol2D>(Record(name));
            const std::string found = name == "84.pic" ? "file:///" + m_folder.Path("temp") + "/Symbols/84.pic" : "";
            EXPECT_EQ(test::Native(symbol->GetImage()->GetURL().GetText()), test::Native(found)) << name;
            EXPECT_EQ(symbol->GetImageFileName().GetText(), name) << "kept for saving";
        }
    }
}

} // namespace
