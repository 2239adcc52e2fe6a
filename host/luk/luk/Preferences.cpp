#include <dg/Color.h>
#include <dp/LuInfo.h>
#include <luk/Preferences.h>

#include <map>
#include <string>

namespace luk
{

struct Preferences::Colors {
    std::map<std::string, dg::Color, std::less<>> byKey;
};

Preferences::Preferences() : m_colors(std::make_unique<Colors>()) {}

Preferences::~Preferences() = default;

du::Symbol Preferences::GetBaseURL() const
{
    CountRead();
    return m_baseUrl;
}

void Preferences::SetBaseURL(const du::Symbol& folder) { m_baseUrl = folder; }

bool Preferences::IsSharedSymbolLibraryEnabled() const
{
    CountRead();
    return m_sharedSymbolLibraryEnabled;
}

du::Symbol Preferences::GetSharedSymbolLibraryFolder() const
{
    CountRead();
    du::Symbol folder = m_sharedSymbolLibraryFolder;
    if (folder.IsNull()) {
        dp::LuInfo::GetLuviewSharedCachePrefsDir(folder);
    }
    return folder;
}

void Preferences::SetSharedSymbolLibrary(bool enabled, const du::Symbol& folder)
{
    m_sharedSymbolLibraryEnabled = enabled;
    m_sharedSymbolLibraryFolder = folder;
}

void Preferences::GetIntUIAsColor(std::string_view key, dg::Color& color, bool* found) const
{
    CountRead();
    const auto entry = m_colors->byKey.find(key);
    const bool isSet = entry != m_colors->byKey.end();
    if (isSet) {
        color = entry->second;
    }
    if (found) {
        *found = isSet;
    }
}

void Preferences::SetIntUIColor(std::string_view key, const dg::Color& color)
{
    m_colors->byKey.insert_or_assign(std::string(key), color);
}

} // namespace luk
