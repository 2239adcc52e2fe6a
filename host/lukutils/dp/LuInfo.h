#pragma once

#include <du/Export.h>
#include <du/Symbol.h>

namespace dp
{

/// Settings of the running application that lie below the preferences.
///
/// Threads: every call is safe on any thread.
class LUHOST_API LuInfo
{
public:
    /// Folder under which the relative URLs of shared library entries lie: a plain absolute path without a separator at
    /// its end.
    /// @param[out] folder null when none is set
    /// @return whether one is set
    static bool GetLuviewSharedCachePrefsDir(du::Symbol& folder) noexcept;

    /// Set by a session at its start, and to a null symbol at its end.
    static void SetLuviewSharedCachePrefsDir(const du::Symbol& folder) noexcept;

    LuInfo() = delete;
};

} // namespace dp
