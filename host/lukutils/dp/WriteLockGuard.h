#pragma once

#include <dp/ReadWriteLock.h>

#include <utility>

namespace dp
{

/// Holds a write lock while it lives, or until Release. A null lock locks nothing; after a misuse (see ReadWriteLock) the
/// guard holds nothing either.
class WriteLockGuard
{
public:
    explicit WriteLockGuard(ReadWriteLock* lock) : m_lock(lock && lock->LockWrite() ? lock : nullptr) {}
    ~WriteLockGuard() { Release(); }
    WriteLockGuard(const WriteLockGuard&) = delete;
    WriteLockGuard& operator=(const WriteLockGuard&) = delete;

    void Release()
    {
        if (ReadWriteLock* const lock = std::exchange(m_lock, nullptr)) {
            lock->UnlockWrite();
        }
    }

private:
    ReadWriteLock* m_lock;
};

} // namespace dp
