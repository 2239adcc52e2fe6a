#pragma once

#include <du/SmartPtr.h>

#include <atomic>
#include <cstddef>
#include <mutex>
#include <thread>
#include <utility>

namespace luk
{

/// The one object of its kind that a session hands out at present; for the sources of the host alone.
///
/// Threads and locks: Get is safe on any thread and never waits. Set waits for those that are taking the object before, who
/// are done in a moment.
template <class T>
class CurrentHandle
{
public:
    du::SmartPtr<T> Get() const noexcept
    {
        m_takers.fetch_add(1);
        du::SmartPtr<T> handle(m_object.load());
        m_takers.fetch_sub(1, std::memory_order_release);
        return handle;
    }

    /// The object before is released last, since its end may ask for the current one.
    void Set(du::SmartPtr<T> handle)
    {
        const std::lock_guard lock(m_mutex);
        m_object.store(handle.get());
        while (m_takers.load() > 0) {
            std::this_thread::yield();
        }
        std::swap(m_handle, handle);
    }

    /// The slot lives until the process ends, so that a late caller finds a null handle in it.
    static CurrentHandle& GetSlot()
    {
        static auto* const s_slot = new CurrentHandle;
        return *s_slot;
    }

private:
    mutable std::atomic<std::size_t> m_takers{0};
    std::atomic<T*> m_object{nullptr};
    std::mutex m_mutex; ///< of those that set
    du::SmartPtr<T> m_handle;
};

} // namespace luk
