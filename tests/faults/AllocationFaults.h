#pragma once

#include <cstddef>

namespace test
{

/// Counts what this program allocates by the global operator new and by the XML parser, and makes some of it fail.
///
/// Use: linked into a program, it takes the place of operator new everywhere in the process, the libraries and the plug-in
/// included. What C libraries take by malloc is not seen, and neither is the book of references.
namespace allocation_faults
{

enum class Mode {
    Once,     ///< the n-th allocation fails, the next ones succeed
    FromThere ///< the n-th fails and every later one, as when memory has run out for good
};

/// Makes allocations of any thread fail while it lives.
class Window
{
public:
    /// @param number of the allocation that fails, from 1
    Window(Mode mode, std::size_t number);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// Whether one has failed by now.
    static bool HasFailed();
};

/// Bytes that are allocated and not given back.
std::size_t GetLiveBytes();

} // namespace allocation_faults

} // namespace test
