#include <dp/LUTracer.h>
#include <dp/ReadWriteLock.h>

#include <array>
#include <cassert>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>

namespace dp
{

namespace
{

constexpr std::uint32_t kWritten = std::uint32_t{1} << 31;
constexpr std::uint32_t kWaiting = std::uint32_t{1} << 30;

struct Hold {
    const ReadWriteLock* lock = nullptr;
    std::uint32_t reads = 0;
    std::uint32_t writes = 0;
};

/// What one thread holds. It needs no destructor, so that locks still work while a thread ends; memory beyond the first
/// few goes back when the thread holds nothing.
class HeldLocks
{
public:
    Hold* Find(const ReadWriteLock* lock) noexcept
    {
        Hold* const holds = Holds();
        for (std::size_t i = m_count; i-- > 0;) {
            if (holds[i].lock == lock) {
                return &holds[i];
            }
        }
        return nullptr;
    }

    void Add(const Hold& hold)
    {
        if (m_count == m_capacity) {
            Grow();
        }
        Holds()[m_count++] = hold;
    }

    void Remove(Hold* hold) noexcept
    {
        *hold = Holds()[--m_count];
        if (m_count == 0 && m_more) {
            delete[] m_more;
            m_more = nullptr;
            m_capacity = m_few.size();
        }
    }

    std::size_t GetCount() const noexcept { return m_count; }

private:
    Hold* Holds() noexcept { return m_more ? m_more : m_few.data(); }

    void Grow()
    {
        Hold* const grown = new Hold[m_capacity * 2];
        for (std::size_t i = 0; i < m_count; ++i) {
            grown[i] = Holds()[i];
        }
        delete[] m_more;
        m_more = grown;
        m_capacity *= 2;
    }

