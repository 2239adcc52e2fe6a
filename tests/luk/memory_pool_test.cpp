#include "support/Threads.h"

#include <luk/MemoryPoolAllocated.h>

#include <gtest/gtest.h>

#include <cstring>

namespace
{

template <std::size_t Size, std::size_t Alignment = alignof(std::max_align_t)>
struct alignas(Alignment) Block : luk::MemoryPoolAllocated {
    static constexpr std::size_t kAlignment = Alignment;
    unsigned char bytes[Size];
};

struct Base : luk::MemoryPoolAllocated {
    virtual ~Base() = default;
};

struct Derived : Base {
    unsigned char more[500];
};

struct Thrower : luk::MemoryPoolAllocated {
    Thrower() { throw 1; }
};

luk::MemoryPoolAllocated::Counters Counters() { return luk::MemoryPoolAllocated::GetCounters(); }

template <class Kind>
void CheckBlocksAreApart()
{
    const std::size_t before = Counters().liveBlocks;
    std::vector<std::unique_ptr<Kind>> blocks;
    for (unsigned i = 0; i < 200; ++i) {
        blocks.push_back(std::make_unique<Kind>());
        std::memset(blocks.back()->bytes, static_cast<int>(i), sizeof(blocks.back()->bytes));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks.back().get()) % Kind::kAlignment, 0u);
    }
    for (unsigned i = 0; i < 200; ++i) {
        for (const unsigned char byte : blocks[i]->bytes) {
            ASSERT_EQ(byte, i);
        }
    }
    EXPECT_EQ(Counters().liveBlocks, before + 200);
    blocks.clear();
    EXPECT_EQ(Counters().liveBlocks, before);
}

TEST(MemoryPool, BlocksOfEverySizeAndAlignmentAreApart)
{
    CheckBlocksAreApart<Block<1>>();
    CheckBlocksAreApart<Block<64>>();
    CheckBlocksAreApart<Block<65>>();
    CheckBlocksAreApart<Block<4096>>();
    CheckBlocksAreApart<Block<4097>>();
    CheckBlocksAreApart<Block<64, 64>>();
}

TEST(MemoryPool, CountsTheSizeOfTheWholeObject)
{
    const auto before = Counters();
    std::unique_ptr<Base> object = std::make_unique<Derived>();
    EXPECT_EQ(Counters().liveBytes, before.liveBytes + sizeof(Derived));
    object.reset();
    EXPECT_THROW(std::make_unique<Thrower>(), int);
    EXPECT_EQ(Counters().liveBytes, before.liveBytes);
    EXPECT_EQ(Counters().liveBlocks, before.liveBlocks);
}

TEST(MemoryPool, ServesManyThreads)
{
    const auto before = Counters();
    test::OnThreads(4, [](unsigned t) {
        std::vector<std::unique_ptr<Block<100>>> blocks;
        for (unsigned round = 0; round < 2000; ++round) {
            blocks.push_back(std::make_unique<Block<100>>());
            std::memset(blocks.back()->bytes, static_cast<int>(t), sizeof(blocks.back()->bytes));
            if (round % 3 == 0) {
                blocks.erase(blocks.begin());
            }
        }
        for (const auto& block : blocks) {
            ASSERT_EQ(block->bytes[99], t);
        }
    });
    EXPECT_EQ(Counters().liveBlocks, before.liveBlocks);
    EXPECT_EQ(Counters().liveBytes, before.liveBytes);
}

} // namespace
