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
