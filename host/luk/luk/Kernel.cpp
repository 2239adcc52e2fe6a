#include <luk/CurrentHandle.h>
#include <luk/Kernel.h>

#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace luk
{

/// Events are made, run and destroyed with no lock held, since any of that may post further ones.
class Kernel::Queue
{
public:
    void Post(Event event)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_closed) {
            m_events.push_back(std::move(event));
        }
    }

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
        m_running = true;
        event();
        m_running = false;
        return true;
    }

    bool MayRun() const { return std::this_thread::get_id() == m_hostThread && !m_running; }

    void PostAfterEvents(Event event)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_closed) {
            m_afterEvents.push_back(std::move(event));
        }
    }

    /// What one of them posts comes after the next round.
    std::size_t RunAfterEvents()
    {
        std::deque<Event> due;
        {
            const std::lock_guard lock(m_mutex);
            due.swap(m_afterEvents);
        }
        m_running = true;
        for (const Event& event : due) {
            event();
        }
        m_running = false;
        return due.size();
    }

    std::size_t GetDueCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_events.size();
    }

    std::size_t GetCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_events.size() + m_afterEvents.size();
    }

    std::size_t Close()
    {
        std::deque<Event> dropped;
        std::deque<Event> droppedAfter;
        {
            const std::lock_guard lock(m_mutex);
            m_closed = true;
            dropped.swap(m_events);
            droppedAfter.swap(m_afterEvents);
        }
        return dropped.size() + droppedAfter.size();
    }

private:
    const std::thread::id m_hostThread = std::this_thread::get_id();
    bool m_running = false; ///< of the host thread alone
    mutable std::mutex m_mutex;
    std::deque<Event> m_events;
    std::deque<Event> m_afterEvents;
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
