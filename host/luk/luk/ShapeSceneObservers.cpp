#include <luk/illustration/SbomInstance.h>
#include <luk/Instance.h>
#include <luk/ShapeSceneObservers.h>

#include <algorithm>
#include <new>
#include <utility>

namespace luk
{

/// A registered observer. Deliveries under way share it, so that they see at once who has left.
class ShapeSceneObservers::Record final : public InstanceInterest::Follower, public std::enable_shared_from_this<Record>
{
public:
    Record(ShapeSceneObservers& registry, std::uint64_t recordOrder,
           const du::SmartPtr<ShapeSceneObserver>& observerHandle, const du::SmartPtr<InstanceInterest>& interestHandle,
           bool wantsBatches)
        : order(recordOrder), observer(observerHandle), interest(interestHandle), batched(wantsBatches),
          m_registry(registry)
    {
    }

    void OnPathAdded(const du::Symbol& idPath) override
    {
        const auto records = m_registry.m_byPath.try_emplace(idPath).first;
        try {
            records->second.emplace(order, shared_from_this());
        } catch (const std::bad_alloc&) {
            if (records->second.empty()) {
                m_registry.m_byPath.erase(records);
            }
            throw;
        }
    }

    void OnPathRemoved(const du::Symbol& idPath) override
    {
        const auto found = m_registry.m_byPath.find(idPath);
        if (found != m_registry.m_byPath.end() && found->second.erase(order) > 0 && found->second.empty()) {
            m_registry.m_byPath.erase(found);
        }
    }

    void Enter()
    {
        if (!interest) {
            m_registry.m_hearEverything.emplace(order, shared_from_this());
            return;
        }
        interest->AddFollower(*this);
    }

    void Leave()
    {
        registered = false;
        if (interest) {
            interest->RemoveFollower(*this);
        } else {
            m_registry.m_hearEverything.erase(order);
        }
    }

    const std::uint64_t order;
    const du::SmartPtr<ShapeSceneObserver> observer;
    const du::SmartPtr<InstanceInterest> interest;
    const bool batched;
    bool registered = true;
    bool begun = false; ///< it has been told the begin of a batch, and not yet the end

private:
    ShapeSceneObservers& m_registry;
};

bool ShapeSceneObservers::Register(const du::SmartPtr<ShapeSceneObserver>& observer,
                                   const du::SmartPtr<InstanceInterest>& interest, bool batched)
{
    if (!observer || m_closed || m_order.contains(observer.get())) {
        return false;
    }
    const auto record = std::make_shared<Record>(*this, m_nextOrder, observer, interest, batched);
    const auto inAll = m_all.emplace(m_nextOrder, record).first;
    try {
        m_order.emplace(observer.get(), m_nextOrder);
        record->Enter();
    } catch (const std::bad_alloc&) {
        record->Leave();
        m_order.erase(observer.get());
        m_all.erase(inAll);
        throw;
    }
    ++m_nextOrder;
    return true;
}

ShapeSceneObservers::RecordPtr ShapeSceneObservers::Take(const ShapeSceneObserver* observer)
{
    const auto order = m_order.find(observer);
    if (order == m_order.end()) {
        return nullptr;
    }
    const auto position = m_all.find(order->second);
    RecordPtr record = std::move(position->second);
    m_all.erase(position);
    m_order.erase(order);
    record->Leave();
    return record;
}

bool ShapeSceneObservers::Unregister(const ShapeSceneObserver* observer)
{
    const RecordPtr record = Take(observer);
    if (record) {
        record->observer->OnDetached();
    }
    return record != nullptr;
}

void ShapeSceneObservers::Close()
{
    m_closed = true;
    const Records all = std::exchange(m_all, {});
    m_order.clear();
    for (const auto& [order, record] : all) {
        record->Leave();
    }
    m_begun.clear();
    for (const auto& [order, record] : all) {
        record->observer->OnDetached();
    }
}

void ShapeSceneObservers::Append(const Records& records, Snapshot& snapshot)
{
    for (const auto& [order, record] : records) {
        snapshot.push_back(record);
    }
}

void ShapeSceneObservers::AppendByPath(const du::Symbol& idPath, Snapshot& reached) const
{
    const auto found = m_byPath.find(idPath);
    if (found != m_byPath.end()) {
        Append(found->second, reached);
    }
}

ShapeSceneObservers::Snapshot ShapeSceneObservers::GetReached(const Instance& instance) const
{
    Snapshot reached;
    Append(m_routing ? m_hearEverything : m_all, reached);
    if (!m_routing || m_byPath.empty()) {
        return reached;
    }
    AppendByPath(instance.GetIdPath(), reached);
    if (const du::SmartPtr<illustration::SbomInstance> service = instance.GetSbomInstance()) {
        AppendByPath(service->GetIdPath(), reached);
    }
    const auto isEarlier = [](const RecordPtr& a, const RecordPtr& b) { return a->order < b->order; };
    if (!std::is_sorted(reached.begin(), reached.end(), isEarlier)) {
        std::sort(reached.begin(), reached.end(), isEarlier);
    }
    reached.erase(std::unique(reached.begin(), reached.end()), reached.end());
    return reached;
}

void ShapeSceneObservers::Tell(const Instance& instance, const std::function<bool()>& isDue,
                               const std::function<void(ShapeSceneObserver&)>& tell)
{
    for (const RecordPtr& record : GetReached(instance)) {
        if (!isDue()) {
            return;
        }
        Begin(record);
        if (record->registered && isDue()) {
            tell(*record->observer);
        }
    }
}

void ShapeSceneObservers::Begin(const RecordPtr& record)
{
    if (record->batched && record->registered && !record->begun) {
        m_begun.push_back(record);
        record->begun = true;
        record->observer->OnBeginUpdate();
    }
}

void ShapeSceneObservers::OpenBatch()
{
    if (m_depth++ > 0) {
        return;
    }
    Snapshot hearEverything;
    Append(m_hearEverything, hearEverything);
    for (const RecordPtr& record : hearEverything) {
        Begin(record);
    }
}

void ShapeSceneObservers::CloseBatch()
{
    if (--m_depth == 0 && !m_ending) {
        m_ending = true;
        DeliverEnds();
        m_ending = false;
    }
}

/// Batches are closed by destructors, so that nobody can be told that an observer found no memory for its answer.
void ShapeSceneObservers::TellEnd(ShapeSceneObserver& observer) noexcept
{
    try {
        observer.OnEndUpdate();
    } catch (const std::bad_alloc&) {
        return;
    }
}

/// What an observer changes in answer to an end makes a batch of its own; its ends queue up behind those still to be
/// delivered, so that a chain of answers does not become a chain of nested calls.
void ShapeSceneObservers::DeliverEnds()
{
    while (m_depth == 0 && !m_begun.empty()) {
        const RecordPtr record = std::move(m_begun.front());
        m_begun.pop_front();
        record->begun = false;
        if (record->registered) {
            TellEnd(*record->observer);
        }
    }
}

} // namespace luk
