#include "Stage.h"

#include "SavedContent.h"

#include <luk/AnnoSet.h>
#include <luk/Annotation.h>
#include <luk/illustration/Illustration3dScene.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/Kernel.h>
#include <luk/ShapeView.h>
#include <luk/Structure.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>
#include <lukapp/illustration/IllMultiRootContainer.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>
#include <luloader/Loader.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

namespace lusym::check
{

namespace
{

namespace fs = std::filesystem;

fs::path PathOf(const std::string& utf8) { return {std::u8string(utf8.begin(), utf8.end())}; }

/// Reads "P84" as a picture of 8 by 4 pixels.
class PictureDecoder : public luloader::ImageDecoder
{
public:
    bool Recognises(std::string_view bytes) const override { return bytes.size() == 3 && bytes.starts_with('P'); }
    du::SmartPtr<luk::ImageData> Decode(std::string_view bytes, std::string&) const override
    {
        const int width = bytes[1] - '0';
        const int height = bytes[2] - '0';
        const auto pixels = std::make_shared<luk::ImageData::Pixels>(static_cast<std::size_t>(4 * width * height));
        return du::MakeCounted<luk::ImageData>(std::vector{luk::ImageData::Frame{width, height, pixels}});
    }
};

/// Takes any file that begins with S for a triangle.
class TriangleReader : public luloader::ShapeReader
{
public:
    du::SmartPtr<luk::Mesh> Read(const std::string& path, std::string& problem) const override
    {
        std::ifstream file(PathOf(path));
        if (file.get() != 'S') {
            problem = "no shape";
            return nullptr;
        }
        return du::MakeCounted<luk::Mesh>(std::vector<dg::FVec3>(3), std::vector<std::uint32_t>{0, 1, 2},
                                          std::vector<luk::Mesh::Part>());
    }
};

luhost::SessionConfig ConfigOf(const Trial& trial)
{
    luhost::SessionConfig config;
    config.baseFolder = trial.GetFolder();
    config.temporaryDirectory = trial.GetFolder();
    config.loader.workers = 2;
    config.loader.decoders = {std::make_shared<PictureDecoder>()};
    config.loader.shapeReaders = {std::make_shared<TriangleReader>()};
    return config;
}

void Use(const du::SmartPtr<luk::ComponentNode>& parent, const du::SmartPtr<luk::ComponentNode>& child, const char* id)
{
    du::SmartPtr<luk::ComponentInstance> use;
    parent->AddChild(child, du::Symbol(id), use);
}

std::string LibraryText(const std::string& title, const std::string& file)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<drellin-library>\n<units>mm</units>\n"
                       "<information>of a check</information>\n"
                       "<categories><category id=\"all\"><name>All</name></category></categories>\n"
                       "<shapes><shape id=\"shape\" categoryId=\"all\"><name>shape</name><title>TITLE</title>"
                       "<graphic url=\"SymbolsLibrary/Shape/FILE.shp\"/><scale>1</scale></shape></shapes>\n"
                       "<symbols><symbol id=\"picture\" categoryId=\"all\" billboard=\"true\"><name>picture</name>"
                       "<title>TITLE</title><image url=\"SymbolsLibrary/2D/FILE.pic\"/></symbol></symbols>\n"
                       "</drellin-library>\n";
    for (const auto& [word, value] : {std::pair{"TITLE", title}, {"FILE", file}}) {
        for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += value.size()) {
            text.replace(at, std::char_traits<char>::length(word), value);
        }
    }
    return text;
}

} // namespace

Stage::Stage(Trial& trial) : m_trial(trial), m_session(std::make_unique<luhost::Session>(ConfigOf(trial)))
{
    for (const char* const folder : {"Symbols", "SymbolsLibrary/2D", "SymbolsLibrary/Shape"}) {
        std::error_code error;
        fs::create_directories(PathOf(m_trial.GetFolder() + "/" + folder), error);
    }
    for (const char* const folder : {"Symbols/", "SymbolsLibrary/2D/"}) {
        Write(std::string(folder) + "one.pic", "P84");
        Write(std::string(folder) + "two.pic", "P48");
    }
    for (const char* const folder : {"Symbols/", "SymbolsLibrary/Shape/"}) {
        Write(std::string(folder) + "one.shp", "S one");
        Write(std::string(folder) + "two.shp", "S two");
    }
    MakeProduct();
}

Stage::~Stage() { EndSession(); }

void Stage::MakeProduct()
{
    const auto structure = du::MakeCounted<luk::Structure>();
    const auto root = structure->CreateComponentNode(du::Symbol("root"));
    const auto assembly = structure->CreateComponentNode(du::Symbol("assembly"));
    const auto part = structure->CreateComponentNode(du::Symbol("part"));
    Use(assembly, part, "x");
    Use(assembly, part, "y");
    Use(root, assembly, "a");
    Use(root, part, "b");
    du::SmartPtr<luk::ShapeSource> source;
    luk::ShapeSource::Create(source, SymbolsPath("one.shp"), dg::FBox::EMPTY, 0);
    part->SetShapeSource(source);
    structure->SetRoot(root);
    structure->SetAnchor(du::MakeCounted<luk::Anchor>(du::Symbol(m_trial.GetFolder())));
    m_tree = du::MakeCounted<luk::Tree>(structure);

    const auto container = du::MakeCounted<lukapp::illustration::IllMultiRootContainer>();
    container->SetPrimaryStructure(structure);
    luk::World::GetWorld()->SetContainer(container);
    luk::World::GetWorld()->SetTree(m_tree);
    const auto services = du::MakeCounted<luk::illustration::SbomTree>();
    lukapp::illustration::DrellinApp::GetDrellinApp()->SetSbomTree(services);
    m_scene = du::MakeCounted<luk::illustration::Illustration3dScene>(m_tree, services);
    dg::Camera3D camera;
    camera.SetViewport(1000, 800);
    camera.SetOrthographic(100.0);
    m_scene->AddView(du::MakeCounted<luk::ShapeView>(camera));
    m_page =
        du::MakeCounted<luk::illustration2d::Scene2D>(du::MakeCounted<luk::illustration2d::Document2D>(210.0, 297.0));
}

