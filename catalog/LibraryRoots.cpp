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
            roots.m_base = MakeRoot(preferences->GetBaseURL().GetText());
        }
    }
    du::Symbol sharedCache;
    dp::LuInfo::GetLuviewSharedCachePrefsDir(sharedCache);
    if (!sharedCache.IsNull()) {
        roots.m_shared = MakeRoot(sharedCache.GetText());
    }
    return roots;
}

LibraryRoots::Root LibraryRoots::MakeRoot(const std::string& folder)
{
    du::FileSpec spec;
    spec.SetLocation(folder);
    return {folder + du::FileSpec::DIR_SEP_CHAR, spec.GetFileSpec() + du::FileSpec::DIR_SEP_CHAR};
}

void LibraryRoots::Resolve(const PartslibraryItem& item, std::string& url) const
{
    if (du::FileSpec::IsAbsolute(url)) {
        return;
    }
    const Root& root = item.IsShared() ? m_shared : m_base;
    if (item.IsOOTB()) {
        const du::FileSpec relative(url);
        relative.GetLocation(&url, true);
        url.insert(0, root.raw).append(relative.GetFile());
    } else {
        url.insert(0, root.normalised);
    }
    Partslibrary::replaceAll(url, '\\', '/');
}

void LibraryRoots::Resolve(std::string& url) const
{
    if (!du::FileSpec::IsAbsolute(url)) {
        url.insert(0, m_base.normalised);
        Partslibrary::replaceAll(url, '\\', '/');
    }
}

} // namespace lusymbols
