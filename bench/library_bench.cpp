#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryItem.h"
#include "ExampleCatalog.h"
#include "Libxml2Library.h"
#include "xml/SymbolTemplateLoader.h"
#include "xml/SymbolTemplateWriter.h"

#include <luk/illustration/SymbolTemplateCollection.h>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <filesystem>
#include <string>

namespace
{

using lusymbols::SymbolTemplateLoader;
using lusymbols::SymbolTemplateWriter;

void AddSizes(benchmark::internal::Benchmark* run)
{
    run->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}

void SetBytes(benchmark::State& state, std::size_t bytesEach)
{
    // Not as a rate: Google Benchmark would divide by what the first thread worked, and there are others.
    state.counters["bytes"] = static_cast<double>(bytesEach);
    state.SetComplexityN(state.range(0));
}

std::size_t Entries(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)); }

/// File to catalog, in a program that has just begun. The memory is what the loader and its lists hold afterwards.
void Load(benchmark::State& state)
{
    const std::string path = bench::GetWorkplace().LibraryFile(Entries(state));
    double bytesPerEntry = 0;
    for (auto _ : state) {
        // Counting walks all free memory, which is no part of loading.
        state.PauseTiming();
        const std::size_t before = bench::BytesInUse();
        state.ResumeTiming();
        auto loader = du::MakeCounted<SymbolTemplateLoader>();
        bench::Templates templates;
        loader->GetTemplateList(du::Symbol(path), templates);
        if (templates.size() != Entries(state)) {
            state.SkipWithError("entries are missing");
            break;
        }
        // The catalog is what the work was for; giving it up is no part of it.
        state.PauseTiming();
        bytesPerEntry = static_cast<double>(bench::BytesInUse() - before) / static_cast<double>(templates.size());
        bench::Templates().swap(templates);
        loader = nullptr;
        bench::GiveFreeMemoryBack();
        state.ResumeTiming();
    }
    state.counters["bytes_per_entry"] = bytesPerEntry;
    SetBytes(state, bench::FileSize(path));
}
BENCHMARK(Load)->Apply(AddSizes);

void LoadReferenceBarePugixml(benchmark::State& state)
{
    const std::string path = bench::GetWorkplace().LibraryFile(Entries(state));
    for (auto _ : state) {
        {
            pugi::xml_document document;
            benchmark::DoNotOptimize(document.load_file(path.c_str()));
        }
        state.PauseTiming();
        bench::GiveFreeMemoryBack();
        state.ResumeTiming();
    }
    SetBytes(state, bench::FileSize(path));
}
BENCHMARK(LoadReferenceBarePugixml)->Apply(AddSizes);

void LoadReferenceLibxml2(benchmark::State& state)
{
    const std::string path = bench::GetWorkplace().LibraryFile(Entries(state));
    for (auto _ : state) {
        bench::Catalog catalog = bench::LoadWithLibxml2(path);
        if (catalog.templates.size() != Entries(state)) {
            state.SkipWithError("entries are missing");
            break;
        }
        state.PauseTiming();
        catalog = {};
        state.ResumeTiming();
    }
    SetBytes(state, bench::FileSize(path));
}
BENCHMARK(LoadReferenceLibxml2)->Apply(AddSizes);

/// Without being timed. @return the size that it had
std::size_t RemoveWritten(const std::string& path, benchmark::State& state)
{
    state.PauseTiming();
    const std::size_t bytes = bench::FileSize(path);
    std::filesystem::remove(path);
    state.ResumeTiming();
    return bytes;
}

/// Catalog to a new file.
void Write(benchmark::State& state)
{
    const bench::Catalog catalog = bench::MakeCatalog(Entries(state), Entries(state) / 100);
    const std::string path = bench::GetWorkplace().OutputFile();
    std::size_t bytes = 0;
    for (auto _ : state) {
        bench::Templates templates = catalog.templates;
        du::MakeCounted<SymbolTemplateWriter>(false)->ToXml(du::Symbol(path), std::move(templates), catalog.categories);
        bytes = RemoveWritten(path, state);
    }
    SetBytes(state, bytes);
}
BENCHMARK(Write)->Apply(AddSizes);

void WriteReferenceLibxml2(benchmark::State& state)
{
    const bench::Catalog catalog = bench::MakeCatalog(Entries(state), Entries(state) / 100);
    const std::string path = bench::GetWorkplace().OutputFile();
    std::size_t bytes = 0;
    for (auto _ : state) {
        bench::WriteWithLibxml2(path, catalog);
        bytes = RemoveWritten(path, state);
    }
    SetBytes(state, bytes);
}
BENCHMARK(WriteReferenceLibxml2)->Apply(AddSizes);

/// A second document, all of whose names are taken, into a loader that holds the first.
void MergeTakenNames(benchmark::State& state)
{
    const std::string path = bench::GetWorkplace().LibraryFile(Entries(state));
    const auto loader = du::MakeCounted<SymbolTemplateLoader>();
    bench::Templates first;
    loader->GetTemplateList(du::Symbol(path), first);
    for (auto _ : state) {
        bench::Templates templates;
        loader->GetTemplateList(du::Symbol(path), templates);
        if (templates.size() != first.size()) {
            state.SkipWithError("entries were added");
            break;
        }
    }
    SetBytes(state, bench::FileSize(path));
}
BENCHMARK(MergeTakenNames)->Apply(AddSizes);

/// One look-up by id in the host's collection.
void LookUpById(benchmark::State& state)
{
    const auto& collection = luk::illustration::SymbolTemplateCollection::GetCollection();
    const bench::Catalog catalog = bench::MakeCatalog(Entries(state), 1);
    collection->Clear();
    for (const auto& item : catalog.templates) {
        collection->AddAssociativeObject(item);
    }
    std::size_t next = 0;
    for (auto _ : state) {
        const std::string& id = catalog.templates[next]->GetId();
        benchmark::DoNotOptimize(lusymbols::Partslibrary::GetItemFromCollection(id));
        next = (next + 7919) % catalog.templates.size();
    }
    collection->Clear();
}
BENCHMARK(LookUpById)->RangeMultiplier(10)->Range(1000, 1000000);

void LookUpCategoryByName(benchmark::State& state)
{
    const auto& collection = luk::illustration::SymbolTemplateCollection::GetCollection();
    const bench::Catalog catalog = bench::MakeCatalog(0, Entries(state));
    collection->Clear();
    for (const auto& category : catalog.categories) {
        collection->AddCategory(category);
    }
    std::size_t next = 0;
    for (auto _ : state) {
        const std::string& name = catalog.categories[next]->GetName();
        benchmark::DoNotOptimize(lusymbols::Partslibrary::GetCategoryFromCollectionByName(name));
        next = (next + 7919) % catalog.categories.size();
    }
    collection->Clear();
}
BENCHMARK(LookUpCategoryByName)->RangeMultiplier(10)->Range(1000, 1000000);

} // namespace
