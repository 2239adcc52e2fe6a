#include <du/SpinLock.h>
#include <luk/MemoryPoolAllocated.h>

#include <array>
#include <atomic>
#include <mutex>
#include <utility>

namespace luk
{

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kPassThrough = true;
#else
constexpr bool kPassThrough = false;
#endif

constexpr std::size_t kClassStep = 16;
constexpr std::size_t kClassCount = 256;
constexpr std::size_t kChunkBytes = std::size_t{64} * 1024;

/// Free blocks of one size. Memory is taken from the system by the chunk and kept.
class SizeClass
{
public:
    using Counters = MemoryPoolAllocated::Counters;

    void* Take(std::size_t size, std::size_t blockSize)
    {
        const std::lock_guard lock(m_lock);
        void* const block = m_free ? TakeFree() : TakeFromChunk(blockSize);
        ++m_counters.liveBlocks;
        m_counters.liveBytes += size;
        return block;
    }

    void GiveBack(void* memory, std::size_t size) noexcept
    {
        const std::lock_guard lock(m_lock);
        m_free = new (memory) FreeBlock{m_free};
        --m_counters.liveBlocks;
        m_counters.liveBytes -= size;
    }

    Counters GetCounters() const noexcept
    {
        const std::lock_guard lock(m_lock);
        return m_counters;
    }

private:
    struct FreeBlock {
        FreeBlock* next;
    };

    void* TakeFree() noexcept
    {
        FreeBlock* const block = m_free;
        m_free = block->next;
        // Blocks come back in any order, so that the next one is hardly ever in the cache.
        __builtin_prefetch(m_free);
        return block;
    }

    void* TakeFromChunk(std::size_t blockSize)
    {
        if (m_chunkLeft < blockSize) {
            m_chunk = static_cast<std::byte*>(::operator new(kChunkBytes));
            m_chunkLeft = kChunkBytes;
        }
        m_chunkLeft -= blockSize;
        return std::exchange(m_chunk, m_chunk + blockSize);
    }

    mutable du::SpinLock m_lock;
    Counters m_counters{};
    FreeBlock* m_free = nullptr;
    std::byte* m_chunk = nullptr;
    std::size_t m_chunkLeft = 0;
};

class Pool
{
public:
    static Pool& Get()
    {
        static auto* const s_pool = new Pool;
        return *s_pool;
    }

    void* Allocate(std::size_t size)
    {
        const std::size_t index = ClassIndex(size);
        if (index < kClassCount) {
            return m_classes[index].Take(size, (index + 1) * kClassStep);
        }
        void* const block = ::operator new(size);
        Count(size);
        return block;
    }

    void Deallocate(void* block, std::size_t size) noexcept
    {
        const std::size_t index = ClassIndex(size);
        if (index < kClassCount) {
            m_classes[index].GiveBack(block, size);
        } else {
            ::operator delete(block);
            Discount(size);
        }
    }

    /// Of blocks that no class keeps.
    void Count(std::size_t bytes) noexcept
    {
        m_otherBlocks.fetch_add(1, std::memory_order_relaxed);
        m_otherBytes.fetch_add(bytes, std::memory_order_relaxed);
    }

    void Discount(std::size_t bytes) noexcept
    {
        m_otherBlocks.fetch_sub(1, std::memory_order_relaxed);
        m_otherBytes.fetch_sub(bytes, std::memory_order_relaxed);
    }

    MemoryPoolAllocated::Counters GetCounters() const noexcept
    {
        MemoryPoolAllocated::Counters all{m_otherBlocks.load(std::memory_order_relaxed),
                                          m_otherBytes.load(std::memory_order_relaxed)};
        for (const SizeClass& sizeClass : m_classes) {
            const MemoryPoolAllocated::Counters ofClass = sizeClass.GetCounters();
            all.liveBlocks += ofClass.liveBlocks;
            all.liveBytes += ofClass.liveBytes;
        }
        return all;
    }

private:
    /// kClassCount for blocks that the pool does not keep.
    static std::size_t ClassIndex(std::size_t size) noexcept
    {
        if (kPassThrough || size > kClassCount * kClassStep) {
            return kClassCount;
        }
        return size == 0 ? 0 : (size - 1) / kClassStep;
    }

    std::array<SizeClass, kClassCount> m_classes;
    std::atomic<std::size_t> m_otherBlocks{0};
    std::atomic<std::size_t> m_otherBytes{0};
};

} // namespace

void* MemoryPoolAllocated::operator new(std::size_t size) { return Pool::Get().Allocate(size); }

void MemoryPoolAllocated::operator delete(void* block, std::size_t size) noexcept
{
    if (block) {
        Pool::Get().Deallocate(block, size);
    }
}

void* MemoryPoolAllocated::operator new(std::size_t size, std::align_val_t alignment)
{
    void* const block = ::operator new(size, alignment);
    Pool::Get().Count(size);
    return block;
}

void MemoryPoolAllocated::operator delete(void* block, std::size_t size, std::align_val_t alignment) noexcept
{
    if (block) {
        ::operator delete(block, alignment);
        Pool::Get().Discount(size);
    }
}

MemoryPoolAllocated::Counters MemoryPoolAllocated::GetCounters() noexcept { return Pool::Get().GetCounters(); }

} // namespace luk
