#include <luk/MemoryPoolAllocated.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

namespace
{

template <std::size_t Size>
struct Block : luk::MemoryPoolAllocated {
    unsigned char bytes[Size];
};

struct alignas(64) Aligned : luk::MemoryPoolAllocated {
    unsigned char bytes[64];
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

template <std::size_t Size>
void CheckBlocksAreApart()
{
    const std::size_t before = Counters().liveBlocks;
    std::vector<std::unique_ptr<Block<Size>>> blocks;
    for (unsigned i = 0; i < 200; ++i) {
        blocks.push_back(std::make_unique<Block<Size>>());
        std::memset(blocks.back()->bytes, static_cast<int>(i), Size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks.back().get()) % alignof(std::max_align_t), 0u);
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

TEST(MemoryPool, BlocksOfEverySizeAreApart)
{
    CheckBlocksAreApart<1>();
    CheckBlocksAreApart<64>();
    CheckBlocksAreApart<65>();
    CheckBlocksAreApart<4096>();
    CheckBlocksAreApart<4097>();
}

TEST(MemoryPool, CountsTheSizeOfTheWholeObject)
{
    const auto before = Counters();
    std::unique_ptr<Base> object = std::make_unique<Derived>();
    EXPECT_EQ(Counters().liveBytes, before.liveBytes + sizeof(Derived));
    object.reset();
    EXPECT_EQ(Counters().liveBytes, before.liveBytes);
}

TEST(MemoryPool, KeepsUnusualAlignments)
{
    const auto before = Counters();
    const auto object = std::make_unique<Aligned>();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object.get()) % 64, 0u);
    EXPECT_EQ(Counters().liveBlocks, before.liveBlocks + 1);
}

TEST(MemoryPool, TakesBackTheBlockOfAFailedConstructor)
{
    const std::size_t before = Counters().liveBlocks;
    EXPECT_THROW(std::make_unique<Thrower>(), int);
    EXPECT_EQ(Counters().liveBlocks, before);
}

TEST(MemoryPool, ServesManyThreads)
{
    const auto before = Counters();
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            std::vector<std::unique_ptr<Block<100>>> blocks;
            for (unsigned round = 0; round < 2000; ++round) {
                blocks.push_back(std::make_unique<Block<100>>());
                std::memset(blocks.back()->bytes, static_cast<int>(i), sizeof(blocks.back()->bytes));
                if (round % 3 == 0) {
                    blocks.erase(blocks.begin());
                }
            }
            for (const auto& block : blocks) {
                ASSERT_EQ(block->bytes[99], i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Counters().liveBlocks, before.liveBlocks);
    EXPECT_EQ(Counters().liveBytes, before.liveBytes);
}

} // namespace
