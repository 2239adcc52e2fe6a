#include "catalog/LibraryRoots.h"

#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryItem.h"

#include <dp/LuInfo.h>
#include <du/FileSpec.h>
#include <luk/Preferences.h>
#include <luk/World.h>

namespace lusymbols
{

LibraryRoots LibraryRoots::FromHost()
{
    LibraryRoots roots;
    if (const du::SmartPtr<luk::World> world = luk::World::GetWorld()) {
        du::SmartPtr<luk::Preferences> preferences;
        world->GetIllustrationPreferences(preferences);
        if (preferences) {
            roots.m_base = MakeRoot(preferences->GetBaseURL());
        }
    }
    du::Symbol sharedCache;
    dp::LuInfo::GetLuviewSharedCachePrefsDir(sharedCache);
    roots.m_shared = MakeRoot(sharedCache);
    return roots;
}

LibraryRoots::Root LibraryRoots::MakeRoot(const du::Symbol& folder)
{
    // A folder that nobody has set is not the root of the file system.
    if (folder.IsNull()) {
        return {};
    }
    du::FileSpec spec;
    spec.SetLocation(folder.GetText());
    return {folder.GetText() + du::FileSpec::DIR_SEP_CHAR, spec.GetFileSpec() + du::FileSpec::DIR_SEP_CHAR};
}

void LibraryRoots::Resolve(const PartslibraryItem& item, std::string_view url, std::string& resolved) const
{
    const Root& root = item.IsShared() ? m_shared : m_base;
    if (!item.IsOOTB() || du::FileSpec::IsAbsolute(url)) {
        Resolve(root, url, resolved);
        return;
    }
    resolved.reserve(root.raw.size() + url.size() + 1);
    resolved.assign(root.raw);
    du::FileSpec::AppendNormalised(resolved, url);
    Partslibrary::replaceAll(resolved, '\\', '/');
}

void LibraryRoots::Resolve(std::string_view url, std::string& resolved) const { Resolve(m_base, url, resolved); }

void LibraryRoots::Resolve(const Root& root, std::string_view url, std::string& resolved)
{
    if (du::FileSpec::IsAbsolute(url)) {
        resolved.assign(url);
        return;
    }
    resolved.reserve(root.normalised.size() + url.size());
    resolved.assign(root.normalised).append(url);
    Partslibrary::replaceAll(resolved, '\\', '/');
}

} // namespace lusymbols
