#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/illustration/ObjectObservers.h>

#include <new>

namespace luk::illustration
{

class ObjectObservers::Group : public dom::Observable
{
public:
    explicit Group(std::string_view id) : m_id(id) {}

    using dom::Observable::DetachAllObservers;
    using dom::Observable::NotifyObservers;

    const std::string& GetId() const noexcept { return m_id; }

private:
    const std::string m_id;
};

bool ObjectObservers::Register(const du::SmartPtr<AssociativeObjectObserver>& observer, std::string_view id)
{
    const std::lock_guard lock(m_mutex);
    if (!observer || m_groupOf.Find(observer.get())) {
        return false;
    }
    auto found = m_groups.find(id);
    if (found == m_groups.end()) {
        found = m_groups.emplace(id, std::make_shared<Group>(id)).first;
    }
    m_groupOf.TryEmplace(observer.get(), found->second);
    try {
        return found->second->RegisterObserver(observer);
    } catch (const std::bad_alloc&) {
        m_groupOf.Take(observer.get());
        throw;
    }
}

bool ObjectObservers::Unregister(const AssociativeObjectObserver* observer)
{
    GroupPtr group;
    {
        const std::lock_guard lock(m_mutex);
        group = m_groupOf.Take(observer);
    }
    if (!group) {
        return false;
    }
    // Tells the observer, who may come back here.
    group->UnregisterObserver(observer);
    const std::lock_guard lock(m_mutex);
    if (group->GetObserverCount() == 0) {
        const auto found = m_groups.find(group->GetId());
        if (found != m_groups.end() && found->second == group) {
            m_groups.erase(found);
        }
    }
    return true;
}

std::size_t ObjectObservers::GetCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_groupOf.GetCount();
}

void ObjectObservers::DetachAll()
{
    std::map<std::string, GroupPtr, std::less<>> groups;
    {
        const std::lock_guard lock(m_mutex);
        groups.swap(m_groups);
        m_groupOf = {};
    }
    for (const auto& [id, group] : groups) {
        group->DetachAllObservers();
    }
}

std::vector<ObjectObservers::GroupPtr> ObjectObservers::FindGroups(const std::string* id) const
{
    std::vector<GroupPtr> groups;
    const std::lock_guard lock(m_mutex);
    for (const auto& [groupId, group] : m_groups) {
        if (id && !groupId.empty()) {
            break; // those who want to hear of everything stand in front
        }
        groups.push_back(group);
    }
    if (const auto found = id && !id->empty() ? m_groups.find(*id) : m_groups.end(); found != m_groups.end()) {
        groups.push_back(found->second);
    }
    return groups;
}

void ObjectObservers::Notify(const std::string* id, const std::function<void(AssociativeObjectObserver&)>& notify) const
{
    for (const GroupPtr& group : FindGroups(id)) {
        group->NotifyObservers(
            [&](dom::Observer& observer) { notify(static_cast<AssociativeObjectObserver&>(observer)); });
    }
}

} // namespace luk::illustration
