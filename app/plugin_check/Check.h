#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace lusym::check
{

class Trial;

/// One thing that a plug-in promises to its host, and how it is found out whether it keeps it.
///
/// Use: each check runs in a process of its own, so that it may do anything to that process, and a plug-in that breaks down
/// or hangs costs this check alone.
struct Check {
    enum class Start : std::uint8_t {
        Loaded, ///< the plug-in is loaded for the check
        Bare,   ///< the check loads it itself
    };

    std::string_view name;     ///< in kebab-case; never used for another check
    std::string_view group;    ///< in kebab-case too
    std::string_view contract; ///< one paragraph: what the plug-in promises
    void (*run)(Trial&) = nullptr;
    Start start = Start::Loaded;
    unsigned int seconds = 60; ///< by the clock; much more than it takes, for machines that have other things to do
};

/// Every check, group by group.
std::span<const Check> AllChecks();

/// Null when there is none of this name.
const Check* FindCheck(std::string_view name);

std::span<const Check> LoadingChecks();
std::span<const Check> FactoryChecks();
std::span<const Check> CountChecks();
std::span<const Check> ContentChecks();
std::span<const Check> LibraryChecks();
std::span<const Check> ObserverChecks();
std::span<const Check> FileChecks();
std::span<const Check> SceneChecks();
std::span<const Check> LockChecks();
std::span<const Check> ProcessChecks();

} // namespace lusym::check
