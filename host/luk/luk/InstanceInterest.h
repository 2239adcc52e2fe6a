#pragma once

#include <du/OrderedSet.h>
#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/MemoryPoolAllocated.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace luk
{

class ShapeSceneObservers;

/// The id paths, of either tree, that an observer of a shape scene wants to hear about. Its owner may change it at any
/// time; a change holds from the next notification on.
///
/// Ownership: counted; scenes that route by it hold it.
///
/// Threads: belongs to the host thread.
///
/// Cost: a change costs one update of each scene's index.
class LUHOST_API InstanceInterest : public MemoryPoolAllocated, public du::RefCounted
{
public:
    InstanceInterest();
    ~InstanceInterest() override;
    InstanceInterest(const InstanceInterest&) = delete;
    InstanceInterest& operator=(const InstanceInterest&) = delete;

    /// @return false for null and for a path that is in the set already
    bool Add(const du::Symbol& idPath);
    bool Remove(const du::Symbol& idPath);
    void Clear();
    /// Removes those that are not to be kept.
    void Retain(const std::function<bool(const du::Symbol& idPath)>& isKept);
    bool Contains(const du::Symbol& idPath) const;
    std::size_t GetCount() const noexcept;
    /// By their text.
    std::vector<du::Symbol> GetIdPaths() const;

private:
    friend class ShapeSceneObservers;

    /// One that keeps an index of the paths. Most interests have one.
    class Follower
    {
    public:
        virtual void OnPathAdded(const du::Symbol& idPath) = 0;
        virtual void OnPathRemoved(const du::Symbol& idPath) = 0;

        Follower* previous = nullptr; ///< of the same interest, which keeps both
        Follower* next = nullptr;

    protected:
        ~Follower() = default;
    };

    /// Tells it all paths. RemoveFollower undoes it, also where std::bad_alloc has cut it short.
    void AddFollower(Follower& follower);
    void RemoveFollower(Follower& follower);

    void TellRemoved(const du::Symbol& idPath);

    du::OrderedSet<du::Symbol> m_idPaths;
    Follower* m_firstFollower = nullptr;
};

} // namespace luk
