#pragma once

#include <cstddef>
#include <functional>

namespace lusym
{

/// Does pieces of work on as many threads as the machine has cores.
///
/// @param work called with 0 to count - 1, each once, in any order and from several threads; must not throw
/// @param take called with the same numbers on the calling thread, each once its work is done, in the order in which
/// that happens. No work begins that is more than a bounded number ahead of it.
void WorkInParallel(std::size_t count, const std::function<void(std::size_t)>& work,
                    const std::function<void(std::size_t)>& take);

} // namespace lusym
