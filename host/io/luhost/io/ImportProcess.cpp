#include "ImportProcess.h"

#include <luhost/io/ChildProcess.h>

#include <csignal>
#include <cstring>
#include <system_error>
#include <utility>

namespace luhost::io
{

namespace
{

std::string SystemText(int error) { return std::generic_category().message(error); }

std::string ExitProblem(int code)
{
    return code == ImportProcess::kOutOfMemory ? "it takes more memory to read than it is allowed"
                                               : "its reader gave up, with exit code " + std::to_string(code);
}

std::string SignalProblem(int signal)
{
    return signal == SIGXCPU ? "it takes longer to read than it is allowed"
                             : std::string("its reader broke down (")
                                   .append(::strsignal(signal))
                                   .append("): the file is damaged, or made to do harm");
}

} // namespace

bool ImportProcess::Run(const std::string& program, const std::vector<std::string>& arguments, const Limits& limits,
                        std::string& output, std::string& problem)
{
    using Ending = ChildProcess::Ending;
    const ChildProcess::Result result =
        ChildProcess::Run(program, arguments, {std::chrono::seconds(limits.seconds), limits.outputBytes}, output);
    switch (result.ending) {
    case Ending::NotStarted:
        problem = "the reader of models, \"" + program + "\", cannot be started: " + SystemText(result.code);
        return false;
    case Ending::Unreadable:
        problem = SystemText(result.code);
        return false;
    case Ending::TooSlow:
        problem = "it takes longer to read than " + std::to_string(limits.seconds) + " seconds";
        return false;
    case Ending::TooMuchOutput:
        problem = "what is in it takes more than " + std::to_string(limits.outputBytes >> 20) + " MB";
        return false;
    case Ending::Signalled:
        problem = SignalProblem(result.code);
        return false;
    case Ending::Exited:
        break;
    }
    if (result.code != 0) {
        problem = ExitProblem(result.code);
    }
    return result.code == 0;
}

} // namespace luhost::io
