#include "catalog/PartslibraryUIData.h"
#include "ExampleCatalog.h"

#include <luk/illustration/SymbolTemplateCollection.h>

#include <benchmark/benchmark.h>

namespace
{

/// Collection to gallery rows, a hundred entries to a category.
void Gallery(benchmark::State& state)
{
    bench::GetWorkplace();
    const auto& collection = luk::illustration::SymbolTemplateCollection::GetCollection();
    const std::size_t entries = static_cast<std::size_t>(state.range(0));
    {
        const bench::Catalog catalog = bench::MakeCatalog(entries, entries / 100);
        collection->Clear();
        for (const auto& category : catalog.categories) {
            collection->AddCategory(category);
        }
        for (const auto& item : catalog.templates) {
            collection->AddAssociativeObject(item);
        }
    }
    const auto rows = du::MakeCounted<lusymbols::PartslibraryUIData>("ol_", "img_");
    for (auto _ : state) {
        if (rows->Refresh(collection) != entries) {
            state.SkipWithError("rows are missing");
            break;
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(entries) * static_cast<std::int64_t>(state.iterations()));
    state.SetComplexityN(state.range(0));
    collection->Clear();
}
BENCHMARK(Gallery)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);

} // namespace
