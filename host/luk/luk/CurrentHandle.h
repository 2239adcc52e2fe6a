#pragma once

#include <du/SmartPtr.h>

#include <mutex>
#include <utility>

namespace luk
{

/// The one object of its kind that a session hands out at present; for the sources of the host alone.
template <class T>
class CurrentHandle
{
public:
    du::SmartPtr<T> Get() const
    {
        const std::lock_guard lock(m_mutex);
        return m_handle;
    }

    /// The object before is released with no lock held, since its end may ask for the current one.
    void Set(du::SmartPtr<T> handle)
    {
        const std::lock_guard lock(m_mutex);
        std::swap(m_handle, handle);
    }

    /// The slot lives until the process ends, so that a late caller finds a null handle in it.
    static CurrentHandle& GetSlot()
    {
        static auto* const s_slot = new CurrentHandle;
        return *s_slot;
    }

private:
    mutable std::mutex m_mutex;
    du::SmartPtr<T> m_handle;
};

} // namespace luk
