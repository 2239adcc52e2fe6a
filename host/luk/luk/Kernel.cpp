#include <luk/BaseAsyncEvent.h>
#include <luk/CurrentHandle.h>
#include <luk/Kernel.h>

#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace luk
{

namespace
{

/// What waits to be delivered: a call, or an event that is to be handled, which costs nothing but its handle.
struct Due {
    Kernel::Event call;
    du::SmartPtr<BaseAsyncEvent> event;

    explicit operator bool() const { return call || event; }
    void Deliver() const { event ? event->HandleEvent() : call(); }
};

} // namespace

/// Events are made, run and destroyed with no lock held, since any of that may post further ones.
class Kernel::Queue
{
public:
    void Post(Due due) { Append(m_events, std::move(due)); }

    bool RunOldest()
    {
        const Due due = TakeFirst(m_events);
        if (!due) {
            return false;
        }
        const Running running(m_running);
        due.Deliver();
        return true;
    }

    bool MayRun() const { return std::this_thread::get_id() == m_hostThread && !m_running; }

    void PostAfterEvents(Due due) { Append(m_afterEvents, std::move(due)); }

    /// What one of them posts comes after the next round.
    std::size_t RunAfterEvents()
    {
        {
            const std::lock_guard lock(m_mutex);
            if (m_dueAfterEvents.empty()) {
                m_dueAfterEvents.swap(m_afterEvents);
            }
        }
        std::size_t delivered = 0;
        for (Due due; (due = TakeFirst(m_dueAfterEvents)); ++delivered) {
            const Running running(m_running);
            due.Deliver();
        }
        return delivered;
    }

    std::size_t GetDueCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_events.size();
    }

    std::size_t GetCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_events.size() + m_afterEvents.size() + m_dueAfterEvents.size();
    }

    std::size_t Close()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_closed = true;
        }
        return Drop(m_dueAfterEvents) + Drop(m_afterEvents) + Drop(m_events);
    }

private:
    /// Also ends when an event throws, which memory that runs out makes it do: the others can be delivered still.
    class Running
    {
    public:
        explicit Running(bool& flag) : m_flag(flag) { m_flag = true; }
        ~Running() { m_flag = false; }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

    private:
        bool& m_flag;
    };

    /// One that comes too late is destroyed with no lock held either.
    void Append(std::deque<Due>& dues, Due due)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_closed) {
            dues.push_back(std::move(due));
        }
    }

    /// Nothing when there is none left.
    Due TakeFirst(std::deque<Due>& dues)
    {
        const std::lock_guard lock(m_mutex);
        if (dues.empty()) {
            return {};
        }
        Due first = std::move(dues.front());
        dues.pop_front();
        return first;
    }

    /// @return how many there were
    std::size_t Drop(std::deque<Due>& dues)
    {
        std::size_t dropped = 0;
        for (Due due; (due = TakeFirst(dues)); ++dropped) {
        }
        return dropped;
    }

    const std::thread::id m_hostThread = std::this_thread::get_id();
    bool m_running = false; ///< of the host thread alone
    mutable std::mutex m_mutex;
    std::deque<Due> m_events;
    std::deque<Due> m_afterEvents;
    std::deque<Due> m_dueAfterEvents; ///< of the round that runs, or that ended early
    bool m_closed = false;
};

Kernel::Kernel() : m_queue(std::make_unique<Queue>()) {}

Kernel::~Kernel() { Close(); }

du::SmartPtr<Kernel> Kernel::GetKernel() { return CurrentHandle<Kernel>::GetSlot().Get(); }

void Kernel::SetKernel(const du::SmartPtr<Kernel>& kernel) { CurrentHandle<Kernel>::GetSlot().Set(kernel); }

void Kernel::PostEvent(Event event)
{
    if (event) {
        m_queue->Post({std::move(event), nullptr});
    }
}

void Kernel::PostEvent(const du::SmartPtr<BaseAsyncEvent>& event)
{
    if (event) {
        m_queue->Post({nullptr, event});
    }
}

void Kernel::PostAfterEvents(Event event)
{
    if (event) {
        m_queue->PostAfterEvents({std::move(event), nullptr});
    }
}

std::size_t Kernel::ProcessEvents()
{
    if (!m_queue->MayRun()) {
        return 0;
    }
    const std::size_t due = m_queue->GetDueCount();
    std::size_t delivered = 0;
    while (delivered < due && m_queue->RunOldest()) {
        ++delivered;
    }
    return delivered + m_queue->RunAfterEvents();
}

bool Kernel::ProcessOneEvent() { return m_queue->MayRun() && m_queue->RunOldest(); }

std::size_t Kernel::GetPendingEventCount() const { return m_queue->GetCount(); }

std::size_t Kernel::Close() { return m_queue->Close(); }

} // namespace luk
