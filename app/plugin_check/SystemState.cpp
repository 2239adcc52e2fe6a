#include "SystemState.h"

#include <filesystem>
#include <iterator>
#include <system_error>

#if defined(_WIN32)
#  include <windows.h>
// It needs the one before it.
#  include <tlhelp32.h>
#else
#  include <dlfcn.h>
#  include <malloc.h>
#  include <sys/stat.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
/// Of the sanitizer, whose headers do not come with every compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace lusym::check
{

namespace
{

namespace fs = std::filesystem;

/// The system would look for a bare name in its own folders.
fs::path AbsolutePath(const std::string& path)
{
    std::error_code error;
    return fs::absolute(std::u8string(path.begin(), path.end()), error);
}

} // namespace

#if defined(_WIN32)

std::unique_ptr<RawLibrary> RawLibrary::Load(const std::string& path, Binding, std::string& problem)
{
    void* const handle = ::LoadLibraryW(AbsolutePath(path).c_str());
    if (!handle) {
        problem = "the system gives the error " + std::to_string(::GetLastError());
        return nullptr;
    }
    return std::unique_ptr<RawLibrary>(new RawLibrary(handle));
}

RawLibrary::~RawLibrary() { ::FreeLibrary(static_cast<HMODULE>(m_handle)); }

void* RawLibrary::Find(const std::string& name) const
{
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(m_handle), name.c_str()));
}

bool RawLibrary::IsLoaded(const std::string& path) { return ::GetModuleHandleW(AbsolutePath(path).c_str()) != nullptr; }

/// A library is asked by its name always.
void* RawLibrary::FindGlobal(const std::string&) { return nullptr; }

bool MakePipe(const std::string&) { return false; }

std::optional<std::size_t> CountThreads()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    std::size_t count = 0;
    for (BOOL more = ::Thread32First(snapshot, &thread); more; more = ::Thread32Next(snapshot, &thread)) {
        count += thread.th32OwnerProcessID == ::GetCurrentProcessId();
    }
    ::CloseHandle(snapshot);
    return count;
}

/// The system tells a process handles of every kind, and what they are not without waiting for some of them.
std::optional<std::set<std::string>> ListOpenFiles() { return std::nullopt; }

#else

std::unique_ptr<RawLibrary> RawLibrary::Load(const std::string& path, Binding binding, std::string& problem)
{
    void* const handle =
        ::dlopen(AbsolutePath(path).c_str(), (binding == Binding::Lazy ? RTLD_LAZY : RTLD_NOW) | RTLD_LOCAL);
    if (!handle) {
        const char* const reason = ::dlerror();
        problem = reason ? reason : "the system gives no reason";
        return nullptr;
    }
    return std::unique_ptr<RawLibrary>(new RawLibrary(handle));
}

RawLibrary::~RawLibrary() { ::dlclose(m_handle); }

void* RawLibrary::Find(const std::string& name) const { return ::dlsym(m_handle, name.c_str()); }

bool RawLibrary::IsLoaded(const std::string& path)
{
    void* const handle = ::dlopen(AbsolutePath(path).c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle) {
        ::dlclose(handle);
    }
    return handle != nullptr;
}

void* RawLibrary::FindGlobal(const std::string& name) { return ::dlsym(RTLD_DEFAULT, name.c_str()); }

bool MakePipe(const std::string& path) { return ::mkfifo(path.c_str(), 0600) == 0; }

std::optional<std::size_t> CountThreads()
{
    std::error_code error;
    const fs::directory_iterator threads("/proc/self/task", error);
    if (error) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}

std::optional<std::set<std::string>> ListOpenFiles()
{
    std::error_code error;
    std::set<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd", error)) {
        const fs::path target = fs::read_symlink(entry.path(), error);
        const bool isThisFolder = target.filename() == "fd";
        if (!error && !isThisFolder) {
            files.insert(entry.path().filename().string() + " " + target.string());
        }
    }
    return files.empty() ? std::nullopt : std::optional(files);
}

#endif

std::optional<std::size_t> CountAllocatedBytes()
{
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#elif defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
    return std::nullopt;
#else
    return mallinfo2().uordblks + mallinfo2().hblkhd;
#endif
}

} // namespace lusym::check
