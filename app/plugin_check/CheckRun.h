#pragma once

#include "plugin_check/Check.h"
#include "plugin_check/Verdict.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace lusym::check
{

/// What became of one check.
struct CheckResult {
    const Check* check = nullptr;
    Outcome outcome = Outcome::Pass;
    Side side = Side::Test;  ///< who misbehaved, for a finding
    std::vector<Note> notes; ///< in the order in which they were told
    std::chrono::milliseconds time{0};
};

/// Looks at a plug-in with each check in a process of its own, several at once.
///
/// Errors: a plug-in that breaks down or hangs is a result of that check.
class CheckRun
{
public:
    struct Setup {
        std::string program; ///< that runs one check
        std::string plugin;
        std::string folder; ///< an empty one
        std::uint64_t seed = 0;
        unsigned int seconds = 0; ///< for each check; 0: what each needs
    };

    explicit CheckRun(Setup setup) : m_setup(std::move(setup)) {}

    /// @param[out] problem why the plug-in cannot be looked at
    /// @return false when there is no library, or the program is not there
    bool Probe(std::string& problem) const;

    /// @param onDone is called as the checks end, with how many have
    /// @return one for each check, in their order
    std::vector<CheckResult> Run(const std::vector<const Check*>& checks,
                                 const std::function<void(const CheckResult&, std::size_t)>& onDone) const;

private:
    CheckResult RunOne(const Check& check, std::size_t number) const;
    unsigned int SecondsFor(const Check& check) const;

    Setup m_setup;
};

} // namespace lusym::check
