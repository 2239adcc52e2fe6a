#include "support/Threads.h"

#include <du/Symbol.h>

#include <gtest/gtest.h>

#include <atomic>
#include <unordered_set>

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
    EXPECT_NE(null, du::Symbol(""));
    EXPECT_FALSE(du::Symbol("").IsNull());
    EXPECT_TRUE(null.IsEmpty());
    EXPECT_EQ(null.GetText(), "");
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(du::Symbol::Find("a text of this test alone"), null) << "a search makes no symbol";
    }
}

TEST(Symbol, ManyThreadsAgreeOnEverySymbolWhileTheTablesGrow)
{
    constexpr unsigned kThreads = 4;
    constexpr std::size_t kTexts = 20000;
    std::vector<std::vector<du::Symbol>> symbolsOf(kThreads, std::vector<du::Symbol>(kTexts));
    std::atomic<unsigned> found{0};
    test::OnThreads(kThreads, [&](unsigned t) {
        for (std::size_t step = 0; step < kTexts; ++step) {
            const std::size_t i = t % 2 == 0 ? step : kTexts - 1 - step;
            const std::string text = "thread test " + std::to_string(i);
            symbolsOf[t][i] = du::Symbol(text);
            found += du::Symbol::Find(text) == symbolsOf[t][i] ? 1 : 0;
        }
    });
    EXPECT_EQ(found, kThreads * kTexts);
    EXPECT_EQ(symbolsOf, std::vector(kThreads, symbolsOf[0]));
    EXPECT_EQ(std::unordered_set<du::Symbol>(symbolsOf[0].begin(), symbolsOf[0].end()).size(), kTexts);
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
