#include "annotations3d/SymbolAnnotation.h"
#include "catalog/PartslibraryOlItem.h"
#include "ExampleCatalog.h"

#include <luhost/Document.h>
#include <luhost/io/ZipPackageFormat.h>
#include <luhost/ProductModel.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/Mesh.h>
#include <luk/ShapeScene.h>
#include <luk/Tree.h>
#include <luloader/Loader.h>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <string>
#include <vector>

namespace
{

using luannotations::SymbolAnnotation;
using luannotations::SymbolInfo;
using luk::illustration::SymbolTemplateCollection;

constexpr std::size_t kShapes = 100;

std::string ShapeName(std::size_t number) { return "shape_" + std::to_string(number % kShapes) + ".ply"; }

/// The shapes lie in the session's temporary folder, and one library entry stands for each.
void FillCollection()
{
    bench::Workplace& workplace = bench::GetWorkplace(); // has the session that the collection belongs to
    const auto& collection = SymbolTemplateCollection::GetCollection();
    collection->Clear();
    for (std::size_t number = 0; number < kShapes; ++number) {
        const auto item = du::MakeCounted<lusymbols::PartslibraryOlItem>();
        item->SetId("shape-" + std::to_string(number));
        item->SetName("Shape " + std::to_string(number));
        item->SetTitle("Shape " + std::to_string(number));
        item->SetOlUrl(workplace.ShapeFile(ShapeName(number), number));
        collection->AddAssociativeObject(item);
    }
}

luhost::Document::Setup MakeSetup()
{
    return {[](const std::string& classWord) {
                return classWord == "symbol3d" ? du::SmartPtr<du::RefCounted>(new SymbolAnnotation) : nullptr;
            },
            std::make_shared<luhost::io::ZipPackageFormat>()};
}

std::string PartPath(std::size_t number)
{
    return "/assembly-" + std::to_string(number / 100) + "/part-" + std::to_string(number % 100);
}

/// Assemblies of a hundred parts each, all of one mesh.
luhost::ProductModel MakeProduct(std::size_t parts)
{
    luhost::ProductModel model;
    std::vector<dg::FVec3> corners = {{0.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}};
    model.components.push_back(
        {"Part",
         du::MakeCounted<luk::Mesh>(corners, std::vector<std::uint32_t>{0, 1, 2}, std::vector<luk::Mesh::Part>()),
         {}});
    luhost::ProductModel::Component assembly{"Assembly", nullptr, {}};
    for (std::size_t number = 0; number < 100; ++number) {
        assembly.uses.push_back({"part-" + std::to_string(number), 0,
                                 dg::Location(dg::FMat33::IDENTITY, {static_cast<double>(number), 0.0, 0.0})});
    }
    model.components.push_back(std::move(assembly));
    luhost::ProductModel::Component root{"Product", nullptr, {}};
    for (std::size_t number = 0; number < parts / 100; ++number) {
        root.uses.push_back({"assembly-" + std::to_string(number), 1,
                             dg::Location(dg::FMat33::IDENTITY, {0.0, static_cast<double>(number), 0.0})});
    }
    model.components.push_back(std::move(root));
    return model;
}

std::unique_ptr<luhost::Document> MakeDocument(std::size_t parts, benchmark::State& state)
{
    auto document = luhost::Document::Create(MakeSetup());
    std::string problem;
    if (parts > 0 && !document->SetProduct(MakeProduct(parts), problem)) {
        state.SkipWithError(problem.c_str());
    }
    return document;
}

/// @param parts of the product; each symbol is attached to one of them, if there are any
void PlaceSymbols(luhost::Document& document, std::size_t count, std::size_t parts)
{
    for (std::size_t number = 0; number < count; ++number) {
        const std::size_t shape = number % kShapes;
        SymbolInfo info;
        info.name = du::Symbol("Shape " + std::to_string(shape));
        info.title = info.name.GetText();
        info.fileName = du::Symbol(ShapeName(shape));
        info.locPosition = {static_cast<double>(number % 1000), static_cast<double>(number) / 1000.0, 0.0};
        info.templateIndex = shape;
        info.isAnnotationSymbol = parts > 0;
        if (parts > 0) {
            const dg::DPoint3D at(static_cast<double>(number % parts % 100), static_cast<double>(number % parts / 100),
                                  0.0);
            info.connectedParts.push_back({du::Symbol(PartPath(number % parts)), {}, at, {0.0, 0.0, 5.0}});
        }
        const auto symbol = du::MakeCounted<SymbolAnnotation>();
        symbol->SetSymbolInfo(info);
        document.AddAnnotation(symbol, document.GetScene());
    }
    luloader::Loader::GetLoader()->WaitForLoads();
}

std::size_t Count(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)); }

