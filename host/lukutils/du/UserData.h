#pragma once

#include <du/Export.h>

#include <string_view>

namespace du
{

/// Numbers for keys of user data: one for each key text, the same until the process ends.
///
/// Threads: every call is safe on any thread. Callers keep the number; the call takes a lock.
class LUHOST_API UserData
{
public:
    /// @return never 0
    static unsigned GetId(std::string_view key);

    UserData() = delete;
};

} // namespace du
