#include "Check.h"
#include "Stage.h"
#include "Trial.h"

#include <algorithm>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <locale>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#if defined(__x86_64__)
#  include <immintrin.h>
#endif
#if defined(_WIN32)
#  include <du/Utf8.h>

#  include <cwchar>
#  include <windows.h>
#else
#  include <sys/stat.h>
#  include <unistd.h>
#endif

namespace lusym::check
{

namespace
{

using State = std::set<std::string>;

/// Lives through everything and sees whether something of the process is as it was before.
void ExpectUntouched(Trial& trial, State (*look)(), const std::string& what)
{
    const State before = look();
    std::string problem;
    if (!trial.Load(problem)) {
        return trial.Skip("it could not be loaded: " + problem);
    }
    LiveThrough(trial);
    std::vector<std::string> changed;
    std::ranges::set_symmetric_difference(before, look(), std::back_inserter(changed));
    for (const std::string& each : changed) {
        // What a variable says is nobody's business.
        trial.Expect(false, what + " has changed: " + each.substr(0, each.find('=')));
    }
}

State LookAtLocale() { return {std::setlocale(LC_ALL, nullptr), std::locale().name()}; }

State LookAtFloatingPoint()
{
    State state{"rounding " + std::to_string(std::fegetround())};
#if defined(__x86_64__)
    constexpr unsigned int kRaisedFlags = 0x3F;
    state.insert("control " + std::to_string(_mm_getcsr() & ~kRaisedFlags));
#endif
    return state;
}

State LookAtFolder()
{
    std::error_code error;
    return {std::filesystem::current_path(error).string()};
}

State LookAtEnvironment()
{
    State state;
#if defined(_WIN32)
    wchar_t* const variables = ::GetEnvironmentStringsW();
    for (const wchar_t* variable = variables; *variable != L'\0'; variable += std::wcslen(variable) + 1) {
        // Those are the working folders of the drives.
        if (*variable != L'=') {
            state.insert(du::WideStrToUtf8(variable));
        }
    }
    ::FreeEnvironmentStringsW(variables);
#else
    for (char** variable = environ; variable && *variable; ++variable) {
        state.insert(*variable);
    }
#endif
    return state;
}

#if !defined(_WIN32)
State LookAtSignals()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    State state{"mask " + std::to_string(mask)};
    for (int number = 1; number < 32; ++number) {
        struct sigaction action {
        };
        ::sigaction(number, nullptr, &action);
        const auto handler = reinterpret_cast<std::uintptr_t>(action.sa_handler);
        state.insert("signal " + std::to_string(number) + " to " + std::to_string(handler));
    }
    return state;
}
#endif

void CheckLocale(Trial& trial) { ExpectUntouched(trial, LookAtLocale, "the locale"); }

void CheckFloatingPoint(Trial& trial)
{
    ExpectUntouched(trial, LookAtFloatingPoint, "the mode of floating-point arithmetic");
}

void CheckFolder(Trial& trial) { ExpectUntouched(trial, LookAtFolder, "the working folder"); }

void CheckEnvironment(Trial& trial) { ExpectUntouched(trial, LookAtEnvironment, "the environment"); }

void CheckSignals(Trial& trial)
{
#if defined(_WIN32)
    trial.Skip("this system has no such settings");
#else
    ExpectUntouched(trial, LookAtSignals, "the mask of new files, or what a signal does,");
#endif
}

constexpr Check kProcessChecks[] = {
    {"process-locale", "process", "The plug-in does not change the locale of the process.", CheckLocale,
     Check::Start::Bare},
    {"process-floating-point", "process",
     "The plug-in does not change how the process rounds and what it does with the smallest numbers.",
     CheckFloatingPoint, Check::Start::Bare},
    {"process-folder", "process", "The plug-in does not change the working folder of the process.", CheckFolder,
     Check::Start::Bare},
    {"process-environment", "process", "The plug-in does not change the environment of the process.", CheckEnvironment,
     Check::Start::Bare},
    {"process-signals", "process",
     "The plug-in does not change what signals do, nor the rights that new files are made with.", CheckSignals,
     Check::Start::Bare},
};

} // namespace

std::span<const Check> ProcessChecks() { return kProcessChecks; }

} // namespace lusym::check
