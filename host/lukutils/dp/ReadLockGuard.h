#pragma once

#include <dp/ReadWriteLock.h>

#include <utility>

namespace dp
{

/// Holds a read lock while it lives, or until Release. A null lock locks nothing.
class ReadLockGuard
{
public:
    explicit ReadLockGuard(ReadWriteLock* lock) : m_lock(lock)
    {
        if (m_lock) {
            m_lock->LockRead();
        }
    }
    ~ReadLockGuard() { Release(); }
    ReadLockGuard(const ReadLockGuard&) = delete;
    ReadLockGuard& operator=(const ReadLockGuard&) = delete;

    void Release()
    {
        if (ReadWriteLock* const lock = std::exchange(m_lock, nullptr)) {
            lock->UnlockRead();
        }
    }

private:
    ReadWriteLock* m_lock;
};

} // namespace dp
