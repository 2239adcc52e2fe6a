#include <luk/InstanceInterest.h>

#include <algorithm>
#include <new>

namespace luk
{

InstanceInterest::InstanceInterest() = default;

InstanceInterest::~InstanceInterest() = default;

bool InstanceInterest::Add(const du::Symbol& idPath)
{
    if (!m_idPaths.Add(idPath)) {
        return false;
    }
    try {
        for (Follower* follower = m_firstFollower; follower; follower = follower->next) {
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
    const du::Symbol removed = m_idPaths.Take(du::PlaceOf(idPath));
    if (removed.IsNull()) {
        return false;
    }
    TellRemoved(removed);
    return true;
}

void InstanceInterest::Clear()
{
    for (const du::Symbol& idPath : m_idPaths.TakeAll()) {
        TellRemoved(idPath);
    }
}

void InstanceInterest::Retain(const std::function<bool(const du::Symbol& idPath)>& isKept)
{
    m_idPaths.ForEach([&](const du::Symbol& idPath) {
        if (!isKept(idPath)) {
            Remove(idPath);
        }
    });
}

bool InstanceInterest::Contains(const du::Symbol& idPath) const { return m_idPaths.Contains(du::PlaceOf(idPath)); }

std::size_t InstanceInterest::GetCount() const noexcept { return m_idPaths.GetCount(); }

std::vector<du::Symbol> InstanceInterest::GetIdPaths() const
{
    std::vector<du::Symbol> idPaths = m_idPaths.GetAll();
    std::sort(idPaths.begin(), idPaths.end(),
              [](const du::Symbol& a, const du::Symbol& b) { return a.GetText() < b.GetText(); });
    return idPaths;
}

void InstanceInterest::AddFollower(Follower& follower)
{
    follower.next = m_firstFollower;
    if (m_firstFollower) {
        m_firstFollower->previous = &follower;
    }
    m_firstFollower = &follower;
    m_idPaths.ForEach([&follower](const du::Symbol& idPath) { follower.OnPathAdded(idPath); });
}

void InstanceInterest::RemoveFollower(Follower& follower)
{
    (follower.previous ? follower.previous->next : m_firstFollower) = follower.next;
    if (follower.next) {
        follower.next->previous = follower.previous;
    }
    follower.previous = nullptr;
    follower.next = nullptr;
    m_idPaths.ForEach([&follower](const du::Symbol& idPath) { follower.OnPathRemoved(idPath); });
}

void InstanceInterest::TellRemoved(const du::Symbol& idPath)
{
    for (Follower* follower = m_firstFollower; follower; follower = follower->next) {
        follower->OnPathRemoved(idPath);
    }
}

} // namespace luk
