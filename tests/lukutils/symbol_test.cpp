#include <du/Symbol.h>
#include <du/UuidGen.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

namespace
{

TEST(Symbol, EqualTextsAreOneSymbolWhateverTheirLength)
{
    for (std::size_t length = 0; length < 70; ++length) {
        std::string text(length, 'x');
        const du::Symbol symbol(text);
        EXPECT_EQ(symbol, du::Symbol(text)) << length;
        EXPECT_EQ(&symbol.GetText(), &du::Symbol(text).GetText()) << length;
        EXPECT_EQ(symbol.GetText(), text);
        for (std::size_t i = 0; i < length; ++i) {
            text[i] = 'y';
            EXPECT_NE(symbol, du::Symbol(text)) << length << " changed at " << i;
            text[i] = 'x';
        }
    }
    EXPECT_NE(du::Symbol(std::string_view("a\0b", 3)), du::Symbol(std::string_view("a\0c", 3)));
}

TEST(Symbol, NullDiffersFromTheEmptyTextAndReadsAsIt)
{
    const du::Symbol null;
    const du::Symbol empty("");
    EXPECT_NE(null, empty);
    EXPECT_TRUE(null.IsNull());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_TRUE(null.IsEmpty());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(null.GetText(), "");
}

TEST(Symbol, MovedFromIsNull)
{
    du::Symbol from("moved");
    du::Symbol to(std::move(from));
    EXPECT_TRUE(from.IsNull());
    EXPECT_EQ(to.GetText(), "moved");
    from = std::move(to);
    EXPECT_TRUE(to.IsNull());
    EXPECT_EQ(from.GetText(), "moved");
}

TEST(Symbol, FindInternsNothing)
{
    std::string text;
    du::UuidGen::GetUuidString(text);
    EXPECT_TRUE(du::Symbol::Find(text).IsNull());
    EXPECT_TRUE(du::Symbol::Find(text).IsNull());
    const du::Symbol made(text);
    EXPECT_EQ(du::Symbol::Find(text), made);
}

TEST(Symbol, ManyThreadsAgreeOnEverySymbolWhileTheTablesGrow)
{
    constexpr unsigned kThreads = 4;
    constexpr std::size_t kTexts = 20000;
    std::vector<std::vector<du::Symbol>> symbolsOf(kThreads, std::vector<du::Symbol>(kTexts));
    std::atomic<unsigned> found{0};
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (std::size_t step = 0; step < kTexts; ++step) {
                const std::size_t i = t % 2 == 0 ? step : kTexts - 1 - step;
                const std::string text = "thread test " + std::to_string(i);
                symbolsOf[t][i] = du::Symbol(text);
                found += du::Symbol::Find(text) == symbolsOf[t][i] ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(found, kThreads * kTexts);
    std::unordered_set<du::Symbol> distinct;
    for (const auto& symbols : symbolsOf) {
        EXPECT_EQ(symbols, symbolsOf[0]);
        distinct.insert(symbols.begin(), symbols.end());
    }
    EXPECT_EQ(distinct.size(), kTexts);
}

TEST(Symbol, HashesOfSimilarTextsSpreadInLowAndHighBits)
{
    std::set<std::size_t> low;
    std::set<std::size_t> high;
    for (int i = 0; i < 4096; ++i) {
        const std::size_t hash = du::Symbol("/root/part_" + std::to_string(i)).Hash();
        low.insert(hash & 0xFFF);
        high.insert(hash >> (8 * sizeof(hash) - 12));
    }
    // 4096 balls in 4096 boxes leave about 63 % of the boxes used.
    EXPECT_GT(low.size(), 2400U);
    EXPECT_GT(high.size(), 2400U);
}

} // namespace