du::SmartPtr<luk::Scene> Stage::PlaceOf(const std::string& type) const
{
    return type == "symbol3d" ? du::SmartPtr<luk::Scene>(m_scene) : du::SmartPtr<luk::Scene>(m_page);
}

AnnotationPtr Stage::Read(const std::string& type, const Element& content)
{
    AnnotationPtr annotation = m_trial.MakeAnnotation(type);
    if (annotation) {
        annotation->InitializeFromSerializedContent(&content);
    }
    return annotation;
}

AnnotationPtr Stage::Place(const std::string& type, const Element& content)
{
    AnnotationPtr annotation = Read(type, content);
    Attach(annotation, type);
    Pump();
    return annotation;
}

AnnotationPtr Stage::Place(const std::string& type) { return Place(type, SampleContent(type)); }

void Stage::Attach(const AnnotationPtr& annotation, const std::string& type)
{
    const du::SmartPtr<luk::Scene> place = PlaceOf(type);
    if (annotation && place && place->GetAnnoSet()) {
        place->GetAnnoSet()->AddAnnotation(annotation);
        annotation->AttachScene(place);
    }
}

void Stage::Remove(const AnnotationPtr& annotation)
{
    if (luk::AnnoSet* const set = annotation ? annotation->GetAnnoSet() : nullptr) {
        set->RemoveAnnotationFromSet(annotation);
    }
}

Element Stage::Save(const AnnotationPtr& annotation)
{
    Element parent;
    if (annotation) {
        annotation->Visit(parent);
    }
    return parent.GetChildCount() > 0 ? parent.GetChild(0) : Element();
}

void Stage::Pump()
{
    if (const auto loader = luloader::Loader::GetLoader()) {
        loader->WaitForLoads();
    }
    if (const auto kernel = luk::Kernel::GetKernel()) {
        while (kernel->ProcessEvents() > 0) {
        }
    }
}

void Stage::LoadLibrary(const std::string& title, const std::string& file)
{
    const std::string path = Write("library.xml", LibraryText(title, file));
    m_session->LoadLibrary(path, m_trial.MakeLoader());
}

luk::illustration::SymbolTemplateCollection& Stage::GetCollection()
{
    return *luk::illustration::SymbolTemplateCollection::GetCollection();
}

std::string Stage::SymbolsPath(const std::string& file) const { return m_trial.GetFolder() + "/Symbols/" + file; }

std::string Stage::Write(const std::string& file, const std::string& text) const
{
    std::string path = m_trial.GetFolder() + "/" + file;
    std::ofstream(PathOf(path), std::ios::binary) << text;
    return path;
}

void Stage::CloseScenes()
{
    if (m_scene) {
        m_scene->Close();
        m_page->Close();
    }
    m_scene = nullptr;
    m_page = nullptr;
}

luhost::Session::LeftOver Stage::EndSession()
{
    luhost::Session::LeftOver left;
    if (m_session) {
        m_scene = nullptr;
        m_page = nullptr;
        m_tree = nullptr;
        left = m_session->Close();
        m_session.reset();
    }
    return left;
}

void LiveThrough(Trial& trial)
{
    Stage stage(trial);
    stage.LoadLibrary("A title", "one");
    for (const char* const type : kAnnotationTypes) {
        const AnnotationPtr annotation = stage.Place(type, BoundContent(type));
        if (annotation) {
            annotation->Clone();
        }
        Stage::Save(annotation);
        Stage::Remove(annotation);
        stage.Place(type, BoundContent(type));
    }
    stage.LoadLibrary("Another title", "two");
    Stage::Pump();
}

Element BoundContent(const std::string& type)
{
    Element content = SampleContent(type);
    if (Element::Property* const id = FindProperty(content, "ID")) {
        id->value = du::Symbol(); // so that each gets its own
    }
    if (type != "symbol3dflattened") {
        const auto indices =
            Stage::GetCollection().AssociativeObjectIdToIndices(type == "symbol2d" ? "picture" : "shape");
        content.AddProperty(du::Symbol("templateIndex"), indices.empty() ? std::uint64_t{0} : *indices.begin());
    }
    return content;
}

void OnEightThreads(const std::function<void(unsigned int number)>& work)
{
    constexpr unsigned int kThreads = 8;
    std::atomic<unsigned int> waiting{0};
    std::vector<std::thread> threads;
    for (unsigned int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            ++waiting;
            while (waiting < kThreads) {
                std::this_thread::yield();
            }
            work(number);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace lusym::check
