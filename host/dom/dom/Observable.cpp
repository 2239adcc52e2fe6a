#include <dom/Observable.h>
#include <dom/Observer.h>

#include <atomic>
#include <list>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace dom
{

/// The observers in order. Each has a record of its own, which running notifications share with the registry, so that
/// they see at once who has left.
class Observable::Registry
{
public:
    struct Record {
        du::SmartPtr<Observer> observer;
        std::atomic<bool> registered{true};
    };
    using RecordPtr = std::shared_ptr<Record>;
    using Snapshot = std::vector<RecordPtr>;

    bool Add(const du::SmartPtr<Observer>& observer)
    {
        std::list<RecordPtr> one{std::make_shared<Record>()}; // first, so that nothing is left when there is no memory
        one.front()->observer = observer;
        std::shared_ptr<const Snapshot> outdated;
        const std::lock_guard lock(m_mutex);
        const bool isNew = m_byObserver.try_emplace(observer.get(), one.begin()).second;
        if (isNew) {
            m_inOrder.splice(m_inOrder.end(), one);
            outdated = std::move(m_snapshot);
        }
        return isNew;
    }

    RecordPtr Remove(const Observer* observer)
    {
        std::shared_ptr<const Snapshot> outdated;
        const std::lock_guard lock(m_mutex);
        const auto entry = m_byObserver.find(observer);
        if (entry == m_byObserver.end()) {
            return nullptr;
        }
        RecordPtr record = std::move(*entry->second);
        record->registered = false;
        m_inOrder.erase(entry->second);
        m_byObserver.erase(entry);
        outdated = std::move(m_snapshot);
        return record;
    }

    std::list<RecordPtr> RemoveAll()
    {
        std::shared_ptr<const Snapshot> outdated;
        const std::lock_guard lock(m_mutex);
        for (const RecordPtr& record : m_inOrder) {
            record->registered = false;
        }
        m_byObserver.clear();
        outdated = std::move(m_snapshot);
        return std::exchange(m_inOrder, {});
    }

    /// Null for nobody.
    std::shared_ptr<const Snapshot> TakeSnapshot()
    {
        const std::lock_guard lock(m_mutex);
        if (!m_snapshot && !m_inOrder.empty()) {
            m_snapshot = std::make_shared<const Snapshot>(m_inOrder.begin(), m_inOrder.end());
        }
        return m_snapshot;
    }

    std::size_t GetCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_inOrder.size();
    }

private:
    mutable std::mutex m_mutex;
    std::list<RecordPtr> m_inOrder;
    std::unordered_map<const Observer*, std::list<RecordPtr>::iterator> m_byObserver;
    std::shared_ptr<const Snapshot> m_snapshot; ///< null when the list has changed since
};

Observable::Observable() : m_registry(std::make_unique<Registry>()) {}

Observable::Observable(const Observable&) : Observable() {}

Observable::~Observable() { DetachAllObservers(); }

bool Observable::RegisterObserver(const du::SmartPtr<Observer>& observer)
{
    return observer && m_registry->Add(observer);
}

bool Observable::UnregisterObserver(const Observer* observer)
{
    const Registry::RecordPtr record = m_registry->Remove(observer);
    if (record) {
        record->observer->OnDetached();
    }
    return record != nullptr;
}

std::size_t Observable::GetObserverCount() const { return m_registry->GetCount(); }

void Observable::NotifyObservers(const std::function<void(Observer&)>& notify) const
{
    // An observer may bring the subject itself to its end, so that nothing but the snapshot is used from here on.
    const std::shared_ptr<const Registry::Snapshot> snapshot = m_registry->TakeSnapshot();
    if (!snapshot) {
        return;
    }
    for (const Registry::RecordPtr& record : *snapshot) {
        if (record->registered) {
            notify(*record->observer);
        }
    }
}

void Observable::DetachAllObservers()
{
    for (const Registry::RecordPtr& record : m_registry->RemoveAll()) {
        record->observer->OnDetached();
    }
}

} // namespace dom
