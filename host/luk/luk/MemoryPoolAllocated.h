#pragma once

#include <du/Export.h>

#include <cstddef>
#include <new>

namespace luk
{

/// Base that gives a class the host's pool as its operator new and delete.
///
/// Use: kernel objects come and go often and in few sizes; the pool keeps freed blocks of each size class for the next
/// one. Blocks above the largest class go to the global allocator.
///
/// Threads and locks: every call is safe on any thread.
///
/// Errors: throws std::bad_alloc when memory is exhausted, as the global allocator does.
///
/// Cost: one short lock and a list operation. The pool is never torn down, since constants of plug-ins may outlive every
/// session. Builds with AddressSanitizer or ThreadSanitizer hand every block through to the global allocator, so
/// that misuse is still found;
/// the counters are kept there too.
class LUHOST_API MemoryPoolAllocated
{
public:
    struct Counters {
        std::size_t liveBlocks; ///< handed out and not yet given back
        std::size_t liveBytes;  ///< as asked for, without the rounding to size classes
    };

    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;
    static void* operator new(std::size_t size, std::align_val_t alignment);
    static void operator delete(void* block, std::size_t size, std::align_val_t alignment) noexcept;

    static Counters GetCounters() noexcept;

protected:
    MemoryPoolAllocated() noexcept = default;
    ~MemoryPoolAllocated() = default;
    MemoryPoolAllocated(const MemoryPoolAllocated&) noexcept = default;
    MemoryPoolAllocated& operator=(const MemoryPoolAllocated&) noexcept = default;
};

} // namespace luk
