#include <dom/Observable.h>
#include <dom/Observer.h>
#include <du/OrderedSet.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace dom
{

/// The observers in order. Running notifications keep it alive, so that they see who has left also when the subject is gone.
class Observable::Registry
{
public:
    /// One who left and came back is another one to a notification that runs, hence the number.
    struct Entry {
        du::SmartPtr<Observer> observer;
        std::uint64_t number = 0;

        friend const void* PlaceOf(const Entry& entry) noexcept { return entry.observer.get(); }
    };
    using Snapshot = std::vector<Entry>;

    void Keep() noexcept { m_users.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept
    {
        if (m_users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

    bool Add(const du::SmartPtr<Observer>& observer)
    {
        std::shared_ptr<const Snapshot> outdated;
        const std::lock_guard lock(m_mutex);
        const bool isNew = m_entries.Add({observer, m_nextNumber});
        if (isNew) {
            ++m_nextNumber;
            outdated = std::move(m_snapshot);
        }
        return isNew;
    }

    du::SmartPtr<Observer> Remove(const Observer* observer)
    {
        std::shared_ptr<const Snapshot> outdated;
        const std::lock_guard lock(m_mutex);
        Entry removed = m_entries.Take(observer);
        if (removed.observer) {
            outdated = std::move(m_snapshot);
        }
        return std::move(removed.observer);
    }

    Snapshot RemoveAll() noexcept
    {
        std::shared_ptr<const Snapshot> outdated;
        const std::lock_guard lock(m_mutex);
        outdated = std::move(m_snapshot);
        return m_entries.TakeAll();
    }

    bool IsRegistered(const Entry& entry) const
    {
        const std::lock_guard lock(m_mutex);
        const Entry* const known = m_entries.Find(entry.observer.get());
        return known && known->number == entry.number;
    }

    /// Null for nobody.
    std::shared_ptr<const Snapshot> TakeSnapshot()
    {
        const std::lock_guard lock(m_mutex);
        if (!m_snapshot && m_entries.GetCount() > 0) {
            m_snapshot = std::make_shared<const Snapshot>(m_entries.GetAll());
        }
        return m_snapshot;
    }

    std::size_t GetCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_entries.GetCount();
    }

private:
    ~Registry() = default;

    mutable std::mutex m_mutex;
    du::OrderedSet<Entry> m_entries;
    std::uint64_t m_nextNumber = 0;
    std::shared_ptr<const Snapshot> m_snapshot; ///< null when the list has changed since
    std::atomic<std::size_t> m_users{1};        ///< the subject, and the notifications that run
};

Observable::Observable() noexcept = default;

Observable::Observable(const Observable&) noexcept : Observable() {}

Observable::~Observable()
{
    DetachAllObservers();
    if (Registry* const registry = m_registry.load(std::memory_order_acquire)) {
        registry->Release();
    }
}

/// The first observer brings it about; of two threads that make one, the later throws its own away.
Observable::Registry& Observable::HaveRegistry()
{
    Registry* registry = m_registry.load(std::memory_order_acquire);
    if (!registry) {
        auto* const made = new Registry;
        if (m_registry.compare_exchange_strong(registry, made, std::memory_order_acq_rel, std::memory_order_acquire)) {
            return *made;
        }
        made->Release();
    }
    return *registry;
}

bool Observable::RegisterObserver(const du::SmartPtr<Observer>& observer)
{
    return observer && HaveRegistry().Add(observer);
}

bool Observable::UnregisterObserver(const Observer* observer)
{
    Registry* const registry = m_registry.load(std::memory_order_acquire);
    const du::SmartPtr<Observer> removed = registry ? registry->Remove(observer) : nullptr;
    if (removed) {
        removed->OnDetached();
    }
    return removed != nullptr;
}

std::size_t Observable::GetObserverCount() const
{
    const Registry* const registry = m_registry.load(std::memory_order_acquire);
    return registry ? registry->GetCount() : 0;
}

void Observable::NotifyObservers(const std::function<void(Observer&)>& notify) const
{
    Registry* const registry = m_registry.load(std::memory_order_acquire);
    const std::shared_ptr<const Registry::Snapshot> snapshot = registry ? registry->TakeSnapshot() : nullptr;
    if (!snapshot) {
        return;
    }
    // An observer may bring the subject itself to its end, so that nothing of it is used from here on.
    registry->Keep();
    const std::unique_ptr<Registry, void (*)(Registry*)> kept(registry, [](Registry* used) { used->Release(); });
    for (const Registry::Entry& entry : *snapshot) {
        if (registry->IsRegistered(entry)) {
            notify(*entry.observer);
        }
    }
}

void Observable::DetachAllObservers()
{
    if (Registry* const registry = m_registry.load(std::memory_order_acquire)) {
        for (const Registry::Entry& entry : registry->RemoveAll()) {
            entry.observer->OnDetached();
        }
    }
}

} // namespace dom
