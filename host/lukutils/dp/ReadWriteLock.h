#pragma once

#include <du/Export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace dp
{

/// Lock for many readers or one writer, reentrant for each thread: objects call the host under their locks, and the host
/// calls them back.
///
/// | asked for \ held by this thread | nothing | read | write |
/// |---|---|---|---|
/// | read  | waits for a writer, held or waiting | at once, also past a waiting writer | at once |
/// | write | waits for readers and a writer | at once when no other thread reads, else a misuse | at once |
///
/// Use: through ReadLockGuard and WriteLockGuard, which accept a null lock. Unlocks may come in any order; a thread that
/// gives back its last write and still has a read goes on as a reader.
///
/// Errors: three misuses go to the misuse handler: a write in a read while others read, and an unlock of either kind that
/// the thread does not hold. The default handler traces a warning and, in debug builds, asserts. Where it returns, a
/// wrong unlock is ignored; the write in a read waits a moment for the other readers to leave (kUpgradePatienceMs), then
/// LockWrite answers false and nothing was locked.
///
/// *Rationale:* two readers that both wait to write would wait for each other for ever, without a word.
///
/// Fairness: a waiting writer stops new readers; when a writer leaves, all readers waiting by then go before the next
/// writer.
///
/// Ownership: whoever locks keeps the lock's owner alive until after the unlock.
///
/// Cost: 16 bytes, since those who wait do so in one of a few places that all locks share. Without contention one atomic
/// operation and a search among the locks that this thread holds, which are few.
class LUHOST_API ReadWriteLock
{
public:
    static constexpr unsigned kUpgradePatienceMs = 250;

    ReadWriteLock() noexcept = default;
    ~ReadWriteLock() = default;
    ReadWriteLock(const ReadWriteLock&) = delete;
    ReadWriteLock& operator=(const ReadWriteLock&) = delete;

    void LockRead();
    void UnlockRead();

    /// @return false only after a misuse, see above
    [[nodiscard]] bool LockWrite();
    void UnlockWrite();

    /// How often the calling thread holds this lock; for tests.
    struct Depth {
        std::uint32_t reads = 0;
        std::uint32_t writes = 0;
    };
    Depth GetDepthOnThisThread() const noexcept;

    /// Locks that the calling thread holds; for tests and for code that must be called without any.
    static std::size_t CountHeldByThisThread() noexcept;

    /// Threads that wait for this lock now; for tests.
    std::size_t CountWaiting() const;

    /// [any thread] May return; must not take or give back the lock that it is told about.
    using MisuseHandler = void (*)(const char* what);
    /// @param handler null for the default
    /// @return the handler before
    static MisuseHandler SetMisuseHandler(MisuseHandler handler) noexcept;

private:
    class WaitingPlace;

    WaitingPlace& GetWaitingPlace() const noexcept;
    void WaitToRead();
    bool WaitToWrite(std::uint32_t ownReaders);
    void ReleaseReader();
    void ReleaseWriter(std::uint32_t ownReaders);
    void AdmitWaiting(std::uint32_t holders) noexcept;

    /// Bit 31: written; bit 30: somebody waits, so that every change goes through the mutex of the place where they do;
    /// below: threads that read.
    std::atomic<std::uint32_t> m_state{0};
    std::uint32_t m_waitingReaders = 0;
    std::uint32_t m_waitingWriters = 0;
    std::uint32_t m_readerBatch = 0; ///< changes when the waiting readers were admitted
};

} // namespace dp
