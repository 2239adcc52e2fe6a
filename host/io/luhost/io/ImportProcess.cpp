#include "ImportProcess.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace luhost::io
{

namespace
{

using Clock = std::chrono::steady_clock;

bool Fail(std::string& problem, std::string reason)
{
    problem = std::move(reason);
    return false;
}

std::string SystemText(int error) { return std::generic_category().message(error); }

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
            Wait();
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// @return as waitpid gives it; 0 when somebody else has waited for it
    int Wait() noexcept
    {
        int status = 0;
        while (::waitpid(m_pid, &status, 0) < 0) {
            if (errno != EINTR) {
                status = 0;
                break;
            }
        }
        m_pid = -1;
        return status;
    }

private:
    pid_t m_pid;
};

/// Reads until the end of the output. @return false, with the reason, before
bool ReadAll(int descriptor, const ImportProcess::Limits& limits, std::string& output, std::string& problem)
{
    constexpr std::size_t kChunk = std::size_t{1} << 16;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(limits.seconds);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0) {
            return Fail(problem, "it takes longer to read than " + std::to_string(limits.seconds) + " seconds");
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
            return true;
        }
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            return Fail(problem, SystemText(errno));
        }
        if (output.size() > limits.outputBytes) {
            return Fail(problem, "what is in it takes more than " + std::to_string(limits.outputBytes >> 20) + " MB");
        }
    }
}

bool CheckEnd(int status, std::string& problem)
{
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return true;
    }
    if (WIFEXITED(status)) {
        return Fail(problem, WEXITSTATUS(status) == ImportProcess::kOutOfMemory
                                 ? "it takes more memory to read than it is allowed"
                                 : "its reader gave up, with exit code " + std::to_string(WEXITSTATUS(status)));
    }
    const int signal = WTERMSIG(status);
    if (signal == SIGXCPU) {
        return Fail(problem, "it takes longer to read than it is allowed");
    }
    return Fail(problem, std::string("its reader broke down (")
                             .append(::strsignal(signal))
                             .append("): the file is damaged, or made to do harm"));
}

} // namespace

bool ImportProcess::Run(const std::string& program, const std::vector<std::string>& arguments, const Limits& limits,
                        std::string& output, std::string& problem)
{
    output.clear();
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return Fail(problem, SystemText(errno));
    }
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    pid_t pid = -1;
    if (const int error = SpawnSetup(writing.Get()).Start(pid, program, arguments); error != 0) {
        return Fail(problem, "the reader of models, \"" + program + "\", cannot be started: " + SystemText(error));
    }
    Child child(pid);
    writing.Close();
    return ReadAll(reading.Get(), limits, output, problem) && CheckEnd(child.Wait(), problem);
}

} // namespace luhost::io
