#pragma once

#include <algorithm>
#include <cstddef>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace lusymbols
{

/// Entries of a library that take much longer to read or write than a thread takes to start.
inline constexpr std::size_t kEntriesWorthAThread = 2048;

/// Does the work on all of [0, count), on several threads where there is much of it.
///
/// Use: internal to the plug-in, for work on very many entries that does not touch the host's state. `work(begin, end)` is
/// called once for each range, at the same time on as many threads as the machine has processors; the last range is done
/// by the caller's thread.
///
/// Threads and locks: all threads have ended when it returns or throws.
///
/// Errors: what the work throws is thrown here, once, when all is done. Where there is no further thread to be had, the
/// caller's does what is left.
///
/// @param least the least number that is worth a thread: starting one costs some tens of microseconds
template <class Work>
void RunInRanges(std::size_t count, std::size_t least, const Work& work)
{
    const std::size_t processors = std::max(std::thread::hardware_concurrency(), 1U);
    const std::size_t ranges = std::clamp<std::size_t>(count / least, 1, processors);
    std::vector<std::future<void>> others;
    others.reserve(ranges);
    std::size_t begin = 0;
    try {
        for (std::size_t range = 1; range < ranges; ++range) {
            const std::size_t end = count * range / ranges;
            others.push_back(std::async(std::launch::async, [&work, begin, end] { work(begin, end); }));
            begin = end;
        }
    } catch (const std::system_error&) {
        // The caller's thread goes on from where the last one ends.
    }
    work(begin, count);
    for (std::future<void>& other : others) {
        other.get();
    }
}

} // namespace lusymbols
