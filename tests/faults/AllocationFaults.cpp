#include "faults/AllocationFaults.h"

#include <pugixml.hpp>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

namespace test::allocation_faults
{

namespace
{

std::atomic<std::size_t> s_liveBytes{0};
std::atomic<bool> s_isOpen{false};
std::atomic<bool> s_isLasting{false};
std::atomic<bool> s_hasFailed{false};
std::atomic<std::size_t> s_number{0};
std::atomic<std::size_t> s_count{0};

/// The number is what is needed to look for the cause.
[[noreturn]] void TellNumber()
{
    std::fprintf(stderr, "terminate: allocation %zu failed%s\n", s_number.load(),
                 s_isLasting ? " and all after it" : "");
    std::abort();
}

bool Fails()
{
    if (!s_isOpen) {
        return false;
    }
    const std::size_t count = ++s_count;
    const bool fails = count == s_number || (s_isLasting && count > s_number);
    s_hasFailed = s_hasFailed || fails;
    return fails;
}

/// In front of each block stands its size, in as much room as its alignment asks for.
void* TakeAligned(std::size_t size, std::size_t alignment)
{
    const std::size_t room = std::max(alignment, alignof(std::max_align_t));
    void* memory = nullptr;
    if (Fails() || ::posix_memalign(&memory, room, room + size) != 0) {
        return nullptr;
    }
    s_liveBytes += size;
    std::memcpy(memory, &size, sizeof(size));
    return static_cast<char*>(memory) + room;
}

void GiveAligned(void* block, std::size_t alignment)
{
    if (block) {
        void* const memory = static_cast<char*>(block) - std::max(alignment, alignof(std::max_align_t));
        std::size_t size = 0;
        std::memcpy(&size, memory, sizeof(size));
        s_liveBytes -= size;
        std::free(memory);
    }
}

void* Take(std::size_t size) { return TakeAligned(size, 1); }
void* Take(std::size_t size, std::align_val_t alignment)
{
    return TakeAligned(size, static_cast<std::size_t>(alignment));
}
void Give(void* block) { GiveAligned(block, 1); }
void Give(void* block, std::align_val_t alignment) { GiveAligned(block, static_cast<std::size_t>(alignment)); }

void* OrThrow(void* memory)
{
    if (!memory) {
        throw std::bad_alloc();
    }
    return memory;
}

/// Before the first document is parsed.
[[maybe_unused]] const bool s_watchesParser = [] {
    pugi::set_memory_management_functions([](std::size_t size) { return Take(size); },
                                          [](void* block) { Give(block); });
    std::set_terminate(TellNumber);
    return true;
}();

} // namespace

Window::Window(Mode mode, std::size_t number)
{
    s_isLasting = mode == Mode::FromThere;
    s_number = number;
    s_count = 0;
    s_hasFailed = false;
    s_isOpen = true;
}

Window::~Window() { s_isOpen = false; }

bool Window::HasFailed() { return s_hasFailed; }

std::size_t GetLiveBytes() { return s_liveBytes; }

} // namespace test::allocation_faults

using test::allocation_faults::Give;
using test::allocation_faults::OrThrow;
using test::allocation_faults::Take;

void* operator new(std::size_t size) { return OrThrow(Take(size)); }
void* operator new[](std::size_t size) { return OrThrow(Take(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return OrThrow(Take(size, alignment)); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return OrThrow(Take(size, alignment)); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return Take(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return Take(size, alignment);
}
void operator delete(void* memory) noexcept { Give(memory); }
void operator delete[](void* memory) noexcept { Give(memory); }
void operator delete(void* memory, std::size_t) noexcept { Give(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Give(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Give(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Give(memory); }
void operator delete(void* memory, std::align_val_t alignment) noexcept { Give(memory, alignment); }
void operator delete[](void* memory, std::align_val_t alignment) noexcept { Give(memory, alignment); }
void operator delete(void* memory, std::size_t, std::align_val_t alignment) noexcept { Give(memory, alignment); }
void operator delete[](void* memory, std::size_t, std::align_val_t alignment) noexcept { Give(memory, alignment); }
void operator delete(void* memory, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    Give(memory, alignment);
}
void operator delete[](void* memory, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    Give(memory, alignment);
}
