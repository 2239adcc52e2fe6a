// A session of somebody who does things in any order: places symbols, attaches them, moves, hides, changes entries, undoes,
// saves, opens and takes symbols out. No part of the product is lost, save and open give the same, nothing is left at the end.
#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotation.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "Fuzzing.h"
#include "FuzzWorkplace.h"
#include "xml/SymbolTemplateWriter.h"

#include <luannotations/MoveOperationStep.h>
#include <luhost/ProductMeshReader.h>
#include <luhost/ProductModel.h>
#include <luhost/ServiceModel.h>
#include <luk/AnnoSet.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/Illustration3dScene.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/Kernel.h>
#include <luk/ShapeScene.h>
#include <luk/Structure.h>
#include <luk/View.h>
#include <luk/World.h>
#include <luloader/Loader.h>

#include <filesystem>
#include <functional>
#include <fuzzer/FuzzedDataProvider.h>

namespace
{

using luannotations::Symbol2D;
using luannotations::SymbolAnnotation;
using luk::illustration::SymbolTemplateCollection;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryOlItem;
using Annotation = du::SmartPtr<luk::Annotation>;
using Part = du::SmartPtr<luk::ShapeInstance>;

constexpr const char* kParts[] = {"/pump", "/pump/bolt", "/pump/nut", "/spare", "/spare/bolt", "/spare/nut", "/plate"};
constexpr const char* kFiles[] = {"a.ply", "b.ply", "missing.ply"};
constexpr std::size_t kEntries = 4; ///< two shapes, then two pictures

/// Shapes and pictures of the library, and the same where documents have theirs. Sessions leave them as they are.
bool MakeFiles()
{
    const luk::Mesh mesh({{0.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}}, {0, 1, 2}, {});
    for (const char* const folder : {"temporary/Symbols", "SymbolsLibrary/Shape", "SymbolsLibrary/2D"}) {
        std::filesystem::create_directories(fuzz::GetFolder() + "/" + folder);
        for (const char* const file : {"a.ply", "b.ply"}) {
            fuzz::FillFile(std::string(folder) + "/" + file, luhost::MeshToPly(mesh));
        }
    }
    return true;
}

luhost::ProductModel MakeProduct()
{
    luhost::ProductModel model;
    const auto mesh =
        du::MakeCounted<luk::Mesh>(std::vector<dg::FVec3>{{0.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}},
                                   std::vector<std::uint32_t>{0, 1, 2}, std::vector<luk::Mesh::Part>());
    const dg::Location aside(dg::FMat33::IDENTITY, {10.0, 0.0, 0.0});
    model.components = {{"bolt", mesh, {}},
                        {"pump", nullptr, {{"bolt", 0}, {"nut", 0, aside}}},
                        {"product", nullptr, {{"pump", 1}, {"spare", 1, aside}, {"plate", 0}}}};
    return model;
}

luhost::ServiceModel MakeService()
{
    luhost::ServiceModel model;
    model.nodes.push_back({"drive", "Drive", "/pump", luhost::ServiceModel::kNoParent, {}});
    model.nodes.push_back({"bolt", "Bolt", "/pump/bolt", 0, {}});
    return model;
}

class Drive
{
public:
    explicit Drive(FuzzedDataProvider& data)
        : m_data(data), m_document(luhost::Document::Create(m_workplace.MakeSetup()))
    {
        std::string problem;
        fuzz::Require(m_document->SetProduct(MakeProduct(), problem), "the product is sound");
        fuzz::Require(m_document->SetService(MakeService(), problem), "the service tree is sound");
        m_document->AddPage({});
        for (std::size_t number = 0; number < kEntries; ++number) {
            AddEntry(number);
        }
    }

    ~Drive()
    {
        ForgetAll();
        m_document = nullptr;
    }
    Drive(const Drive&) = delete;
    Drive& operator=(const Drive&) = delete;

    void Run()
    {
        static constexpr void (Drive::*kDeeds[])() = {
            &Drive::PlacePicture,  &Drive::PlaceShape,   &Drive::AttachToPart, &Drive::AttachToSymbol,
            &Drive::MovePart,      &Drive::HidePart,     &Drive::MoveSymbol,   &Drive::HideSymbol,
            &Drive::ChangeEntry,   &Drive::RemoveEntry,  &Drive::Detach,       &Drive::AttachAgain,
            &Drive::CloneSymbol,   &Drive::DoWithUndo,   &Drive::Undo,         &Drive::Redo,
            &Drive::Wait,          &Drive::Pump,         &Drive::SaveAndOpen,  &Drive::UnloadPart,
            &Drive::ChangeProduct, &Drive::WaitWithEvent};
        constexpr int kMostDeeds = 100;
        for (int deed = 0; deed < kMostDeeds && m_data.remaining_bytes() > 0; ++deed) {
            (this->*kDeeds[m_data.ConsumeIntegralInRange<std::size_t>(0, std::size(kDeeds) - 1)])();
            RequireProduct();
        }
    }

private:
    static SymbolTemplateCollection& Collection() { return *SymbolTemplateCollection::GetCollection(); }

