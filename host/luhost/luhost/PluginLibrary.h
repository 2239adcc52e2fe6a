#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>

#include <memory>
#include <string>

namespace luhost
{

/// A plug-in library, loaded by its path and driven through its three entry points LUDllInit, LUDllTerminate and
/// LUDllCreateComponent.
///
/// Ownership: the library stays in the process when this object goes, since objects, observers and events of it may live
/// on; Unload takes it out, and is for a host that knows that nothing of it is left.
///
/// Threads: one thread at a time.
///
/// Errors: a refused library is null with the reason in the error text.
class LUHOST_API PluginLibrary
{
public:
    /// Loads the library and calls its LUDllInit.
    /// @param[out] error why it was refused; empty when it was not
    static std::unique_ptr<PluginLibrary> Load(const std::string& path, std::string& error);

    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    const std::string& GetPath() const noexcept { return m_path; }

    /// @return null when the plug-in does not know the component, or after Unload
    du::SmartPtr<du::RefCounted> CreateComponent(const std::string& action, const std::string& category,
                                                 const std::string& type) const;

    /// The entry point itself, for a caller that keeps a slot of its own. @return its answer; false after Unload
    bool CreateComponent(const std::string& action, const std::string& category, const std::string& type,
                         du::SmartPtr<du::RefCounted>& slot) const;

    /// Calls LUDllTerminate and takes the library out of the process. A second call is without effect.
    /// @return false, with the reason, when the system refused
    bool Unload(std::string& error);

private:
    using VoidEntry = void (*)();
    using CreateEntry = bool (*)(const std::string&, const std::string&, const std::string&,
                                 du::SmartPtr<du::RefCounted>&);

    PluginLibrary(std::string path, void* handle) : m_path(std::move(path)), m_handle(handle) {}
    bool ResolveEntries(std::string& error);

    std::string m_path;
    void* m_handle;
    VoidEntry m_init = nullptr;
    VoidEntry m_terminate = nullptr;
    CreateEntry m_create = nullptr;
};

} // namespace luhost
