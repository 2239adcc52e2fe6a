#include <du/FileSystem.h>
#include <du/SystemPath.h>
#include <luhost/PluginLibrary.h>

#include <filesystem>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#  include <windows.h>
#else
#  include <dlfcn.h>
#endif

namespace luhost
{

namespace
{

#if defined(_WIN32)

std::string LastSystemError() { return du::WindowsFiles::MessageOf(::GetLastError()); }

void* OpenLibrary(const std::filesystem::path& path) { return ::LoadLibraryW(path.c_str()); }

void* FindEntry(void* handle, const char* name)
{
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle), name));
}

bool CloseLibrary(void* handle) { return ::FreeLibrary(static_cast<HMODULE>(handle)) != 0; }

#else

std::string LastSystemError()
{
    const char* const text = ::dlerror();
    return text ? text : "the system gives no reason";
}

void* OpenLibrary(const std::filesystem::path& path) { return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); }

void* FindEntry(void* handle, const char* name) { return ::dlsym(handle, name); }

bool CloseLibrary(void* handle) { return ::dlclose(handle) == 0; }

#endif

template <class Entry>
bool Resolve(void* handle, const char* name, Entry& entry, std::string& error)
{
    entry = reinterpret_cast<Entry>(FindEntry(handle, name));
    if (!entry) {
        error = std::string("it has no entry point ") + name;
    }
    return entry != nullptr;
}

} // namespace

std::unique_ptr<PluginLibrary> PluginLibrary::Load(const std::string& path, std::string& error)
{
    error.clear();
    if (!du::FileSystem::FileReadable(path)) {
        error = "no readable file";
        return nullptr;
    }
    // An absolute path, since the system would look for a bare name in its own folders.
    std::error_code failure;
    const auto absolute = std::filesystem::absolute(du::SystemPath(path), failure);
    void* const handle = failure ? nullptr : OpenLibrary(absolute);
    if (!handle) {
        error = failure ? failure.message() : LastSystemError();
        return nullptr;
    }
    std::unique_ptr<PluginLibrary> library(new PluginLibrary(path, handle));
    if (!library->ResolveEntries(error)) {
        CloseLibrary(handle);
        return nullptr;
    }
    library->m_init();
    return library;
}

PluginLibrary::~PluginLibrary() = default;

bool PluginLibrary::ResolveEntries(std::string& error)
{
    return Resolve(m_handle, "LUDllInit", m_init, error) && Resolve(m_handle, "LUDllTerminate", m_terminate, error) &&
           Resolve(m_handle, "LUDllCreateComponent", m_create, error);
}

du::SmartPtr<du::RefCounted> PluginLibrary::CreateComponent(const std::string& action, const std::string& category,
                                                            const std::string& type) const
{
    du::SmartPtr<du::RefCounted> component;
    CreateComponent(action, category, type, component);
    return component;
}

bool PluginLibrary::CreateComponent(const std::string& action, const std::string& category, const std::string& type,
                                    du::SmartPtr<du::RefCounted>& slot) const
{
    return m_create && m_create(action, category, type, slot);
}

bool PluginLibrary::Unload(std::string& error)
{
    error.clear();
    if (!m_handle) {
        return true;
    }
    m_terminate();
    m_create = nullptr;
    if (!CloseLibrary(std::exchange(m_handle, nullptr))) {
        error = LastSystemError();
        return false;
    }
    return true;
}

} // namespace luhost
