#include <luk/CurrentHandle.h>
#include <luk/Kernel.h>

#include <list>
#include <mutex>
#include <thread>
#include <utility>

namespace luk
{

/// Events are made, run and destroyed with no lock held, since any of that may post further ones.
class Kernel::Queue
{
public:
    void Post(Event event) { Append(m_events, std::move(event)); }

    bool RunOldest()
    {
        Event event;
        {
            const std::lock_guard lock(m_mutex);
            if (m_events.empty()) {
                return false;
            }
            event = std::move(m_events.front());
            m_events.pop_front();
        }
        const Running running(m_running);
        event();
        return true;
    }

    bool MayRun() const { return std::this_thread::get_id() == m_hostThread && !m_running; }

    void PostAfterEvents(Event event) { Append(m_afterEvents, std::move(event)); }

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
        for (Event event; (event = TakeDueAfterEvent()); ++delivered) {
            const Running running(m_running);
            event();
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
        std::list<Event> dropped;
        std::list<Event> droppedAfter;
        std::list<Event> droppedDue;
        {
            const std::lock_guard lock(m_mutex);
            m_closed = true;
            dropped.swap(m_events);
            droppedAfter.swap(m_afterEvents);
            droppedDue.swap(m_dueAfterEvents);
        }
        return dropped.size() + droppedAfter.size() + droppedDue.size();
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

    /// An event that comes too late is destroyed with no lock held either.
    void Append(std::list<Event>& events, Event event)
    {
        std::list<Event> one;
        one.push_back(std::move(event));
        const std::lock_guard lock(m_mutex);
        if (!m_closed) {
            events.splice(events.end(), one);
        }
    }

    /// Empty when there is none left.
    Event TakeDueAfterEvent()
    {
        const std::lock_guard lock(m_mutex);
        Event event;
        if (!m_dueAfterEvents.empty()) {
            event = std::move(m_dueAfterEvents.front());
            m_dueAfterEvents.pop_front();
        }
        return event;
    }

    const std::thread::id m_hostThread = std::this_thread::get_id();
    bool m_running = false; ///< of the host thread alone
    mutable std::mutex m_mutex;
    std::list<Event> m_events;
    std::list<Event> m_afterEvents;
    std::list<Event> m_dueAfterEvents; ///< of the round that runs, or that ended early
    bool m_closed = false;
};

Kernel::Kernel() : m_queue(std::make_unique<Queue>()) {}

Kernel::~Kernel() { Close(); }

du::SmartPtr<Kernel> Kernel::GetKernel() { return CurrentHandle<Kernel>::GetSlot().Get(); }

void Kernel::SetKernel(const du::SmartPtr<Kernel>& kernel) { CurrentHandle<Kernel>::GetSlot().Set(kernel); }

void Kernel::PostEvent(Event event)
{
    if (event) {
        m_queue->Post(std::move(event));
    }
}

void Kernel::PostAfterEvents(Event event)
{
    if (event) {
        m_queue->PostAfterEvents(std::move(event));
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
