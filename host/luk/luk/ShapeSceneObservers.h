#pragma once

#include <du/OrderedSet.h>
#include <du/PlaceMap.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/InstanceInterest.h>
#include <luk/ShapeSceneObserver.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace luk
{

class Instance;

/// The observers of a shape scene: who hears of which instance, and the batches; for the sources of the host alone.
///
/// Observers are called in the order in which they were registered, over a snapshot.
class ShapeSceneObservers
{
public:
    ShapeSceneObservers();
    ~ShapeSceneObservers();
    ShapeSceneObservers(const ShapeSceneObservers&) = delete;
    ShapeSceneObservers& operator=(const ShapeSceneObservers&) = delete;

    bool Register(const du::SmartPtr<ShapeSceneObserver>& observer, const du::SmartPtr<InstanceInterest>& interest,
                  bool batched);
    bool Unregister(const ShapeSceneObserver* observer);
    /// Detaches all; none is taken any more.
    void Close();

    bool IsEmpty() const noexcept { return m_all.GetCount() == 0; }
    void SetRoutingEnabled(bool enabled) noexcept { m_routing = enabled; }

    /// Whether a change of the instance is told to anybody.
    bool Reach(const Instance& instance) const;

    /// Batches nest. Those who hear everything are told of each batch, the others of those that reach them.
    void OpenBatch();
    void CloseBatch();

    /// [in a batch] @param isDue asked before each observer; false ends it
    void Tell(const Instance& instance, const std::function<bool()>& isDue,
              const std::function<void(ShapeSceneObserver&)>& tell);

private:
    class Record;
    class RecordsOfPath;
    using RecordPtr = std::shared_ptr<Record>;
    using Records = du::OrderedSet<RecordPtr>; ///< by the order of registration
    using Snapshot = std::vector<RecordPtr>;

    /// A record is known by its observer.
    friend const void* PlaceOf(const RecordPtr& record) noexcept;

    RecordPtr Take(const ShapeSceneObserver* observer);
    Snapshot GetReached(const Instance& instance) const;
    void AppendByPath(const du::Symbol& idPath, Snapshot& reached) const;
    void Begin(const RecordPtr& record);
    void DeliverEnds();
    static void TellEnd(ShapeSceneObserver& observer) noexcept;

    Records m_all;
    Records m_hearEverything;
    std::unique_ptr<du::PlaceMap<du::Symbol, RecordsOfPath>> m_byPath;
    std::uint64_t m_nextOrder = 0;
    std::deque<RecordPtr> m_begun; ///< to be told the end of the batch
    int m_depth = 0;
    bool m_ending = false;
    bool m_routing = true;
    bool m_closed = false;
};

} // namespace luk
