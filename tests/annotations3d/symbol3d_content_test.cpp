#include "annotations3d/Symbol3DTest.h"
#include "support/Threads.h"

#include <dg/Pipeline.h>
#include <lug/Appearance.h>
#include <luk/illustration2d/Document2D.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/illustration2d/Stamp2D.h>

#include <limits>

namespace test
{

namespace
{

class SymbolContent : public Symbol3DTest
{
protected:
    /// Everything that can be saved, in its order, of a symbol at (12.1, 1.3, 0.7) on "/b" at (10.3, 0.1, 0.2) and on "/a/x".
    static Element EverythingSaved()
    {
        const dg::Color blue(0.1F, 0.2F, 0.9F, 0.5F);
        const dg::Color grey(0.4F, 0.4F, 0.4F, 1.0F);
        const dg::Location csys(kQuarterTurn, {1.0, 2.0, 3.0});
        // Numbers that sums, differences and matrices round.
        const dg::Quaternion<float> turn{0.18257419F, 0.36514837F, 0.54772256F, 0.73029674F};
        const dg::DVec3 offset = dg::DPoint3D(12.1, 1.3, 0.7) - dg::DPoint3D(10.3, 0.1, 0.2);
        Properties properties = {{"annoId", Text("/s1")}, {"annoName", Text("name")}, {"annoVisible", false}};
        properties.insert(properties.end(), {{"title", Text("title of A")}, {"description", Text("D")}});
        properties.insert(properties.end(), {{"showTooltipTitle", true}, {"showTooltipDescription", false}});
        properties.insert(properties.end(), {{"name", Text("name of A")}, {"fileName", Text("s.shp")}});
        properties.insert(properties.end(), {{"ID", Text("symbol:7")}, {"appAmbient", grey}});
        properties.insert(properties.end(), {{"appSpecular", dg::Color(1, 1, 0, 1)}, {"appDiffuse", blue}});
        properties.insert(properties.end(), {{"appEmissive", dg::Color(0, 1, 1, 1)}, {"appShininess", 20.0F}});
        properties.insert(properties.end(), {{"appTransp", 0.25F}, {"appHasOverride", true}});
        properties.insert(properties.end(), {{"locPosition", dg::DPoint3D(12.1, 1.3, 0.7)}});
        properties.insert(properties.end(), {{"locOrientation", turn}, {"locScale", 1.7F}});
        properties.insert(properties.end(), {{"isAnnotationSymbol", true}, {"symbolCsysLocation", csys}});
        properties.insert(properties.end(), {{"symbolInitLocation", At(4.0)}, {"templateIndex", std::uint64_t{1}}});
        Element content = Make("symbol3d", properties);
        content.AddChild(Make("attachedToPart", {{"attachedToPartId", Text("/b")},
                                                 {"attachedToPartLastPos", dg::DPoint3D(10.3, 0.1, 0.2)},
                                                 {"attachedToPartOffset", offset}}));
        content.AddChild(Make("attachedToPart", {{"attachedToPartId", Text("/g/x")},
                                                 {"attachedToAssemblyPartId", Text("/g")},
                                                 {"attachedToPartLastPos", dg::DPoint3D(0.0, 0.0, 0.0)},
                                                 {"attachedToPartOffset", dg::DVec3(12.1, 1.3, 0.7)}}));
        for (const char* const name : {"first", "second"}) {
            content.AddChild(Make("sequencerTag", {{"sequencerTagType", Text("TORQUE")},
                                                   {"sequencerTagDescription", Text("d")},
                                                   {"sequencerTagName", Text(name)},
                                                   {"sequencerTagUnits", Text("Nm")},
                                                   {"sequencerTagQuantity", Text("25")}}));
        }
        return content;
    }

