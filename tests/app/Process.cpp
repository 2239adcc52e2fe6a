#include "Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace test
{

namespace
{

using Clock = std::chrono::steady_clock;

/// Lowers a limit for the children that are started meanwhile.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(std::size_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        if (bytes != 0) {
            rlimit lowered = m_before;
            lowered.rlim_cur = bytes;
            setrlimit(RLIMIT_FSIZE, &lowered);
        }
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> Environment(const std::vector<std::string>& changes)
{
    std::vector<std::string> environment = changes;
    for (char** variable = environ; *variable; ++variable) {
        const std::string text = *variable;
        const std::string name = text.substr(0, text.find('=') + 1);
        if (std::ranges::none_of(changes, [&](const std::string& change) { return change.starts_with(name); })) {
            environment.push_back(text);
        }
    }
    return environment;
}

bool ExistsSomethingNamed(const std::string& beginning)
{
    const std::filesystem::path path(beginning);
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(path.parent_path(), error)) {
        if (entry.path().filename().string().starts_with(path.filename().string())) {
            return true;
        }
    }
    return false;
}

class RunningProcess
{
public:
    RunningProcess(const std::vector<std::string>& command, const ProcessOptions& options)
        : m_options(options), m_deadline(Clock::now() + options.timeout)
    {
        if (pipe2(m_out.data(), O_CLOEXEC) != 0 || pipe2(m_err.data(), O_CLOEXEC) != 0) {
            ADD_FAILURE() << "no pipes";
            return;
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, m_out[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, m_err[1], STDERR_FILENO);
        std::vector<std::string> arguments = command;
        std::vector<std::string> environment = Environment(options.environment);
        {
            const FileSizeLimit limit(options.largestFile);
            const int failure = posix_spawn(&m_child, arguments.front().c_str(), &actions, nullptr,
                                            Pointers(arguments).data(), Pointers(environment).data());
            EXPECT_EQ(failure, 0) << arguments.front();
        }
        posix_spawn_file_actions_destroy(&actions);
        close(m_out[1]);
        close(m_err[1]);
    }

    ProcessResult Finish()
    {
        while (m_out[0] >= 0 || m_err[0] >= 0) {
            ReadSome();
            SignalWhenTime();
            if (Clock::now() > m_deadline) {
                m_result.hasTimedOut = true;
                kill(m_child, SIGKILL);
                m_deadline = Clock::time_point::max();
            }
        }
        int status = 0;
        waitpid(m_child, &status, 0);
        m_result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        m_result.signalNumber = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        EXPECT_FALSE(m_result.hasTimedOut) << "timed out";
        return m_result;
    }

private:
    void ReadSome()
    {
        std::array<pollfd, 2> waits = {pollfd{m_out[0], POLLIN, 0}, pollfd{m_err[0], POLLIN, 0}};
        poll(waits.data(), waits.size(), m_options.signalNumber != 0 ? 1 : 50);
        if (waits[0].revents != 0) {
            ReadFrom(m_out[0], m_result.out);
        }
        if (waits[1].revents != 0) {
            ReadFrom(m_err[0], m_result.err);
        }
    }

    /// A pipe that has ended is closed and no longer asked.
    static void ReadFrom(int& descriptor, std::string& text)
    {
        std::array<char, 65536> buffer;
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            text.append(buffer.data(), static_cast<std::size_t>(count));
        } else {
            close(descriptor);
            descriptor = -1;
        }
    }

    void SignalWhenTime()
    {
        if (m_options.signalNumber != 0 && !m_hasSignalled && ExistsSomethingNamed(m_options.signalWhenExists)) {
            m_hasSignalled = true;
            kill(m_child, m_options.signalNumber);
        }
    }

    const ProcessOptions& m_options;
    Clock::time_point m_deadline;
    std::array<int, 2> m_out{-1, -1};
    std::array<int, 2> m_err{-1, -1};
    pid_t m_child = -1;
    bool m_hasSignalled = false;
    ProcessResult m_result;
};

} // namespace

ProcessResult RunProcess(const std::vector<std::string>& command, const ProcessOptions& options)
{
    return RunningProcess(command, options).Finish();
}

ProcessResult RunLusym(std::vector<std::string> arguments, ProcessOptions options)
{
    arguments.insert(arguments.begin(), LUSYM_PROGRAM);
    for (const char* const variable : {"LC_ALL=C", "LUSYMBOLS_PLUGIN="}) {
        const std::string text = variable;
        const std::string name = text.substr(0, text.find('=') + 1);
        if (std::ranges::none_of(options.environment, [&](const std::string& own) { return own.starts_with(name); })) {
            options.environment.push_back(text);
        }
    }
    return RunProcess(arguments, options);
}

} // namespace test
