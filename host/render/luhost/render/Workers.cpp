#include <luhost/render/Workers.h>

#include <algorithm>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace luhost::render
{

namespace
{

class Threads
{
public:
    ~Threads()
    {
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

    void Start(std::size_t count, const std::function<void()>& work)
    {
        try {
            m_threads.reserve(count);
            for (std::size_t i = 0; i < count; ++i) {
                m_threads.emplace_back(work);
            }
        } catch (const std::exception&) {
            // The caller's own thread does it all.
        }
    }

private:
    std::vector<std::thread> m_threads;
};

} // namespace

unsigned Workers::GetThreadCount() const noexcept
{
    return threads > 0 ? threads : std::max(1U, std::thread::hardware_concurrency());
}

const char* ToText(Outcome outcome) noexcept
{
    switch (outcome) {
    case Outcome::Done:
        return "";
    case Outcome::Stopped:
        return "stopped";
    case Outcome::NoMemory:
        break;
    }
    return "out of memory";
}

Outcome RunParallel(std::size_t count, const Workers& workers, const std::function<void(std::size_t)>& work)
{
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> failed = false;
    const auto takeSome = [&] {
        try {
            for (std::size_t i = next++; i < count && !failed && !workers.IsStopped(); i = next++) {
                work(i);
            }
        } catch (const std::exception&) {
            failed = true;
        }
    };
    {
        Threads others;
        if (count > 1) {
            others.Start(std::min<std::size_t>(workers.GetThreadCount(), count) - 1, takeSome);
        }
        takeSome();
    }
    return failed ? Outcome::NoMemory : workers.IsStopped() ? Outcome::Stopped : Outcome::Done;
}

} // namespace luhost::render
