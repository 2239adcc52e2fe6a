#include "annotations3d/Symbol3DTest.h"

#include <sstream>

namespace test
{

Symbol3DTest::Symbol3DTest()
{
    luk::ObjectWithRWLock::SetLocksEnabled(std::get<0>(GetParam()));
    m_config.temporaryDirectory = m_folder.Path("temp");
    m_config.loader.shapeReaders = {std::make_shared<TextReader>()};
    for (const char* const file : {"s.shp", "t.shp"}) {
        m_folder.Write(std::string("temp/Symbols/") + file, "S");
        m_folder.Write(std::string("SymbolsLibrary/Shape/") + file, "S");
    }
    m_folder.Write("temp/Symbols/bad.shp", "no shape");
    m_folder.Write("temp/part.shp", "S");
    RestartSession();
    MakeProduct();
}

void Symbol3DTest::MakeProduct()
{
    if (m_scene) {
        m_scene->Close();
    }
    m_structure = du::MakeCounted<luk::Structure>();
    m_root = m_structure->CreateComponentNode(Text("root"));
    m_assembly = m_structure->CreateComponentNode(Text("assembly"));
    const auto bolt = m_structure->CreateComponentNode(Text("bolt"));
    Use(m_assembly, bolt, "x");
    Use(m_assembly, bolt, "y");
    Use(m_root, m_assembly, "a");
    Use(m_root, bolt, "b");
    du::SmartPtr<luk::ShapeSource> source;
    luk::ShapeSource::Create(source, m_folder.Path("temp/part.shp"), dg::FBox::EMPTY, 0);
    bolt->SetShapeSource(source);
    m_structure->SetRoot(m_root);
    m_structure->SetAnchor(du::MakeCounted<luk::Anchor>(Text(m_folder.Path("temp"))));
    m_tree = du::MakeCounted<luk::Tree>(m_structure);
    m_services = du::MakeCounted<luk::illustration::SbomTree>();
    const auto group = m_services->AddInstance(nullptr, Text("g"), "group", Find("/a"));
    m_services->AddInstance(group, Text("x"), "bolt", Find("/a/x"));

    const auto container = du::MakeCounted<lukapp::illustration::IllMultiRootContainer>();
    container->SetPrimaryStructure(m_structure);
    luk::World::GetWorld()->SetContainer(container);
    luk::World::GetWorld()->SetTree(m_tree);
    lukapp::illustration::DrellinApp::GetDrellinApp()->SetSbomTree(m_services);
    m_scene = du::MakeCounted<luk::illustration::Illustration3dScene>(m_tree, m_services);
    m_scene->SetRoutingEnabled(std::get<1>(GetParam()));
    m_scene->AddView(du::MakeCounted<luk::ShapeView>());
}

void Symbol3DTest::Use(const du::SmartPtr<luk::ComponentNode>& parent, const du::SmartPtr<luk::ComponentNode>& child,
                       const char* id)
{
    du::SmartPtr<luk::ComponentInstance> use;
    EXPECT_TRUE(parent->AddChild(child, Text(id), use));
}

std::string Symbol3DTest::Product() const
{
    std::ostringstream told;
    std::vector<du::SmartPtr<luk::Instance>> due{m_tree->GetRoot()};
    while (!due.empty()) {
        const du::SmartPtr<luk::Instance> at = due.back();
        due.pop_back();
        for (const auto& child : at->GetChildren()) {
            if (!child->GetComponentInstance()->GetId().GetText().starts_with("symbol:")) {
                due.push_back(child);
            }
        }
        told << at->GetIdPath().GetText() << ' ' << at->GetNode()->GetShapeSource().get();
        if (const Part part = m_scene->GetShapeInstance(at)) {
            const dg::DPoint3D& position = part->GetLocation().GetPosition();
            told << ' ' << position.x << ' ' << position.y << ' ' << position.z << ' ' << part->IsPlaced()
                 << part->IsShown() << part->IsSelected() << part->HasTransparencyOverride()
                 << part->HasUserData(SymbolAnnotation::GetUserDataId()) << part->GetVisibilityFraction()
                 << part->GetShape().get() << part->GetAppearanceOverride().get();
        }
        told << '\n';
    }
    return told.str();
}

du::SmartPtr<PartslibraryOlItem> Symbol3DTest::AddItem(const std::string& id, const std::string& file)
{
    const auto item = du::MakeCounted<PartslibraryOlItem>();
    item->SetId(id);
    item->SetName("name of " + id);
    item->SetTitle("title of " + id);
    item->SetOlUrl("SymbolsLibrary\\Shape\\" + file);
    Collection().AddAssociativeObject(item);
    return item;
}

SymbolInfo Symbol3DTest::Record(const dg::DPoint3D& position, const Parts& parts)
{
    SymbolInfo info;
    info.fileName = Text("s.shp");
    info.name = Text("N");
    info.locPosition = position;
    info.isAnnotationSymbol = true;
    info.connectedParts = parts;
    return info;
}

Symbol Symbol3DTest::Made(const SymbolInfo& info)
{
    auto symbol = du::MakeCounted<SymbolAnnotation>();
    symbol->SetSymbolInfo(info);
    return symbol;
}

Symbol Symbol3DTest::Attached(const Symbol& symbol) const
{
    m_scene->GetAnnoSet()->AddAnnotation(symbol);
    EXPECT_TRUE(symbol->AttachScene(m_scene));
    return symbol;
}

Symbol Symbol3DTest::AttachedTo(const std::vector<const char*>& paths, const dg::DPoint3D& position) const
{
    const Symbol symbol = Attached(Record(position));
    for (const char* const path : paths) {
        symbol->AddSelectedPart(PartAt(path), m_scene, Find(path), dg::DPoint3D::BAD);
    }
    Pump();
    return symbol;
}

Element Symbol3DTest::Make(const char* name, const Properties& properties)
{
    Element element{Text(name)};
    for (const auto& [key, value] : properties) {
        element.AddProperty({Text(key), value});
    }
    return element;
}

Symbol Symbol3DTest::Opened(const Element& element)
{
    auto symbol = du::MakeCounted<SymbolAnnotation>();
    EXPECT_TRUE(symbol->InitializeFromSerializedContent(&element, nullptr));
    return symbol;
}

} // namespace test
