#pragma once

#include <du/Export.h>

#include <string>

namespace du
{

/// Random unique names: UUIDs of version 4 in lower case, from the system's source of randomness.
///
/// Threads: every call is safe on any thread.
class LUHOST_API UuidGen
{
public:
    /// @param[out] uuid replaced by 36 characters, another text on every call
    static void GetUuidString(std::string& uuid);

    UuidGen() = delete;
};

} // namespace du
