#include "plugin_check/CheckRun.h"

#include "Finding.h"
#include "ParallelWork.h"

#include <du/FileSystem.h>
#include <luhost/io/ChildProcess.h>

#include <algorithm>

#if defined(_WIN32)
#  include <cstdio>
#else
#  include <cstring>
#endif

namespace lusym::check
{

namespace
{

using luhost::io::ChildProcess;

constexpr std::uint64_t kOutputBytes = std::uint64_t{1} << 20;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned int kSlowness = 3; ///< of a build that looks at every access
#else
constexpr unsigned int kSlowness = 1;
#endif

std::vector<Note> NotesOf(std::string_view output)
{
    std::vector<Note> notes;
    for (std::size_t end = 0; (end = output.find('\n')) != std::string_view::npos; output.remove_prefix(end + 1)) {
        if (std::optional<Note> note = NoteOf(output.substr(0, end))) {
            notes.push_back(*std::move(note));
        }
    }
    return notes;
}

#if defined(_WIN32)
/// Here it is the number of an exception.
std::string SignalText(int signal)
{
    switch (static_cast<unsigned int>(signal)) {
    case 0xC0000005:
        return "access violation";
    case 0xC00000FD:
        return "stack overflow";
    case 0xC0000017:
        return "out of memory";
    case 0xC0000374:
        return "heap corruption";
    default: {
        char text[32];
        std::snprintf(text, sizeof text, "exception 0x%08X", static_cast<unsigned int>(signal));
        return text;
    }
    }
}
#else
std::string SignalText(int signal) { return ::strsignal(signal); }
#endif

/// How the process ended, where that says more than what it told.
std::vector<Note> NotesOf(const ChildProcess::Result& ended, unsigned int seconds, bool cameToItsEnd)
{
    using Ending = ChildProcess::Ending;
    switch (ended.ending) {
    case Ending::NotStarted:
    case Ending::Unreadable:
        return {
            {Outcome::Fail, Side::Test, "the check could not be run: " + std::generic_category().message(ended.code)}};
    case Ending::TooMuchOutput:
        return {{Outcome::Fail, Side::Test, "the check told too much"}};
    case Ending::TooSlow:
        return {
            {Outcome::TimeOut, Side::Plugin, "the check did not end within " + CountOf(seconds, "second", "seconds")}};
    case Ending::Signalled:
        return {{Outcome::Crash, Side::Plugin, "the process broke down: " + SignalText(ended.code)}};
    case Ending::Exited:
        break;
    }
    if (cameToItsEnd && ended.code == 0) {
        return {};
    }
    return {{Outcome::Crash, Side::Plugin,
             "the process was ended in the middle of the check, with exit code " + std::to_string(ended.code)}};
}

void Judge(CheckResult& result)
{
    const auto worst = std::ranges::max_element(result.notes, {}, &Note::outcome);
    if (worst != result.notes.end()) {
        result.outcome = worst->outcome;
        result.side = worst->side;
    }
}

/// A plug-in that cannot be loaded is told by the checks that look at that; where none of them ran it must not pass.
void CountUnloadable(std::vector<CheckResult>& results)
{
    const auto isFinding = [](const CheckResult& result) { return IsFinding(result.outcome); };
    if (std::ranges::any_of(results, isFinding)) {
        return;
    }
    for (CheckResult& result : results) {
        for (Note& note : result.notes) {
            if (note.outcome == Outcome::Skip && note.side == Side::Plugin) {
                note.outcome = Outcome::Fail;
            }
        }
        Judge(result);
    }
}

} // namespace

bool CheckRun::Probe(std::string& problem) const
{
    constexpr std::chrono::seconds kLimit{20};
    std::string output;
    const ChildProcess::Result ended =
        ChildProcess::Run(m_setup.program, {m_setup.plugin}, {kLimit, kOutputBytes}, output);
    if (ended.ending == ChildProcess::Ending::NotStarted) {
        problem = "\"" + m_setup.program + "\" cannot be started: " + std::generic_category().message(ended.code);
        return false;
    }
    const std::vector<Note> notes = NotesOf(output);
    problem = notes.empty() ? "it breaks down while it is loaded" : notes.front().text;
    return ended.ending == ChildProcess::Ending::Exited && ended.code == 0;
}

std::vector<CheckResult> CheckRun::Run(const std::vector<const Check*>& checks,
                                       const std::function<void(const CheckResult&, std::size_t)>& onDone) const
{
    std::vector<CheckResult> results(checks.size());
    std::size_t done = 0;
    WorkInParallel(
        checks.size(), [&](std::size_t number) { results[number] = RunOne(*checks[number], number); },
        [&](std::size_t number) { onDone(results[number], ++done); });
    CountUnloadable(results);
    return results;
}

CheckResult CheckRun::RunOne(const Check& check, std::size_t number) const
{
    CheckResult result;
    result.check = &check;
    const std::string folder = m_setup.folder + "/" + std::to_string(number);
    du::FileSystem::Mkdir(folder);

    const auto begin = std::chrono::steady_clock::now();
    std::string output;
    const ChildProcess::Result ended = ChildProcess::Run(
        m_setup.program, {m_setup.plugin, std::string(check.name), folder, std::to_string(m_setup.seed)},
        {std::chrono::seconds(SecondsFor(check)), kOutputBytes}, output);
    result.time = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);

    result.notes = NotesOf(output);
    const bool cameToItsEnd = !result.notes.empty() && result.notes.back().outcome == Outcome::Pass;
    std::erase_if(result.notes, [](const Note& note) { return note.outcome == Outcome::Pass; });
    std::ranges::move(NotesOf(ended, SecondsFor(check), cameToItsEnd), std::back_inserter(result.notes));
    Judge(result);
    du::FileSystem::DeletePath(folder);
    return result;
}

unsigned int CheckRun::SecondsFor(const Check& check) const
{
    return m_setup.seconds != 0 ? m_setup.seconds : check.seconds * kSlowness;
}

} // namespace lusym::check
