#include "Process.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace test
{

namespace
{

using Clock = std::chrono::steady_clock;

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

pid_t Start(std::vector<std::string>& command, const std::string& out, const std::string& err)
{
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t child = -1;
    EXPECT_EQ(posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ), 0) << command[0];
    posix_spawn_file_actions_destroy(&actions);
    return child;
}

/// The status with which the child ends, signalled on its way where the options say so.
int WaitFor(pid_t child, const ProcessOptions& options)
{
    const auto deadline = Clock::now() + std::chrono::minutes(1);
    bool hasSignalled = options.signalNumber == 0;
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (!hasSignalled && ExistsSomethingNamed(options.signalWhenExists)) {
            hasSignalled = true;
            kill(child, options.signalNumber);
        }
        if (Clock::now() > deadline) {
            ADD_FAILURE() << "timed out";
            kill(child, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return status;
}

} // namespace

ProcessResult RunProcess(std::vector<std::string> command, const ProcessOptions& options)
{
    command.insert(command.begin(), options.environment.begin(), options.environment.end());
    command.insert(command.begin(), "/usr/bin/env");
    const TemporaryFolder streams;
    const pid_t child = Start(command, streams.Path("out"), streams.Path("err"));
    const int status = child > 0 ? WaitFor(child, options) : 0;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, WIFSIGNALED(status) ? WTERMSIG(status) : 0,
            streams.Read("out"), streams.Read("err")};
}

ProcessResult RunLusym(std::vector<std::string> arguments, int exitCode, ProcessOptions options)
{
    // Of two values for one name the later counts.
    options.environment.insert(options.environment.begin(), {"LC_ALL=C", "LUSYMBOLS_PLUGIN="});
    arguments.insert(arguments.begin(), LUSYM_PROGRAM);
    ProcessResult result = RunProcess(arguments, options);
    EXPECT_EQ(result.exitCode, exitCode) << testing::PrintToString(arguments) << "\n" << result.err;
    return result;
}

} // namespace test
