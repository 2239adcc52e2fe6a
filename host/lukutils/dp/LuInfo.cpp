#include <dp/LuInfo.h>

#include <mutex>

namespace dp
{

namespace
{

struct SharedCache {
    std::mutex mutex;
    du::Symbol folder;
};

SharedCache& GetSharedCache() noexcept
{
    static SharedCache* const s_cache = new SharedCache;
    return *s_cache;
}

} // namespace

bool LuInfo::GetLuviewSharedCachePrefsDir(du::Symbol& folder) noexcept
{
    SharedCache& cache = GetSharedCache();
    const std::lock_guard lock(cache.mutex);
    folder = cache.folder;
    return !folder.IsNull();
}

void LuInfo::SetLuviewSharedCachePrefsDir(const du::Symbol& folder) noexcept
{
    SharedCache& cache = GetSharedCache();
    const std::lock_guard lock(cache.mutex);
    cache.folder = folder;
}

} // namespace dp
