#pragma once

#include "Verdict.h"

#include <du/SmartPtr.h>
#include <luhost/PluginLibrary.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>

namespace luk
{
class Annotation;
}

namespace lukapp::illustration
{
class SymbolTemplateLoader;
}

namespace lusym::check
{

/// One run of one check: the plug-in that is looked at, and what is found out about it.
///
/// Threads: a check that starts threads tells what they found from its first one.
class Trial
{
public:
    /// Is told at once, since the process may not come to its end.
    using Listener = std::function<void(const Note&)>;

    /// @param folder an empty one, for this trial alone
    Trial(std::string plugin, std::string folder, std::uint64_t seed, Listener listener);

    const std::string& GetPluginPath() const noexcept { return m_pluginPath; }
    const std::string& GetFolder() const noexcept { return m_folder; }
    std::mt19937_64& Random() noexcept { return m_random; }

    /// @return false, with the reason, when it cannot be loaded with its three functions
    bool Load(std::string& problem);
    /// What Load has loaded.
    luhost::PluginLibrary& GetPlugin() noexcept { return *m_plugin; }

    /// Null, and told as a failure, when it is not what was asked for.
    du::SmartPtr<luk::Annotation> MakeAnnotation(const std::string& type);
    du::SmartPtr<lukapp::illustration::SymbolTemplateLoader> MakeLoader();

    /// Tells that the plug-in has broken its promise unless it holds. Each sentence is told once.
    /// @return holds
    bool Expect(bool holds, const std::string& broken);
    void Tell(Note note);
    void Skip(const std::string& reason) { Tell({Outcome::Skip, Side::Test, reason}); }

private:
    std::string m_pluginPath;
    std::string m_folder;
    std::mt19937_64 m_random;
    Listener m_listener;
    std::set<std::string> m_told;
    std::unique_ptr<luhost::PluginLibrary> m_plugin;
};

/// The types of annotation that a plug-in makes.
inline constexpr const char* kAnnotationTypes[] = {"symbol2d", "symbol3d", "symbol3dflattened"};

} // namespace lusym::check
