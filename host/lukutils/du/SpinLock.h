#pragma once

#include <atomic>
#include <thread>

namespace du
{

/// Lock for what takes a few instructions, and seldom more, where a std::mutex would cost more than what it guards; for the
/// sources of the host alone. Used with std::lock_guard; not reentrant.
///
/// Cost: one atomic operation. Whoever finds it taken lets others run until it is free.
class SpinLock
{
public:
    SpinLock() noexcept = default;
    ~SpinLock() = default;
    SpinLock(const SpinLock&) = delete;
    SpinLock& operator=(const SpinLock&) = delete;

    void lock() noexcept
    {
        while (m_taken.exchange(true, std::memory_order_acquire)) {
            std::this_thread::yield();
        }
    }
    void unlock() noexcept { m_taken.store(false, std::memory_order_release); }

private:
    std::atomic<bool> m_taken{false};
};

} // namespace du