    static void AddEntry(std::size_t number)
    {
        const std::string id = "entry-" + std::to_string(number);
        const du::SmartPtr<lusymbols::PartslibraryItem> item = MakeItem(number);
        item->SetId(id);
        item->SetName("name of " + id);
        item->SetTitle("title of " + id);
        Collection().AddAssociativeObject(item);
    }

    static du::SmartPtr<lusymbols::PartslibraryItem> MakeItem(std::size_t number)
    {
        if (number < kEntries / 2) {
            const auto shape = du::MakeCounted<PartslibraryOlItem>();
            shape->SetOlUrl(std::string("SymbolsLibrary/Shape/") + kFiles[number]);
            return shape;
        }
        const auto image = du::MakeCounted<PartslibraryImageItem>();
        image->SetImageUrl(std::string("SymbolsLibrary/2D/") + kFiles[number - kEntries / 2]);
        return image;
    }

    /// What cannot be a place is refused before it comes here.
    double Number()
    {
        static constexpr double kNumbers[] = {0.0, 1.0, -7.5, 1e-30, 1e8};
        return m_data.PickValueInArray(kNumbers);
    }
    dg::DPoint3D Point() { return {Number(), Number(), Number()}; }

    std::uint64_t Template() { return m_data.ConsumeIntegralInRange<std::uint64_t>(0, kEntries); }

    Part PickPart()
    {
        const auto tree = luk::World::GetWorld()->GetTree();
        const auto instance = tree->FindInstance(du::Symbol(m_data.PickValueInArray(kParts)));
        return instance ? m_document->GetShapeScene()->GetShapeInstance(instance) : nullptr;
    }

    Annotation PickSymbol()
    {
        const std::vector<Annotation> all = m_document->GetAnnotations();
        return all.empty() ? nullptr : all[m_data.ConsumeIntegralInRange<std::size_t>(0, all.size() - 1)];
    }
    du::SmartPtr<SymbolAnnotation> PickShape() { return du::DynamicCast<SymbolAnnotation>(PickSymbol()); }

    du::SmartPtr<luk::Scene> SceneOf(const luk::Annotation& symbol) const
    {
        return symbol.GetPageNum() == 0 ? m_document->GetScene()
                                        : du::SmartPtr<luk::Scene>(m_document->GetPage(0).get());
    }

    void PlacePicture()
    {
        luannotations::Symbol2DInfo record;
        record.imageFileName = du::Symbol(m_data.PickValueInArray(kFiles));
        record.center = Point();
        record.transparency = 0.0F; // which it has in any case once its picture was loaded without a page
        record.width = static_cast<float>(Number());
        record.height = static_cast<float>(Number());
        record.rotateRight = 90 * m_data.ConsumeIntegralInRange<int>(-1, 4);
        record.isBillboard3D = m_data.ConsumeBool();
        record.templateIndex = m_data.ConsumeBool() ? Template() : luannotations::Symbol2DInfo::kNoTemplate;
        record.pageNum = m_data.ConsumeIntegralInRange<int>(0, 1);
        const auto symbol = du::MakeCounted<Symbol2D>();
        symbol->SetSymbolInfo(record);
        m_document->AddAnnotation(symbol, SceneOf(*symbol));
    }

    void PlaceShape()
    {
        luannotations::SymbolInfo record;
        record.fileName = du::Symbol(m_data.PickValueInArray(kFiles));
        record.locPosition = Point();
        record.locScale = Number();
        record.isAnnotationSymbol = m_data.ConsumeBool();
        record.hasAppearanceOverride = m_data.ConsumeBool();
        record.templateIndex = m_data.ConsumeBool() ? Template() : luannotations::SymbolInfo::kNoTemplate;
        const auto symbol = du::MakeCounted<SymbolAnnotation>();
        symbol->SetSymbolInfo(record);
        m_document->AddAnnotation(symbol, m_document->GetScene());
    }

    void Attach(const du::SmartPtr<SymbolAnnotation>& symbol, const Part& part)
    {
        if (symbol && part) {
            symbol->SetAnnotationSymbol(true);
            symbol->AddSelectedPart(part, m_document->GetShapeScene(), part->GetInstance(), dg::DPoint3D::BAD);
        }
    }
    void AttachToPart() { Attach(PickShape(), PickPart()); }
    /// To one that hangs on nothing: of symbols in a ring, one lets go when they are opened, since none can come first.
    void AttachToSymbol()
    {
        const auto other = PickShape();
        std::vector<luannotations::ConnectedPartInfo> parts;
        if (other) {
            other->GetConnectedPartInfo(parts);
        }
        Attach(PickShape(), other && parts.empty() ? other->GetShapeInstance() : nullptr);
        m_hasSymbolsOnSymbols = true;
    }

    void MovePart()
    {
        if (const Part part = PickPart()) {
            part->SetLocation(dg::Location(dg::FMat33::IDENTITY, Point()), true);
        }
    }
    void HidePart()
    {
        if (const Part part = PickPart()) {
            part->SetVisibility(m_data.ConsumeBool());
        }
    }
    void UnloadPart()
    {
        if (const Part part = PickPart()) {
            const auto instance = part->GetInstance();
            m_document->GetShapeScene()->UnloadShapeInstance(instance);
            m_document->GetShapeScene()->LoadShapeInstance(instance);
        }
    }

