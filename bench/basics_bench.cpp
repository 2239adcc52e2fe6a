#include <du/SmartPtr.h>
#include <du/Symbol.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <vector>

namespace
{

/// Names as documents hold them, enough of them to leave the innermost cache.
std::vector<std::string> MakeTexts()
{
    std::vector<std::string> texts;
    for (int i = 0; i < 256; ++i) {
        texts.push_back("attachedToPart" + std::to_string(i));
    }
    return texts;
}

void SymbolFromKnownText(benchmark::State& state)
{
    const std::vector<std::string> texts = MakeTexts();
    for (const std::string& text : texts) {
        benchmark::DoNotOptimize(du::Symbol(text));
    }
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(du::Symbol(texts[next]));
        next = (next + 1) % texts.size();
    }
}
BENCHMARK(SymbolFromKnownText);

void SymbolComparison(benchmark::State& state)
{
    du::Symbol a("one");
    du::Symbol b("two");
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(a == b);
    }
}
BENCHMARK(SymbolComparison);

void SymbolCopy(benchmark::State& state)
{
    du::Symbol a("one");
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        du::Symbol copy = a;
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(SymbolCopy);

/// Copies alone: giving the references back is not timed.
void HandleCopy(benchmark::State& state)
{
    using Handle = du::SmartPtr<du::RefCounted>;
    const Handle source(new du::RefCounted);
    constexpr std::size_t kCopies = 1024;
    std::vector<Handle> copies;
    copies.reserve(kCopies);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        copies.assign(kCopies, source);
        benchmark::ClobberMemory();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(elapsed.count() / static_cast<double>(kCopies));
        copies.clear();
    }
}
BENCHMARK(HandleCopy)->UseManualTime()->Iterations(20000);

void HandleCopyAndRelease(benchmark::State& state)
{
    const du::SmartPtr<du::RefCounted> source(new du::RefCounted);
    for (auto _ : state) {
        du::SmartPtr<du::RefCounted> copy = source;
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(HandleCopyAndRelease);

} // namespace
