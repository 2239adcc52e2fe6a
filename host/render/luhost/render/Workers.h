#pragma once

#include <atomic>
#include <cstddef>
#include <functional>

namespace luhost::render
{

/// Who works on a picture, and who may stop it.
struct Workers {
    unsigned threads = 0;                    ///< 0: as many as the machine has cores
    const std::atomic<bool>* stop = nullptr; ///< work ends soon after it becomes true; null: never

    bool IsStopped() const noexcept { return stop && stop->load(std::memory_order_relaxed); }
    unsigned GetThreadCount() const noexcept;
};

enum class Outcome { Done, Stopped, NoMemory };

/// In words; empty for Done.
const char* ToText(Outcome outcome) noexcept;

/// Calls `work` with 0 to count - 1, each once, in any order and from several threads, that of the caller among them. Threads
/// that cannot be had are done without. What `work` throws ends as NoMemory.
Outcome RunParallel(std::size_t count, const Workers& workers, const std::function<void(std::size_t)>& work);

} // namespace luhost::render
