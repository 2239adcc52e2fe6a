#include <luhost/io/ChildProcess.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace luhost::io
{

namespace
{

using Clock = std::chrono::steady_clock;
using Ending = ChildProcess::Ending;
using Result = ChildProcess::Result;

class Descriptor
{
public:
    explicit Descriptor(int descriptor = -1) noexcept : m_descriptor(descriptor) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const noexcept { return m_descriptor; }
    void Close() noexcept
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
        m_descriptor = -1;
    }

private:
    int m_descriptor;
};

/// How a program is started: no input, output into a pipe, signals as at the start of a session.
class SpawnSetup
{
public:
    explicit SpawnSetup(int output) noexcept
    {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_attributes, &signals);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGPIPE, SIGXCPU, SIGXFSZ}) {
            sigaddset(&signals, signal);
        }
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSetup()
    {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    /// @return an error of the system, or 0
    int Start(pid_t& pid, const std::string& program, std::vector<std::string> arguments) const
    {
        std::string name = program;
        std::vector<char*> argv{name.data()};
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        return ::posix_spawn(&pid, program.c_str(), &m_actions, &m_attributes, argv.data(), ::environ);
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

/// Kills the program unless it has been waited for.
class Child
{
public:
    explicit Child(pid_t pid) noexcept : m_pid(pid) {}
    ~Child()
    {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            while (::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) {
            }
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// A program that has closed its output ends at once as a rule, and need not.
    Result WaitUntil(Clock::time_point end)
    {
        constexpr std::chrono::milliseconds kLongestPause{20};
        for (std::chrono::milliseconds pause{0};;
             pause = std::min(pause * 2 + std::chrono::milliseconds{1}, kLongestPause)) {
            int status = 0;
            const pid_t ended = ::waitpid(m_pid, &status, WNOHANG);
            if (ended == m_pid || (ended < 0 && errno != EINTR)) {
                m_pid = -1; // ended, or somebody else has waited for it
                return ended > 0 && WIFSIGNALED(status) ? Result{Ending::Signalled, WTERMSIG(status)}
                                                        : Result{Ending::Exited, WEXITSTATUS(status)};
            }
            if (Clock::now() >= end) {
                return {Ending::TooSlow, 0};
            }
            std::this_thread::sleep_for(pause);
        }
    }

private:
    pid_t m_pid;
};

/// Reads until the end of the output. @return what came before that, if anything did
std::optional<Result> ReadAll(int descriptor, Clock::time_point end, std::uint64_t outputBytes, std::string& output)
{
    constexpr std::size_t kChunk = std::size_t{1} << 16;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0) {
            return Result{Ending::TooSlow, 0};
        }
        pollfd waited{descriptor, POLLIN, 0};
        const int ready = ::poll(&waited, 1, static_cast<int>(std::min<long long>(left, 1000)));
        if (ready <= 0) {
            continue;
        }
        const std::size_t size = output.size();
        output.resize(size + std::max(kChunk, std::min(size, kChunk << 8)));
        const ssize_t count = ::read(descriptor, output.data() + size, output.size() - size);
        output.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count == 0) {
            return std::nullopt;
        }
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            return Result{Ending::Unreadable, errno};
        }
        if (output.size() > outputBytes) {
            return Result{Ending::TooMuchOutput, 0};
        }
    }
}

} // namespace

ChildProcess::Result ChildProcess::Run(const std::string& program, const std::vector<std::string>& arguments,
                                       const Limits& limits, std::string& output)
{
    output.clear();
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return {Ending::NotStarted, errno};
    }
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    pid_t pid = -1;
    if (const int error = SpawnSetup(writing.Get()).Start(pid, program, arguments); error != 0) {
        return {Ending::NotStarted, error};
    }
    Child child(pid);
    writing.Close();
    const Clock::time_point end = Clock::now() + limits.time;
    const std::optional<Result> early = ReadAll(reading.Get(), end, limits.outputBytes, output);
    return early ? *early : child.WaitUntil(end);
}

} // namespace luhost::io
