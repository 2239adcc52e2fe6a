#include "ParallelWork.h"

#include "Interrupt.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace lusym
{

namespace
{

/// Results that may wait for the calling thread.
constexpr std::size_t kMostWaiting = 64;

class Workshop
{
public:
    Workshop(std::size_t count, const std::function<void(std::size_t)>& work) : m_count(count), m_work(work) {}
    Workshop(const Workshop&) = delete;
    Workshop& operator=(const Workshop&) = delete;

    ~Workshop()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_next = m_count;
        }
        m_changed.notify_all();
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

    void Start()
    {
        const InterruptHold hold;
        const std::size_t wanted = std::min<std::size_t>(std::max(1U, std::thread::hardware_concurrency()), m_count);
        try {
            while (m_threads.size() < wanted) {
                m_threads.emplace_back([this] { Work(); });
            }
        } catch (const std::system_error&) {
            // The threads that there are do it.
        }
    }

    bool HasThreads() const { return !m_threads.empty(); }

    std::size_t WaitForOne()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_taken < m_done.size(); });
        const std::size_t number = m_done[m_taken++];
        lock.unlock();
        m_changed.notify_all();
        return number;
    }

private:
    void Work()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return m_next >= m_count || m_next < m_taken + kMostWaiting; });
            if (m_next >= m_count) {
                return;
            }
            const std::size_t number = m_next++;
            lock.unlock();
            m_work(number);
            lock.lock();
            m_done.push_back(number);
            m_changed.notify_all();
        }
    }

    const std::size_t m_count;
    const std::function<void(std::size_t)>& m_work;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_next = 0;
    std::size_t m_taken = 0;
    std::vector<std::size_t> m_done; ///< in the order in which they were
    std::vector<std::thread> m_threads;
};

} // namespace

void WorkInParallel(std::size_t count, const std::function<void(std::size_t)>& work,
                    const std::function<void(std::size_t)>& take)
{
    Workshop workshop(count, work);
    workshop.Start();
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t number = i;
        if (workshop.HasThreads()) {
            number = workshop.WaitForOne();
        } else {
            work(i);
        }
        take(number);
    }
}

} // namespace lusym