    static std::vector<std::string> KeysOf(const Element& element)
    {
        std::vector<std::string> keys;
        for (const Element::Property& property : element.GetProperties()) {
            keys.push_back(property.key.GetText());
        }
        return keys;
    }
    template <class Value>
    static Value ValueOf(const Element& element, const char* key)
    {
        for (const Element::Property& property : element.GetProperties()) {
            if (property.key == Text(key)) {
                return std::get<Value>(property.value);
            }
        }
        ADD_FAILURE() << key << " is not saved";
        return Value();
    }
};
INSTANTIATE_TEST_SUITE_P(LocksAndRouting, SymbolContent, testing::Combine(testing::Bool(), testing::Bool()));

TEST_P(SymbolContent, IsWrittenAsItWasReadAtAnyTime)
{
    const Element content = EverythingSaved();
    AddItem("other", "t.shp");
    const auto item = AddItem("A", "s.shp");
    AddItem("A", "s.shp");
    item->SetDescription("D");
    item->SetShowTooltipTitle(true);
    m_root->FindChild(Text("b"))->SetLocation({dg::FMat33::IDENTITY, {10.3, 0.1, 0.2}});
    const Symbol symbol = Opened(content);
    EXPECT_TRUE(symbol->IsLegacySymbol() && symbol->CreatedFromFile());
    SymbolAnnotation::SequencerTags tags;
    symbol->GetSequencerTags(tags);
    for (const auto& tag : tags) {
        item->AddSequencerTag(tag);
    }
    EXPECT_EQ(Saved(symbol), Element()) << "nothing without a shape in a scene";
    const std::string product = Product();
    Attached(symbol);
    EXPECT_EQ(Saved(symbol), content) << "saved before its parts have placed it";
    Pump();
    EXPECT_EQ(Saved(symbol), content);
    EXPECT_EQ(Saved(symbol->Clone()), content);
    EXPECT_FALSE(symbol->IsVisible()) << "hidden as it was saved, in spite of its colour";
    symbol->DetachScene();
    EXPECT_EQ(Saved(symbol), Element());
    EXPECT_EQ(Product(), product);
    const Symbol again = Attached(Opened(content));
    Pump();
    EXPECT_EQ(Saved(again), content);
    Collection().Clear();
    EXPECT_EQ(Saved(again).GetProperties().size(), content.GetProperties().size() - 1) << "bound to what is gone";
}

TEST_P(SymbolContent, WhatIsMissingUnknownOrMisplaced)
{
    Element content = Make("symbol3d", {{"fileName", Text("s.shp")}, {"attachedToPartId", Text("/b")}});
    content.AddProperty({Text("attachedToPartOffset"), dg::DVec3(1.0, 0.0, 0.0)});
    content.AddProperty({Text("sequencerTagName"), Text("outside of any tag")});
    content.AddProperty({Text("templateId"), Text("A")});
    content.AddProperty({Text("title"), true});
    content.AddProperty({Text("xform"), At(1)});
    content.AddProperty({Text("locScale"), std::uint64_t{3}});
    content.AddChild(Make("unknown", {{"title", Text("not ours")}, {"locScale", 7.0F}}));
    content.AddChild(Make("attachedToPart", {}));
    const Symbol symbol = Attached(Opened(content));
    Pump();
    EXPECT_TRUE(PartsOf(symbol).empty()) << "attached without saying that it is an annotation symbol, and to nothing";
    EXPECT_EQ(symbol->GetShapeInstance()->GetLocation(), dg::Location::IDENTITY);
    EXPECT_EQ(symbol->GetTitle(), "");
    EXPECT_EQ(symbol->GetPartCsys(), dg::Location::IDENTITY);
    const Element saved = Saved(symbol);
    const auto keys = KeysOf(saved);
    EXPECT_EQ(std::vector<std::string>(keys.begin() + 3, keys.begin() + 7),
              (std::vector<std::string>{"templateId", "title", "xform", "locScale"}));
    EXPECT_EQ(saved.GetChild(0), content.GetChild(0));
    EXPECT_TRUE(du::MakeCounted<SymbolAnnotation>()->InitializeFromSerializedContent(nullptr));
}

TEST_P(SymbolContent, AppearanceAndTemplateIndex)
{
    for (const char* const id : {"0", "1", "2", "A", "4", "5", "6", "A", "8", "9", "10", "11", "A"}) {
        AddItem(id, "s.shp");
    }
    const Symbol symbol = Attached(Record({1.0, 2.0, 3.0}));
    symbol->AssignTemplate(12);
    EXPECT_EQ(ValueOf<std::uint64_t>(Saved(symbol), "templateIndex"), 3u)
        << "the first of an id that stands three times";
    for (const std::uint64_t none : {~std::uint64_t{0}, std::uint64_t{13}, std::uint64_t{1} << 63}) {
        symbol->AssignTemplate(none);
        EXPECT_EQ(symbol->GetTemplateHolder().HasRelation(), none == ~std::uint64_t{0});
    }
    EXPECT_FALSE(ValueOf<bool>(Saved(symbol), "appHasOverride"));
    const dg::Color red(1.0F, 0.0F, 0.0F, 1.0F);
    symbol->GetShapeInstance()->OverrideAppearance(
        du::MakeCounted<lug::Appearance>(lug::Material(red, {}, dg::Color::BLACK, {0.5F, 0.5F, 0.5F, 1.0F}, 20.0F)));
    symbol->GetShapeInstance()->OverrideTransparency(0.25F);
    const Element saved = Saved(symbol);
    EXPECT_EQ(ValueOf<dg::Color>(saved, "appAmbient"), red);
    EXPECT_EQ(ValueOf<dg::Color>(saved, "appSpecular").red, 0.5F);
    EXPECT_EQ(ValueOf<float>(saved, "appShininess"), 20.0F);
    EXPECT_EQ(ValueOf<float>(saved, "appTransp"), 0.25F);
    symbol->GetShapeInstance()->OverrideAppearance(du::MakeCounted<lug::Appearance>());
    EXPECT_EQ(KeysOf(Saved(symbol))[10], "locPosition") << "an override without a material says nothing";

    SymbolInfo info = Record({});
    info.hasAppearanceOverride = true;
    info.diffuse = red;
    const Symbol plain = Made(info);
    plain->SetHasColorOverride(false);
    EXPECT_FALSE(Attached(plain)->GetShapeInstance()->GetAppearanceOverride());
    info.transparency = 0.5F;
    const Symbol coloured = Attached(info);
    const auto diffuse = [&] {
        return coloured->GetShapeInstance()->GetAppearanceOverride()->GetMaterial()->GetDiffuse();
    };
    EXPECT_EQ(diffuse(), red);
    EXPECT_FALSE(coloured->GetShapeInstance()->HasTransparencyOverride()) << "a record alone makes nothing transparent";
    const dg::Color green(0.0F, 1.0F, 0.0F, 1.0F);
    coloured->GetShapeInstance()->SetColor(green);
    coloured->GetShapeInstance()->OverrideTransparency(0.75F);
    coloured->DetachScene();
    Attached(coloured);
    EXPECT_EQ(diffuse(), green) << "comes back as it was";
    EXPECT_EQ(coloured->GetShapeInstance()->GetTransparency(), 0.75F);
    coloured->SetSymbolInfo(info);
    coloured->DetachScene();
    Attached(coloured);
    EXPECT_EQ(diffuse(), red) << "as a record has said since";
    coloured->GetShapeInstance()->RestoreAppearanceOverride(true, true);
    coloured->DetachScene();
    EXPECT_FALSE(Attached(coloured)->GetShapeInstance()->GetAppearanceOverride());
    EXPECT_FALSE(coloured->GetShapeInstance()->HasTransparencyOverride());
}

TEST_P(SymbolContent, FlattenedSymbols)
{
    const Symbol symbol = Attached(Opened(EverythingSaved()));
    Element page;
    EXPECT_FALSE(du::MakeCounted<SymbolAnnotation>()->Flatten(page, {}, luk::InstanceCheck(), dg::Pipeline({}, 1.0)));
    EXPECT_TRUE(symbol->Flatten(page, {}, luk::InstanceCheck(), dg::Pipeline({}, 1.0)));
    ASSERT_EQ(page.GetChildCount(), 1u);
    EXPECT_EQ(page.GetChild(0).GetName().GetText(), "symbol3dflattened");
    EXPECT_EQ(KeysOf(page.GetChild(0)),
              (std::vector<std::string>{"annoId", "annoName", "annoVisible", "title", "description", "showTooltipTitle",
                                        "showTooltipDescription", "name", "fileName", "ID"}));
    const auto flattened = du::MakeCounted<SymbolAnnotationFlattened>();
    EXPECT_TRUE(flattened->InitializeFromSerializedContent(&page.GetChild(0), nullptr));
    EXPECT_EQ(flattened->GetXform(), dg::FMat33::IDENTITY);
    EXPECT_EQ(flattened->GetTitle(), "title of A");

    Element content = page.GetChild(0);
    content.AddProperty(Text("xform"), dg::Location(dg::FMat33(4, 0, 10, 0, 2, 20, 0, 0, 1), dg::DPoint3D::BAD));
    content.AddProperty(Text("isAnnotationSymbol"), true);
    content.GetProperties()[2].value = true;
    EXPECT_TRUE(flattened->InitializeFromSerializedContent(&content));
    std::swap(content.GetProperties()[10], content.GetProperties()[11]); // what is not understood goes to the front
    const Element saved = Saved(flattened->Clone());
    EXPECT_EQ(saved.GetProperties().size(), content.GetProperties().size());
    EXPECT_EQ(ValueOf<dg::Location>(saved, "xform").GetMat(), flattened->GetXform());

    using luk::illustration2d::Scene2D;
    const auto scene = du::MakeCounted<Scene2D>(du::MakeCounted<luk::illustration2d::Document2D>(210.0, 297.0));
    EXPECT_TRUE(flattened->AttachScene(scene));
    flattened->CreateAnnotation2D(scene);
    flattened->CreateAnnotation2D(nullptr);
    ASSERT_EQ(scene->GetDocument()->GetNodes().size(), 1u);
    const auto element = du::DynamicCast<luk::illustration2d::Stamp2D>(scene->GetDocument()->GetNodes().front());
    EXPECT_TRUE(element->IsDerivedFromSymbol());
    flattened->DetachScene();
}

TEST_P(SymbolContent, Records)
{
    const Symbol symbol = du::MakeCounted<SymbolAnnotation>();
    symbol->SetName(Text("s.shp"), Text("A"));
    SymbolInfo info = Record({});
    info.name = Text("B");
    info.symbolCsysLocation = info.symbolInitLocation = At(5);
    symbol->SetSymbolInfo(info);
    EXPECT_EQ(symbol->GetTitle() + symbol->GetName().GetText(), "AB") << "no title: the name that it had before";
    EXPECT_EQ(symbol->GetPartCsys(), dg::Location::IDENTITY) << "not said to be given";
    EXPECT_FALSE(symbol->GetTemplateHolder().HasRelation());
    info.title = "T";
    const SymbolInfo moved = std::move(info);
    EXPECT_TRUE(info.title.empty() && info.name.IsNull() && moved.title == "T");
    EXPECT_EQ(symbol->GetMarkupName(1), "Symbol 2");
    EXPECT_EQ(symbol->GetMarkupName(std::numeric_limits<unsigned>::max()), "Symbol 0");
    EXPECT_EQ(symbol->GetObjectDescription(), "Symbol-");
    EXPECT_TRUE(symbol->IsZoomable() && !symbol->AllowGroupDrag() && symbol->NumberOfMarkups() == 0);
}

TEST_P(SymbolContent, IsGuardedByItsLock)
{
    const auto flattened = du::MakeCounted<SymbolAnnotationFlattened>();
    luannotations::SymbolInfoFlattened info;
    info.xform = dg::FMat33::Scaling(2.0, 2.0, 2.0);
    // Without a lock it is for one thread alone.
    OnThreads(flattened->GetLock() ? 4 : 1, [&](unsigned number) {
        for (int i = 0; i < 200; ++i) {
            if (number == 0) {
                flattened->SetSymbolInfo(i % 2 == 0 ? luannotations::SymbolInfoFlattened() : info);
            }
            const dg::FMat33 xform = flattened->GetXform();
            EXPECT_EQ(xform.Get(0, 0), xform.Get(2, 2));
            EXPECT_EQ(Saved(flattened).GetProperties().size(), 11u);
            EXPECT_EQ(SymbolAnnotation::GetUserDataId(), SymbolAnnotation::GetUserDataId());
        }
    });
    EXPECT_EQ(flattened->GetXform(), info.xform);
}

} // namespace

} // namespace test
