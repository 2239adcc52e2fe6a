#include "Trial.h"

#include <luk/Annotation.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <utility>

namespace lusym::check
{

Trial::Trial(std::string plugin, std::string folder, std::uint64_t seed, Listener listener)
    : m_pluginPath(std::move(plugin)), m_folder(std::move(folder)), m_random(seed), m_listener(std::move(listener))
{
}

bool Trial::Load(std::string& problem)
{
    m_plugin = luhost::PluginLibrary::Load(m_pluginPath, problem);
    return m_plugin != nullptr;
}

du::SmartPtr<luk::Annotation> Trial::MakeAnnotation(const std::string& type)
{
    auto annotation = du::DynamicCast<luk::Annotation>(m_plugin->CreateComponent("create", "annotation", type));
    Expect(annotation != nullptr, "it makes no annotation of the type \"" + type + "\"");
    return annotation;
}

du::SmartPtr<lukapp::illustration::SymbolTemplateLoader> Trial::MakeLoader()
{
    auto loader = du::DynamicCast<lukapp::illustration::SymbolTemplateLoader>(
        m_plugin->CreateComponent("load", "template", "symbol"));
    Expect(loader != nullptr, "it makes no loader of symbol libraries");
    return loader;
}

bool Trial::Expect(bool holds, const std::string& broken)
{
    if (!holds) {
        Tell({Outcome::Fail, Side::Plugin, broken});
    }
    return holds;
}

void Trial::Tell(Note note)
{
    constexpr std::size_t kEnough = 20;
    if (m_told.size() < kEnough && m_told.insert(note.text).second) {
        m_listener(note);
    }
}

} // namespace lusym::check
