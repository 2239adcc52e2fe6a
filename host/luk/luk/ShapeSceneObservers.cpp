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

    void OnPathAdded(const du::Symbol& idPath) override;
    void OnPathRemoved(const du::Symbol& idPath) override;

    void Enter()
    {
        if (!interest) {
            m_registry.m_hearEverything.Add(shared_from_this());
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
            m_registry.m_hearEverything.Take(observer.get());
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

const void* PlaceOf(const ShapeSceneObservers::RecordPtr& record) noexcept
{
    return record ? record->observer.get() : nullptr;
}

/// Those whom one path interests: one, as for nearly every path, or a set of them.
class ShapeSceneObservers::RecordsOfPath
{
public:
    /// Needs no memory for the first one.
    void Add(Record& record)
    {
        if (!m_only && !m_many) {
            m_only = &record;
            return;
        }
        if (!m_many) {
            auto many = std::make_unique<du::OrderedSet<Record*>>();
            many->Add(m_only);
            many->Add(&record);
            m_many = std::move(many);
            m_only = nullptr;
        } else {
            m_many->Add(&record);
        }
    }

    void Remove(const Record& record) noexcept
    {
        if (m_only == &record) {
            m_only = nullptr;
        } else if (m_many) {
            m_many->Take(&record);
        }
    }

    bool IsEmpty() const noexcept { return !m_only && (!m_many || m_many->GetCount() == 0); }

    void AppendTo(Snapshot& snapshot) const
    {
        if (m_only) {
            snapshot.push_back(m_only->shared_from_this());
        } else if (m_many) {
            m_many->ForEach([&snapshot](Record* record) { snapshot.push_back(record->shared_from_this()); });
        }
    }

private:
    Record* m_only = nullptr;
    std::unique_ptr<du::OrderedSet<Record*>> m_many;
};

void ShapeSceneObservers::Record::OnPathAdded(const du::Symbol& idPath)
{
    m_registry.m_byPath->TryEmplace(idPath).first->Add(*this);
}

void ShapeSceneObservers::Record::OnPathRemoved(const du::Symbol& idPath)
{
    if (RecordsOfPath* const records = m_registry.m_byPath->Find(idPath)) {
        records->Remove(*this);
        if (records->IsEmpty()) {
            m_registry.m_byPath->Take(idPath);
        }
    }
}

ShapeSceneObservers::ShapeSceneObservers() : m_byPath(std::make_unique<du::PlaceMap<du::Symbol, RecordsOfPath>>()) {}

ShapeSceneObservers::~ShapeSceneObservers() { Close(); }

bool ShapeSceneObservers::Register(const du::SmartPtr<ShapeSceneObserver>& observer,
                                   const du::SmartPtr<InstanceInterest>& interest, bool batched)
{
    if (!observer || m_closed || m_all.Contains(observer.get())) {
        return false;
    }
    const auto record = std::make_shared<Record>(*this, m_nextOrder, observer, interest, batched);
    m_all.Add(record);
    try {
        record->Enter();
    } catch (const std::bad_alloc&) {
        record->Leave();
        m_all.Take(observer.get());
        throw;
    }
    ++m_nextOrder;
    return true;
}

ShapeSceneObservers::RecordPtr ShapeSceneObservers::Take(const ShapeSceneObserver* observer)
{
    RecordPtr record = m_all.Take(observer);
    if (record) {
        record->Leave();
    }
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
    const Snapshot all = m_all.TakeAll();
    for (const RecordPtr& record : all) {
        record->Leave();
    }
    m_begun.clear();
    for (const RecordPtr& record : all) {
        record->observer->OnDetached();
    }
}

void ShapeSceneObservers::AppendByPath(const du::Symbol& idPath, Snapshot& reached) const
{
    if (const RecordsOfPath* const records = m_byPath->Find(idPath)) {
        records->AppendTo(reached);
    }
}

bool ShapeSceneObservers::Reach(const Instance& instance) const
{
    if (!m_routing || m_hearEverything.GetCount() > 0) {
        return !IsEmpty();
    }
    const du::SmartPtr<illustration::SbomInstance> service = instance.GetSbomInstance();
    return m_byPath->Find(instance.GetIdPath()) || (service && m_byPath->Find(service->GetIdPath()));
}

ShapeSceneObservers::Snapshot ShapeSceneObservers::GetReached(const Instance& instance) const
{
    Snapshot reached = (m_routing ? m_hearEverything : m_all).GetAll();
    if (!m_routing || m_byPath->GetCount() == 0) {
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
    const Snapshot hearEverything = m_hearEverything.GetAll();
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