    std::array<Hold, 8> m_few{};
    Hold* m_more = nullptr;
    std::size_t m_capacity = 8;
    std::size_t m_count = 0;
};

constinit thread_local HeldLocks t_held;

void TraceAndAssert(const char* what)
{
    LUTracer({"locks", "root"}).Trace(LUTracer::WARNING, "%s\n", what);
    assert(false && "misuse of a read-write lock, see the trace");
}

std::atomic<ReadWriteLock::MisuseHandler> s_misuseHandler{&TraceAndAssert};

void ReportMisuse(const char* what) { s_misuseHandler.load(std::memory_order_acquire)(what); }

} // namespace

/// Where the threads wait that wait for one of many locks. They look whether it was theirs that has changed.
class ReadWriteLock::WaitingPlace
{
public:
    std::mutex mutex;
    std::condition_variable changed;
};

/// The places live until the process ends, since a lock may be used by the last object of all, and need no memory, which may
/// have run out.
ReadWriteLock::WaitingPlace& ReadWriteLock::GetWaitingPlace() const noexcept
{
    using Places = std::array<WaitingPlace, 16>;
    alignas(Places) static std::byte s_storage[sizeof(Places)];
    static auto* const s_places = new (s_storage) Places;
    return (*s_places)[reinterpret_cast<std::uintptr_t>(this) / alignof(std::max_align_t) % s_places->size()];
}

void ReadWriteLock::LockRead()
{
    if (Hold* const hold = t_held.Find(this)) {
        ++hold->reads;
        return;
    }
    t_held.Add({this, 1, 0});
    std::uint32_t state = m_state.load(std::memory_order_relaxed);
    while ((state & (kWritten | kWaiting)) == 0) {
        if (m_state.compare_exchange_weak(state, state + 1, std::memory_order_acquire, std::memory_order_relaxed)) {
            return;
        }
    }
    WaitToRead();
}

void ReadWriteLock::UnlockRead()
{
    Hold* const hold = t_held.Find(this);
    if (!hold || hold->reads == 0) {
        ReportMisuse("a read lock is given back that this thread does not hold");
        return;
    }
    if (--hold->reads == 0 && hold->writes == 0) {
        t_held.Remove(hold);
        ReleaseReader();
    }
}

bool ReadWriteLock::LockWrite()
{
    Hold* hold = t_held.Find(this);
    if (hold && hold->writes > 0) {
        ++hold->writes;
        return true;
    }
    const std::uint32_t ownReaders = hold ? 1 : 0;
    std::uint32_t state = ownReaders;
    if (!m_state.compare_exchange_strong(state, kWritten, std::memory_order_acquire, std::memory_order_relaxed)) {
        if (!WaitToWrite(ownReaders)) {
            return false;
        }
        hold = t_held.Find(this); // what a misuse handler locked may have moved it
    }
    if (hold) {
        hold->writes = 1;
    } else {
        t_held.Add({this, 0, 1});
    }
    return true;
}

void ReadWriteLock::UnlockWrite()
{
    Hold* const hold = t_held.Find(this);
    if (!hold || hold->writes == 0) {
        ReportMisuse("a write lock is given back that this thread does not hold");
        return;
    }
    if (--hold->writes > 0) {
        return;
    }
    const std::uint32_t ownReaders = hold->reads > 0 ? 1 : 0;
    if (ownReaders == 0) {
        t_held.Remove(hold);
    }
    ReleaseWriter(ownReaders);
}

ReadWriteLock::Depth ReadWriteLock::GetDepthOnThisThread() const noexcept
{
    const Hold* const hold = t_held.Find(this);
    return hold ? Depth{hold->reads, hold->writes} : Depth{};
}

std::size_t ReadWriteLock::CountHeldByThisThread() noexcept { return t_held.GetCount(); }

std::size_t ReadWriteLock::CountWaiting() const
{
    WaitingPlace& place = GetWaitingPlace();
    const std::lock_guard guard(place.mutex);
    return std::size_t{m_waitingReaders} + m_waitingWriters;
}

ReadWriteLock::MisuseHandler ReadWriteLock::SetMisuseHandler(MisuseHandler handler) noexcept
{
    return s_misuseHandler.exchange(handler ? handler : &TraceAndAssert, std::memory_order_acq_rel);
}

// From here on: whoever has the mutex of the waiting place and has set kWaiting is alone in changing m_state, because every
// shorter way gives up at that bit. It is cleared again as soon as nobody waits.

void ReadWriteLock::WaitToRead()
{
    WaitingPlace& place = GetWaitingPlace();
    std::unique_lock guard(place.mutex);
    const std::uint32_t state = m_state.fetch_or(kWaiting, std::memory_order_acq_rel) & ~kWaiting;
    if (state != kWritten && m_waitingWriters == 0) {
        m_state.store(state + 1, std::memory_order_release);
        return;
    }
    ++m_waitingReaders;
    place.changed.wait(guard, [this, batch = m_readerBatch] { return m_readerBatch != batch; });
}

bool ReadWriteLock::WaitToWrite(std::uint32_t ownReaders)
{
    WaitingPlace& place = GetWaitingPlace();
    std::unique_lock guard(place.mutex);
    m_state.fetch_or(kWaiting, std::memory_order_acq_rel);
    const auto isAlone = [&] { return (m_state.load(std::memory_order_acquire) & ~kWaiting) == ownReaders; };

    ++m_waitingWriters;
    bool isMine = true;
    if (ownReaders == 0) {
        place.changed.wait(guard, isAlone);
    } else if (!isAlone()) {
        guard.unlock();
        ReportMisuse("a thread that reads asks to write while others read");
        guard.lock();
        isMine = place.changed.wait_for(guard, std::chrono::milliseconds(kUpgradePatienceMs), isAlone);
    }
    --m_waitingWriters;

    if (isMine) {
        const bool somebodyWaits = m_waitingReaders + m_waitingWriters > 0;
        m_state.store(kWritten | (somebodyWaits ? kWaiting : 0), std::memory_order_release);
    } else if (m_waitingWriters == 0) {
        AdmitWaiting(m_state.load(std::memory_order_acquire) & ~kWaiting);
    }
    return isMine;
}

void ReadWriteLock::ReleaseReader()
{
    std::uint32_t state = m_state.load(std::memory_order_relaxed);
    while ((state & kWaiting) == 0) {
        if (m_state.compare_exchange_weak(state, state - 1, std::memory_order_release, std::memory_order_relaxed)) {
            return;
        }
    }
    WaitingPlace& place = GetWaitingPlace();
    const std::lock_guard guard(place.mutex);
    m_state.fetch_sub(1, std::memory_order_acq_rel);
    place.changed.notify_all();
}

void ReadWriteLock::ReleaseWriter(std::uint32_t ownReaders)
{
    std::uint32_t state = kWritten;
    if (m_state.compare_exchange_strong(state, ownReaders, std::memory_order_release, std::memory_order_relaxed)) {
        return;
    }
    WaitingPlace& place = GetWaitingPlace();
    const std::lock_guard guard(place.mutex);
    AdmitWaiting(ownReaders);
}

/// Lets all waiting readers in beside the holders that there are; a writer that waits goes after them.
void ReadWriteLock::AdmitWaiting(std::uint32_t holders) noexcept
{
    if (m_waitingReaders > 0) {
        holders += m_waitingReaders;
        m_waitingReaders = 0;
        ++m_readerBatch;
    }
    m_state.store(holders | (m_waitingWriters > 0 ? kWaiting : 0), std::memory_order_release);
    GetWaitingPlace().changed.notify_all();
}

} // namespace dp
