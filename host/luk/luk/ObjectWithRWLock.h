#pragma once

#include <dp/ReadWriteLock.h>
#include <luk/Object.h>

namespace luk
{

/// Kernel object with a read-write lock of its own.
///
/// Threads and locks: GetLock may answer null, then nothing needs to be locked; scope guards accept null.
///
/// Copies: a copy gets a lock of its own, unlocked, when its original has one. An assignment leaves both locks alone.
class LUHOST_API ObjectWithRWLock : public Object
{
public:
    ~ObjectWithRWLock() override;

    dp::ReadWriteLock* GetLock() const noexcept { return m_hasLock ? &m_lock : nullptr; }

    /// Whether objects made from now on get a lock. Tests run without, to see that nobody relies on one.
    static void SetLocksEnabled(bool enabled) noexcept;

protected:
    ObjectWithRWLock() noexcept;
    ObjectWithRWLock(const ObjectWithRWLock& other) noexcept;
    ObjectWithRWLock& operator=(const ObjectWithRWLock& other) noexcept;

private:
    mutable dp::ReadWriteLock m_lock;
    const bool m_hasLock;
};

} // namespace luk
