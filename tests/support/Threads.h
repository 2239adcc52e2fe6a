#pragma once

#include <thread>
#include <vector>

namespace test
{

/// Does the work on several threads at once, each told its number, and waits for all of them.
template <class Work>
void OnThreads(unsigned count, const Work& work)
{
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < count; ++number) {
        threads.emplace_back([&work, number] { work(number); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace test