void AddSizes(benchmark::internal::Benchmark* run)
{
    run->Arg(1000)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}

/// Makes symbols from records, puts their nodes into the product and loads their shapes.
void PlaceFreeSymbols(benchmark::State& state)
{
    FillCollection();
    for (auto _ : state) {
        const auto document = MakeDocument(0, state);
        PlaceSymbols(*document, Count(state), 0);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(PlaceFreeSymbols)->Apply(AddSizes);

/// A document in a file, with as many parts as symbols, each of which is on one of them.
std::string SavedDocument(benchmark::State& state)
{
    FillCollection();
    const std::string path = bench::GetWorkplace().DocumentFile(Count(state));
    const auto document = MakeDocument(Count(state), state);
    PlaceSymbols(*document, Count(state), Count(state));
    std::string error;
    if (!document->Save(path, error)) {
        state.SkipWithError(error.c_str());
    }
    return path;
}

void OpenAttachedSymbols(benchmark::State& state)
{
    const std::string path = SavedDocument(state);
    std::string error;
    for (auto _ : state) {
        auto document = luhost::Document::Open(path, MakeSetup(), error);
        if (!document) {
            state.SkipWithError(error.c_str());
            break;
        }
        document->AttachAnnotations();
        luloader::Loader::GetLoader()->WaitForLoads();
        // Closing it is no part of opening.
        state.PauseTiming();
        document = nullptr;
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(OpenAttachedSymbols)->Apply(AddSizes);

/// The least that opening has to do: unpack the same file and parse its content.
void OpenAttachedSymbolsReferenceBareParse(benchmark::State& state)
{
    const std::string path = SavedDocument(state);
    std::string error;
    for (auto _ : state) {
        std::vector<luhost::PackageEntry> entries;
        luhost::io::ZipPackageFormat().Read(path, entries, error);
        for (const luhost::PackageEntry& entry : entries) {
            if (entry.name == "document.xml") {
                pugi::xml_document parsed;
                benchmark::DoNotOptimize(parsed.load_buffer(entry.bytes.data(), entry.bytes.size()));
            }
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(OpenAttachedSymbolsReferenceBareParse)->Apply(AddSizes);

void SaveAttachedSymbols(benchmark::State& state)
{
    FillCollection();
    const auto document = MakeDocument(Count(state), state);
    PlaceSymbols(*document, Count(state), Count(state));
    std::string error;
    for (auto _ : state) {
        if (!document->Save(bench::GetWorkplace().DocumentFile(Count(state)), error)) {
            state.SkipWithError(error.c_str());
            break;
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(SaveAttachedSymbols)->Apply(AddSizes);

/// Moves one part that has one symbol, among parts of which the first `symbols` have one each: the others must not count.
void MoveOnePart(benchmark::State& state)
{
    FillCollection();
    const auto parts = static_cast<std::size_t>(state.range(0));
    const auto symbols = static_cast<std::size_t>(state.range(1));
    const auto document = MakeDocument(parts, state);
    PlaceSymbols(*document, symbols, parts);
    const luk::ShapeScene& scene = *document->GetShapeScene();
    const auto part = scene.GetShapeInstance(scene.GetTree()->FindInstance(du::Symbol(PartPath(0))));
    const auto symbol = du::DynamicCast<SymbolAnnotation>(document->GetAnnotations().at(0));
    double height = 0.0;
    for (auto _ : state) {
        height += 1.0;
        part->SetLocation(dg::Location(dg::FMat33::IDENTITY, {0.0, 0.0, height}), true);
    }
    if (std::not_equal_to<double>()(symbol->GetShapeInstance()->GetLocation().GetPosition().z, height + 5.0)) {
        state.SkipWithError("the symbol has not followed");
    }
}
BENCHMARK(MoveOnePart)->Args({1000, 1})->Args({100000, 1})->Args({100000, 1000})->Args({100000, 10000});

} // namespace