    void MoveSymbol()
    {
        if (const Annotation symbol = PickSymbol()) {
            symbol->UpdateAnnotationLocation(dg::Location(dg::FMat33::IDENTITY, Point()));
        }
    }
    void HideSymbol()
    {
        if (const Annotation symbol = PickSymbol()) {
            m_data.ConsumeBool() ? symbol->Hide(true, nullptr, 0) : symbol->Show(true, nullptr);
        }
    }

    void ChangeEntry()
    {
        const std::string id = "entry-" + std::to_string(Template());
        const char* const file = m_data.PickValueInArray(kFiles);
        const auto entry = Collection().GetAssociativeObjectById(id);
        if (const auto shape = du::DynamicCast<PartslibraryOlItem>(entry)) {
            shape->SetOlUrl(std::string("SymbolsLibrary/Shape/") + file);
        } else if (const auto image = du::DynamicCast<PartslibraryImageItem>(entry)) {
            image->SetImageUrl(std::string("SymbolsLibrary/2D/") + file);
        }
        if (entry) {
            du::DynamicCast<lusymbols::PartslibraryItem>(entry)->SetTitle(m_data.ConsumeRandomLengthString(8));
            Collection().NotifyChanged(entry);
        }
    }
    void RemoveEntry()
    {
        Collection().RemoveAssociativeObject(
            Collection().GetAssociativeObjectById("entry-" + std::to_string(Template())));
    }

    void Detach()
    {
        if (const Annotation symbol = PickSymbol()) {
            m_detached = symbol;
            m_document->RemoveAnnotation(symbol);
        }
    }
    void AttachAgain()
    {
        if (m_detached && !m_detached->GetScene()) {
            m_document->AddAnnotation(m_detached, SceneOf(*m_detached));
        }
        m_detached = nullptr;
    }
    void CloneSymbol()
    {
        if (const Annotation symbol = PickSymbol()) {
            if (const Annotation clone = symbol->Clone(); clone && m_data.ConsumeBool()) {
                m_document->AddAnnotation(clone, SceneOf(*clone));
            }
        }
    }

    void DoWithUndo()
    {
        if (const Annotation symbol = PickSymbol()) {
            const dg::Location after(dg::FMat33::IDENTITY, Point());
            const auto operation = du::MakeCounted<luk::Operation>();
            operation->AddStep(du::MakeCounted<luannotations::MoveOperationStep>(
                symbol, 0u, symbol->GetMarkupLocation(0), after, true));
            symbol->SetMarkupLocation(0, after);
            luk::World::GetWorld()->GetUndoStack().Push(operation);
        }
    }
    void Undo() { luk::World::GetWorld()->GetUndoStack().Undo(); }
    void Redo() { luk::World::GetWorld()->GetUndoStack().Redo(); }

    void Wait() { luloader::Loader::GetLoader()->WaitForLoads(); }
    void Pump() { luk::Kernel::GetKernel()->ProcessEvents(); }
    void WaitWithEvent()
    {
        if (const Annotation symbol = PickSymbol()) {
            symbol->SetEvent(du::MakeCounted<luk::AsyncEvent>());
        }
    }

    void ChangeProduct()
    {
        std::string problem;
        fuzz::Require(m_document->SetProduct(MakeProduct(), problem), "the same product can take its own place");
    }

    void SaveAndOpen()
    {
        Wait();
        ForgetAll();
        std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> entries;
        for (std::size_t number = 0; number < kEntries; ++number) {
            if (const auto entry = Collection().GetAssociativeObjectById("entry-" + std::to_string(number))) {
                entries.push_back(du::DynamicCast<luk::illustration::SymbolTemplate>(entry));
            }
        }
        const std::string path = fuzz::FillFile("entries.xml", {});
        du::MakeCounted<lusymbols::SymbolTemplateWriter>(false)->ToXml(du::Symbol(path), std::move(entries), {});
        m_document->SetLibraryText(fuzz::ReadFile(path));
        // A symbol that follows its part tells nobody, so that one that hangs on it learns of its place when it is opened.
        m_document = m_workplace.SaveAndOpen(std::move(m_document), !m_hasSymbolsOnSymbols);
    }

    /// What nobody may hold once the document goes.
    void ForgetAll()
    {
        luk::World::GetWorld()->GetUndoStack().Clear();
        m_detached = nullptr;
    }

    void RequireProduct() const
    {
        const luhost::ProductModel model = luhost::ModelOf(*m_document->GetStructure());
        fuzz::Require(model.components.size() == 3, "no part of the product is lost");
    }

    FuzzedDataProvider& m_data;
    fuzz::FuzzWorkplace m_workplace;
    std::unique_ptr<luhost::Document> m_document;
    Annotation m_detached;
    bool m_hasSymbolsOnSymbols = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    [[maybe_unused]] static const bool hasFiles = MakeFiles();
    FuzzedDataProvider provider(data, size);
    Drive(provider).Run();
    return 0;
}
