#pragma once

#include <du/RefCounted.h>

#include <cstddef>
#include <string_view> // std::hash
#include <type_traits>
#include <utility>

namespace du
{

/// Counted handle of a RefCounted object; holds exactly one reference, under its own address as the owner tag.
///
/// Ownership: a handle made from a raw pointer shares the object (it adds a reference); it never adopts one.
///
/// Threads: two threads may use two handles of one object; one handle is used by one thread at a time.
///
/// Cost: a copy is one atomic operation, a move none (with the ledger built in, a move writes its new address there).
template <class T>
class SmartPtr
{
public:
    using element_type = T;

    SmartPtr() noexcept = default;
    SmartPtr(std::nullptr_t) noexcept {}
    explicit SmartPtr(T* object) noexcept : m_object(object) { Acquire(); }

    SmartPtr(const SmartPtr& other) noexcept : m_object(other.m_object) { Acquire(); }
    SmartPtr(SmartPtr&& other) noexcept { TakeFrom(other); }

    template <class U>
    requires std::is_convertible_v<U*, T*> SmartPtr(const SmartPtr<U>& other)
    noexcept : m_object(other.get()) { Acquire(); }

    template <class U>
    requires std::is_convertible_v<U*, T*> SmartPtr(SmartPtr<U>&& other)
    noexcept { TakeFrom(other); }

    ~SmartPtr() { Release(m_object); }

    SmartPtr& operator=(const SmartPtr& other) noexcept { return *this = other.m_object; }

    SmartPtr& operator=(SmartPtr&& other) noexcept
    {
        if (this != &other) {
            T* const old = m_object;
            TakeFrom(other);
            Release(old);
        }
        return *this;
    }

    /// Shares the given object. The new reference is taken before the old one goes; the same object changes nothing.
    SmartPtr& operator=(T* object) noexcept
    {
        if (object != m_object) {
            T* const old = m_object;
            m_object = object;
            Acquire();
            Release(old);
        }
        return *this;
    }

    SmartPtr& operator=(std::nullptr_t) noexcept
    {
        Release(std::exchange(m_object, nullptr));
        return *this;
    }

    T* get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    friend bool operator==(const SmartPtr& handle, std::nullptr_t) noexcept { return handle.m_object == nullptr; }

    template <class U>
    bool operator==(const SmartPtr<U>& other) const noexcept
    {
        return m_object == other.get();
    }

private:
    template <class U>
    friend class SmartPtr;

    void Acquire() const noexcept
    {
        if (m_object) {
            m_object->AddReference(this);
        }
    }

    void Release(T* object) const noexcept
    {
        if (object) {
            object->RemoveReference(this);
        }
    }

    template <class U>
    void TakeFrom(SmartPtr<U>& other) noexcept
    {
#if LUHOST_REFERENCE_LEDGER
        m_object = other.m_object;
        Acquire();
        other = nullptr;
#else
        m_object = std::exchange(other.m_object, nullptr);
#endif
    }

    T* m_object = nullptr;
};

/// The same object as another class, or null when it is of none such.
template <class T, class U>
SmartPtr<T> DynamicCast(const SmartPtr<U>& handle) noexcept
{
    return SmartPtr<T>(dynamic_cast<T*>(handle.get()));
}

/// A new object and its first handle.
template <class T, class... Args>
SmartPtr<T> MakeCounted(Args&&... args)
{
    return SmartPtr<T>(new T(std::forward<Args>(args)...));
}

} // namespace du

template <class T>
struct std::hash<du::SmartPtr<T>> {
    std::size_t operator()(const du::SmartPtr<T>& handle) const noexcept { return std::hash<T*>()(handle.get()); }
};
