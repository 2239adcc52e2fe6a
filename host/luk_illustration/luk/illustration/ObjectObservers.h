#pragma once

#include <dom/Observable.h>
#include <du/PlaceMap.h>
#include <du/SmartPtr.h>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace luk::illustration
{

class AssociativeObjectObserver;

/// The observers of a collection, by the id of the object that they want to hear of, so that a change costs those whom it
/// concerns and no others.
///
/// Threads and locks: as dom::Observable.
class ObjectObservers
{
public:
    /// @param id empty for one who wants to hear of every object
    bool Register(const du::SmartPtr<AssociativeObjectObserver>& observer, std::string_view id);
    bool Unregister(const AssociativeObjectObserver* observer);
    std::size_t GetCount() const;
    void DetachAll();

    /// @param id of the one object that is concerned; null for all observers, in the order of their ids
    void Notify(const std::string* id, const std::function<void(AssociativeObjectObserver&)>& notify) const;

private:
    class Group;
    using GroupPtr = std::shared_ptr<Group>;

    std::vector<GroupPtr> FindGroups(const std::string* id) const;

    mutable std::mutex m_mutex;
    std::map<std::string, GroupPtr, std::less<>> m_groups;
    du::PlaceMap<const AssociativeObjectObserver*, GroupPtr> m_groupOf;
};

} // namespace luk::illustration
