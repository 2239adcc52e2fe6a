#include <luk/MemoryPoolAllocated.h>

#include <array>
#include <atomic>
#include <mutex>

namespace luk
{

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kPassThrough = true;
#else
constexpr bool kPassThrough = false;
#endif

constexpr std::size_t kClassStep = 64;
constexpr std::size_t kClassCount = 64;
constexpr std::size_t kChunkBytes = std::size_t{64} * 1024;

/// Free blocks of one size. Memory is taken from the system by the chunk and kept.
class SizeClass
{
public:
    void* Take(std::size_t blockSize)
    {
        const std::lock_guard lock(m_mutex);
        if (m_free) {
            FreeBlock* const block = m_free;
            m_free = block->next;
            return block;
        }
        if (m_chunkLeft < blockSize) {
            m_chunk = static_cast<std::byte*>(::operator new(kChunkBytes));
            m_chunkLeft = kChunkBytes;
        }
        void* const block = m_chunk;
        m_chunk += blockSize;
        m_chunkLeft -= blockSize;
        return block;
    }

    void GiveBack(void* memory) noexcept
    {
        const std::lock_guard lock(m_mutex);
        m_free = new (memory) FreeBlock{m_free};
    }

private:
    struct FreeBlock {
        FreeBlock* next;
    };

    std::mutex m_mutex;
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
        void* const block =
            index < kClassCount ? m_classes[index].Take((index + 1) * kClassStep) : ::operator new(size);
        Count(size);
        return block;
    }

    void Deallocate(void* block, std::size_t size) noexcept
    {
        const std::size_t index = ClassIndex(size);
        if (index < kClassCount) {
            m_classes[index].GiveBack(block);
        } else {
            ::operator delete(block);
        }
        Discount(size);
    }

    void Count(std::size_t bytes) noexcept
    {
        m_liveBlocks.fetch_add(1, std::memory_order_relaxed);
        m_liveBytes.fetch_add(bytes, std::memory_order_relaxed);
    }

    void Discount(std::size_t bytes) noexcept
    {
        m_liveBlocks.fetch_sub(1, std::memory_order_relaxed);
        m_liveBytes.fetch_sub(bytes, std::memory_order_relaxed);
    }

    MemoryPoolAllocated::Counters GetCounters() const noexcept
    {
        return {m_liveBlocks.load(std::memory_order_relaxed), m_liveBytes.load(std::memory_order_relaxed)};
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
    std::atomic<std::size_t> m_liveBlocks{0};
    std::atomic<std::size_t> m_liveBytes{0};
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
