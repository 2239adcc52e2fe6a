#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace lusym::check
{

/// A library as the system loads it, without anything that a plug-in is.
class RawLibrary
{
public:
    enum class Binding {
        Lazy, ///< functions of other libraries are looked for when they are first called, where the system can do that
        Now,
    };

    /// @param[out] problem why it cannot be loaded
    static std::unique_ptr<RawLibrary> Load(const std::string& path, Binding binding, std::string& problem);
    /// Unloads it.
    ~RawLibrary();
    RawLibrary(const RawLibrary&) = delete;
    RawLibrary& operator=(const RawLibrary&) = delete;

    /// Null when it shows nothing of this name.
    void* Find(const std::string& name) const;

    /// Whether the process has it now, by whomever it was loaded.
    static bool IsLoaded(const std::string& path);
    /// What every library of the process sees under this name.
    static void* FindGlobal(const std::string& name);

private:
    explicit RawLibrary(void* handle) noexcept : m_handle(handle) {}

    void* m_handle;
};

/// What this process has at the moment; nothing where the system does not tell.
std::optional<std::size_t> CountThreads();
std::optional<std::set<std::string>> ListOpenFiles();
/// Bytes that are allocated and not given back.
std::optional<std::size_t> CountAllocatedBytes();

/// Makes a file whose other end nobody writes to. @return false where the system has none
bool MakePipe(const std::string& path);

} // namespace lusym::check
