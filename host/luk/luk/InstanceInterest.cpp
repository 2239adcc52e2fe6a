#include <du/SymbolMap.h>
#include <luk/InstanceInterest.h>

#include <algorithm>
#include <new>
#include <unordered_set>
#include <utility>

namespace luk
{

class InstanceInterest::Content
{
public:
    du::SymbolSet idPaths;
    std::unordered_set<Follower*> followers;
};

InstanceInterest::InstanceInterest() : m_content(std::make_unique<Content>()) {}

InstanceInterest::~InstanceInterest() = default;

bool InstanceInterest::Add(const du::Symbol& idPath)
{
    if (idPath.IsNull() || !m_content->idPaths.insert(idPath).second) {
        return false;
    }
    try {
        for (Follower* const follower : m_content->followers) {
            follower->OnPathAdded(idPath);
        }
    } catch (const std::bad_alloc&) {
        Remove(idPath);
        throw;
    }
    return true;
}

bool InstanceInterest::Remove(const du::Symbol& idPath)
{
    if (m_content->idPaths.erase(idPath) == 0) {
        return false;
    }
    for (Follower* const follower : m_content->followers) {
        follower->OnPathRemoved(idPath);
    }
    return true;
}

void InstanceInterest::Clear()
{
    for (const du::Symbol& idPath : std::exchange(m_content->idPaths, {})) {
        for (Follower* const follower : m_content->followers) {
            follower->OnPathRemoved(idPath);
        }
    }
}

void InstanceInterest::Retain(const std::function<bool(const du::Symbol& idPath)>& isKept)
{
    for (auto next = m_content->idPaths.begin(); next != m_content->idPaths.end();) {
        const du::Symbol idPath = *next++;
        if (!isKept(idPath)) {
            Remove(idPath);
        }
    }
}

bool InstanceInterest::Contains(const du::Symbol& idPath) const { return m_content->idPaths.contains(idPath); }

std::size_t InstanceInterest::GetCount() const noexcept { return m_content->idPaths.size(); }

std::vector<du::Symbol> InstanceInterest::GetIdPaths() const
{
    std::vector<du::Symbol> idPaths(m_content->idPaths.begin(), m_content->idPaths.end());
    std::sort(idPaths.begin(), idPaths.end(),
              [](const du::Symbol& a, const du::Symbol& b) { return a.GetText() < b.GetText(); });
    return idPaths;
}

void InstanceInterest::AddFollower(Follower& follower)
{
    m_content->followers.insert(&follower);
    for (const du::Symbol& idPath : m_content->idPaths) {
        follower.OnPathAdded(idPath);
    }
}

void InstanceInterest::RemoveFollower(Follower& follower)
{
    m_content->followers.erase(&follower);
    for (const du::Symbol& idPath : m_content->idPaths) {
        follower.OnPathRemoved(idPath);
    }
}

} // namespace luk
