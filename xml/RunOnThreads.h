#pragma once

#include <algorithm>
#include <cstddef>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace lusymbols
{

/// Does the same work on several threads at once, where there is enough of it.
///
/// Use: internal to the plug-in, for work on very many entries that does not touch the host's state. `work()` is called on
/// as many threads as the machine has processors, the caller's among them; each call takes piece after piece of what there
/// is to do, so that none waits for a slower one.
///
/// Threads and locks: all threads have ended when it returns or throws.
///
/// Errors: what the work throws is thrown here, once, when all is done. Where there is no further thread to be had, those
/// that there are do all of it.
///
/// @param worth how many threads there is work for: starting one costs some tens of microseconds
template <class Work>
void RunOnThreads(std::size_t worth, const Work& work)
{
    const std::size_t processors = std::max(std::thread::hardware_concurrency(), 1U);
    std::vector<std::future<void>> others;
    try {
        while (others.size() + 1 < std::min(worth, processors)) {
            others.push_back(std::async(std::launch::async, [&work] { work(); }));
        }
    } catch (const std::system_error&) {
        // The threads that there are take what this one would have taken.
    }
    work();
    for (std::future<void>& other : others) {
        other.get();
    }
}

} // namespace lusymbols
