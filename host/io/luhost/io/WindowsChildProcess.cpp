#include <du/Utf8.h>
#include <luhost/io/ChildProcess.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <windows.h>

namespace luhost::io
{

namespace
{

using Clock = std::chrono::steady_clock;
using Ending = ChildProcess::Ending;
using Result = ChildProcess::Result;

constexpr std::chrono::milliseconds kLongestPause{20};

class Handle
{
public:
    explicit Handle(HANDLE handle = nullptr) noexcept : m_handle(handle) {}
    ~Handle() { Close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE Get() const noexcept { return m_handle; }
    HANDLE* Fill() noexcept { return &m_handle; }
    bool IsOpen() const noexcept { return m_handle && m_handle != INVALID_HANDLE_VALUE; }
    void Close() noexcept
    {
        if (IsOpen()) {
            ::CloseHandle(m_handle);
        }
        m_handle = nullptr;
    }

private:
    HANDLE m_handle;
};

int ErrorNumberOf(DWORD error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
        return EACCES;
    case ERROR_BAD_EXE_FORMAT:
        return ENOEXEC;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
        return ENOMEM;
    default:
        return EIO;
    }
}

Result Failed(Ending ending) { return {ending, ErrorNumberOf(::GetLastError())}; }

/// So that the program reads back the argument as it is: backslashes count only before a quotation mark.
void AppendQuoted(std::wstring& line, const std::wstring& argument)
{
    line += line.empty() ? L"\"" : L" \"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') {
            line.append(backslashes + 1, L'\\');
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, L'\\').append(1, L'"');
}

std::wstring CommandLine(const std::wstring& program, const std::vector<std::string>& arguments)
{
    std::wstring line;
    AppendQuoted(line, program);
    for (const std::string& argument : arguments) {
        AppendQuoted(line, du::Utf8ToWideStr(argument));
    }
    return line;
}

/// The handles that a program gets, and no others of this process.
class Inheritance
{
public:
    explicit Inheritance(std::array<HANDLE, 2> handles) : m_handles(handles)
    {
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_bytes.resize(size);
        m_isMade = ::InitializeProcThreadAttributeList(Get(), 1, 0, &size) &&
                   ::UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_handles.data(),
                                               sizeof m_handles, nullptr, nullptr);
    }
    ~Inheritance()
    {
        if (m_isMade) {
            ::DeleteProcThreadAttributeList(Get());
        }
    }
    Inheritance(const Inheritance&) = delete;
    Inheritance& operator=(const Inheritance&) = delete;

    bool IsMade() const noexcept { return m_isMade; }
    LPPROC_THREAD_ATTRIBUTE_LIST Get() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_bytes.data()); }

private:
    std::array<HANDLE, 2> m_handles;
    std::vector<std::byte> m_bytes;
    bool m_isMade = false;
};

/// A program in a job of its own, which ends with the job: it, and whatever it has started.
class Child
{
public:
    Child() = default;
    ~Child()
    {
        if (m_job.IsOpen()) {
            ::TerminateJobObject(m_job.Get(), 1);
        }
        if (m_process.IsOpen()) {
            ::TerminateProcess(m_process.Get(), 1);
            ::WaitForSingleObject(m_process.Get(), INFINITE);
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    bool Start(const std::wstring& program, const std::vector<std::string>& arguments, HANDLE output, HANDLE nowhere)
    {
        Inheritance inherited({output, nowhere});
        if (!MakeJob() || !inherited.IsMade()) {
            return false;
        }
        STARTUPINFOEXW startup{};
        startup.StartupInfo.cb = sizeof startup;
        startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdInput = nowhere;
        startup.StartupInfo.hStdOutput = output;
        startup.StartupInfo.hStdError = nowhere;
        startup.lpAttributeList = inherited.Get();
        std::wstring line = CommandLine(program, arguments);
        PROCESS_INFORMATION started{};
        constexpr DWORD kFlags = CREATE_SUSPENDED | CREATE_NO_WINDOW | EXTENDED_STARTUPINFO_PRESENT;
        if (!::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, kFlags, nullptr, nullptr,
                              &startup.StartupInfo, &started)) {
            return false;
        }
        *m_process.Fill() = started.hProcess;
        const Handle thread(started.hThread);
        return ::AssignProcessToJobObject(m_job.Get(), m_process.Get()) &&
               ::ResumeThread(thread.Get()) != static_cast<DWORD>(-1);
    }

    /// A program that has closed its output ends at once as a rule, and need not.
    Result WaitUntil(Clock::time_point end)
    {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        const auto patience = static_cast<DWORD>(std::clamp<long long>(left, 0, MAXLONG));
        DWORD code = 0;
        if (::WaitForSingleObject(m_process.Get(), patience) != WAIT_OBJECT_0 ||
            !::GetExitCodeProcess(m_process.Get(), &code)) {
            return {Ending::TooSlow, 0};
        }
        // Of an exception that nobody has caught, the number of the exception.
        constexpr DWORD kFirstException = 0xC0000000;
        return {code >= kFirstException ? Ending::Signalled : Ending::Exited, static_cast<int>(code)};
    }

private:
    bool MakeJob()
    {
        *m_job.Fill() = ::CreateJobObjectW(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags =
            JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
        return m_job.IsOpen() &&
               ::SetInformationJobObject(m_job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    }

    Handle m_job;
    Handle m_process;
};

/// Reads until the end of the output. @return what came before that, if anything did
std::optional<Result> ReadAll(HANDLE pipe, Clock::time_point end, std::uint64_t outputBytes, std::string& output)
{
    DWORD pause = 0;
    while (Clock::now() < end) {
        DWORD available = 0;
        if (!::PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr)) {
            return ::GetLastError() == ERROR_BROKEN_PIPE ? std::nullopt : std::optional(Failed(Ending::Unreadable));
        }
        if (available == 0) {
            ::Sleep(pause);
            pause = std::min(pause * 2 + 1, static_cast<DWORD>(kLongestPause.count()));
            continue;
        }
        pause = 0;
        const std::size_t size = output.size();
        output.resize(size + available);
        DWORD count = 0;
        const bool isRead = ::ReadFile(pipe, output.data() + size, available, &count, nullptr) != 0;
        output.resize(size + count);
        if (!isRead) {
            return Failed(Ending::Unreadable);
        }
        if (output.size() > outputBytes) {
            return Result{Ending::TooMuchOutput, 0};
        }
    }
    return Result{Ending::TooSlow, 0};
}

} // namespace

ChildProcess::Result ChildProcess::Run(const std::string& program, const std::vector<std::string>& arguments,
                                       const Limits& limits, std::string& output)
{
    output.clear();
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    Handle reading;
    Handle writing;
    if (!::CreatePipe(reading.Fill(), writing.Fill(), &inheritable, 0) ||
        !::SetHandleInformation(reading.Get(), HANDLE_FLAG_INHERIT, 0)) {
        return Failed(Ending::NotStarted);
    }
    const Handle nowhere(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       &inheritable, OPEN_EXISTING, 0, nullptr));
    Child child;
    if (!nowhere.IsOpen() || !child.Start(du::Utf8ToWideStr(program), arguments, writing.Get(), nowhere.Get())) {
        return Failed(Ending::NotStarted);
    }
    writing.Close();
    const Clock::time_point end = Clock::now() + limits.time;
    const std::optional<Result> early = ReadAll(reading.Get(), end, limits.outputBytes, output);
    return early ? *early : child.WaitUntil(end);
}

} // namespace luhost::io
