#include "Check.h"
#include "SystemState.h"
#include "Trial.h"

#include <du/FileSystem.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#if defined(_WIN32)
#  include <du/Utf8.h>

#  include <fcntl.h>
#  include <io.h>
#  include <windows.h>
// It needs the one before it.
#  include <shellapi.h>
#else
#  include <csignal>
#  include <fcntl.h>
#  include <sys/prctl.h>
#  include <sys/resource.h>
#  include <unistd.h>
#endif

namespace
{

using namespace lusym::check;

constexpr int kDone = 0;
constexpr int kUsage = 2;
constexpr int kUnreadable = 3;

#if defined(_WIN32)

constexpr std::size_t kBytes = std::size_t{4} << 30;

/// What a plug-in that has gone wild may take. It breaks down without asking the user, and goes with the job of the one who
/// asked for the check.
void LimitProcess()
{
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    // It has to last as long as the process.
    const HANDLE job = ::CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    limits.ProcessMemoryLimit = kBytes;
    ::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    ::AssignProcessToJobObject(job, ::GetCurrentProcess());
}

/// The standard output by another name, since the plug-in may write to that as well.
std::FILE* OpenReport()
{
    const int descriptor = ::_dup(1);
    ::_setmode(descriptor, _O_BINARY);
    std::FILE* const report = ::_fdopen(descriptor, "wb");
    [[maybe_unused]] const std::FILE* const nowhere = std::freopen("NUL", "w", stdout);
    return report;
}

/// Those that main is given are not in UTF-8.
std::vector<std::string> Arguments(int, char**)
{
    int count = 0;
    wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) {
        arguments.push_back(du::WideStrToUtf8(wide[i]));
    }
    ::LocalFree(wide);
    return arguments;
}

#else

/// What a plug-in that has gone wild may take, and that it goes when the one who asked for the check has gone.
void LimitProcess()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
#  if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    constexpr rlim_t kBytes = rlim_t{4} << 30;
    const rlimit memory{kBytes, kBytes};
    ::setrlimit(RLIMIT_AS, &memory);
#  endif
}

/// The standard output by another name, since the plug-in may write to that as well.
std::FILE* OpenReport()
{
    std::FILE* const report = ::fdopen(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3), "w");
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
    return report;
}

std::vector<std::string> Arguments(int count, char** values) { return {values, values + count}; }

#endif

void Report(std::FILE* report, const Note& note)
{
    const std::string line = LineOf(note);
    std::fwrite(line.data(), 1, line.size(), report);
    std::fflush(report);
}

/// Whether there is a library at all.
int Probe(const std::string& plugin, std::FILE* report)
{
    std::string problem = "no readable file";
    if (du::FileSystem::FileReadable(plugin) && RawLibrary::Load(plugin, RawLibrary::Binding::Lazy, problem)) {
        return kDone;
    }
    Report(report, {Outcome::Fail, Side::Plugin, problem});
    return kUnreadable;
}

int RunCheck(const Check& check, Trial& trial, std::FILE* report)
{
    std::string problem;
    if (check.start == Check::Start::Loaded && !trial.Load(problem)) {
        Report(report, {Outcome::Skip, Side::Plugin, "it could not be loaded: " + problem});
    } else {
        check.run(trial);
    }
    // Only now is it known that the plug-in has not ended the process by itself.
    Report(report, {Outcome::Pass, Side::Test, "done"});
    return kDone;
}

int Usage()
{
    std::fputs("lusym-plugin-check: runs one check of a plug-in in this process, for \"lusym plugin check\".\n"
               "Usage: lusym-plugin-check PLUGIN [CHECK EMPTY-FOLDER SEED]\n",
               stderr);
    return kUsage;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments = Arguments(argc, argv);
    const Check* const check = arguments.size() == 5 ? FindCheck(arguments[2]) : nullptr;
    if (arguments.size() != 2 && !check) {
        return Usage();
    }
    std::FILE* const report = OpenReport();
    LimitProcess();
    int code = kDone;
    if (check) {
        Trial trial(arguments[1], arguments[3], std::strtoull(arguments[4].c_str(), nullptr, 10),
                    [&](const Note& note) { Report(report, note); });
        code = RunCheck(*check, trial, report);
    } else {
        code = Probe(arguments[1], report);
    }
    // What the plug-in has left to be done at the end of a process is no part of any check but those that look at it.
    std::_Exit(code);
}
