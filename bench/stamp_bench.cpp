#include "annotations2d/Symbol2D.h"
#include "catalog/PartslibraryImageItem.h"
#include "ExampleCatalog.h"

#include <luhost/Document.h>
#include <luhost/io/ZipPackageFormat.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/Scene.h>
#include <luloader/Loader.h>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <string>
#include <vector>

namespace
{

using luannotations::Symbol2D;
using luannotations::Symbol2DInfo;
using luk::illustration::SymbolTemplateCollection;

constexpr std::size_t kPictures = 100;

std::string PictureName(std::size_t number) { return "picture_" + std::to_string(number % kPictures) + ".bmp"; }

/// The pictures lie in the session's temporary folder, and one library entry stands for each.
void FillCollection()
{
    bench::Workplace& workplace = bench::GetWorkplace(); // has the session that the collection belongs to
    const auto& collection = SymbolTemplateCollection::GetCollection();
    collection->Clear();
    for (std::size_t number = 0; number < kPictures; ++number) {
        const auto item = du::MakeCounted<lusymbols::PartslibraryImageItem>();
        item->SetId("picture-" + std::to_string(number));
        item->SetName("Picture " + std::to_string(number));
        item->SetTitle("Picture " + std::to_string(number));
        item->SetImageUrl(workplace.PictureFile(PictureName(number)));
        collection->AddAssociativeObject(item);
    }
}

luhost::Document::Setup MakeSetup()
{
    return {[](const std::string& classWord) {
                return classWord == "symbol2d" ? du::SmartPtr<du::RefCounted>(new Symbol2D) : nullptr;
            },
            std::make_shared<luhost::io::ZipPackageFormat>()};
}

void PlaceStamps(luhost::Document& document, std::size_t count)
{
    Symbol2DInfo info;
    info.width = 10.0F;
    info.height = 10.0F;
    for (std::size_t number = 0; number < count; ++number) {
        const std::size_t picture = number % kPictures;
        info.imageName = du::Symbol("Picture " + std::to_string(picture));
        info.title = info.imageName;
        info.imageFileName = du::Symbol(PictureName(picture));
        info.center = {static_cast<double>(number % 1000), static_cast<double>(number) / 1000.0, 0.0};
        info.templateIndex = picture;
        document.AddAnnotation(du::SmartPtr<luk::Annotation>(new Symbol2D(info)), document.GetScene());
    }
    luloader::Loader::GetLoader()->WaitForLoads();
}

void AddSizes(benchmark::internal::Benchmark* run)
{
    run->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}

std::size_t Count(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)); }

/// Makes symbols from records, attaches them and loads their pictures.
void AttachAndLoadStamps(benchmark::State& state)
{
    FillCollection();
    for (auto _ : state) {
        const auto document = luhost::Document::Create(MakeSetup());
        PlaceStamps(*document, Count(state));
        if (document->GetScene()->GetMarkupCount() != Count(state)) {
            state.SkipWithError("stamps are missing");
            break;
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(AttachAndLoadStamps)->Apply(AddSizes);

void SaveStamps(benchmark::State& state)
{
    FillCollection();
    const auto document = luhost::Document::Create(MakeSetup());
    PlaceStamps(*document, Count(state));
    std::string error;
    for (auto _ : state) {
        if (!document->Save(bench::GetWorkplace().DocumentFile(Count(state)), error)) {
            state.SkipWithError(error.c_str());
            break;
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(SaveStamps)->Apply(AddSizes);

void OpenStamps(benchmark::State& state)
{
    FillCollection();
    const std::string path = bench::GetWorkplace().DocumentFile(Count(state));
    std::string error;
    {
        const auto document = luhost::Document::Create(MakeSetup());
        PlaceStamps(*document, Count(state));
        document->Save(path, error);
    }
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
BENCHMARK(OpenStamps)->Apply(AddSizes);

/// The least that opening has to do: unpack the same file and parse its content.
void OpenStampsReferenceBareParse(benchmark::State& state)
{
    FillCollection();
    const std::string path = bench::GetWorkplace().DocumentFile(Count(state));
    std::string error;
    {
        const auto document = luhost::Document::Create(MakeSetup());
        PlaceStamps(*document, Count(state));
        document->Save(path, error);
    }
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
BENCHMARK(OpenStampsReferenceBareParse)->Apply(AddSizes);

/// One of a hundred entries gets a new title, among stamps of all of them.
void ReloadOneChangedEntry(benchmark::State& state)
{
    FillCollection();
    const auto document = luhost::Document::Create(MakeSetup());
    PlaceStamps(*document, Count(state));
    const auto& collection = SymbolTemplateCollection::GetCollection();
    const auto item =
        du::DynamicCast<lusymbols::PartslibraryImageItem>(collection->GetAssociativeObjectById("picture-0"));
    bool isFirst = false;
    for (auto _ : state) {
        isFirst = !isFirst;
        item->SetTitle(isFirst ? "First title" : "Second title");
        collection->NotifyChanged(item);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(ReloadOneChangedEntry)->Apply(AddSizes);

} // namespace
