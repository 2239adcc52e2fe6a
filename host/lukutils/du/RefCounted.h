#pragma once

#include <du/Export.h>
#include <du/ReferenceLedger.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace du
{

/// Base of every shared object: an intrusive reference count.
///
/// Ownership: an object starts with no reference and is deleted by the hook of its last release, through its own class's
/// operator delete. Handles (SmartPtr) take and give references; nobody else calls delete. It works as a virtual and as
/// a non-virtual base.
///
/// Threads and locks: counting is atomic, so handles may come and go on any thread. The object's own state is guarded by
/// its class, not here.
///
/// Copies: a copy begins with a count of its own, and an assignment leaves both counts as they are; the count belongs to
/// the object, not to its value.
///
/// Cost: one atomic operation for each reference taken or given back.
class LUHOST_API RefCounted
{
public:
    RefCounted() noexcept { s_liveObjects.fetch_add(1, std::memory_order_relaxed); }
    RefCounted(const RefCounted&) noexcept : RefCounted() {}
    RefCounted& operator=(const RefCounted&) noexcept { return *this; }

    virtual ~RefCounted();

protected:
    /// Called once the last reference is gone, on the thread that gave it back. Deletes the object.
    virtual void ZeroReferenceCountHook();

public:
    /// @param owner address of the holding pointer; the ledger wants the same one back in RemoveReference
    void AddReference([[maybe_unused]] const void* owner) const noexcept
    {
#if LUHOST_REFERENCE_LEDGER
        if (ReferenceLedger::IsOn()) {
            ReferenceLedger::NoteAdded(this, owner);
        }
#endif
        m_count.fetch_add(1, std::memory_order_relaxed);
    }

    void RemoveReference([[maybe_unused]] const void* owner) const noexcept
    {
#if LUHOST_REFERENCE_LEDGER
        if (ReferenceLedger::IsOn()) {
            ReferenceLedger::NoteRemoved(this, owner);
        }
#endif
        if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            const_cast<RefCounted*>(this)->ZeroReferenceCountHook();
        }
    }

    std::uint32_t GetReferenceCount() const noexcept { return m_count.load(std::memory_order_relaxed); }

    /// Objects of this kind alive in the process; tests and the plug-in check compare it before and after.
    static std::size_t GetLiveObjectCount() noexcept { return s_liveObjects.load(std::memory_order_relaxed); }

    /// Keeps an object alive inside its own constructor.
    ///
    /// Rationale: a constructor that hands out a temporary handle would see the count fall back to zero and the
    /// half-built object deleted. The guard holds one reference and drops it without calling the hook.
    class ConstructionGuard
    {
    public:
        explicit ConstructionGuard(const RefCounted& object) noexcept : m_object(object)
        {
            m_object.AddReference(this);
        }
        ~ConstructionGuard() { m_object.DropReferenceWithoutHook(this); }
        ConstructionGuard(const ConstructionGuard&) = delete;
        ConstructionGuard& operator=(const ConstructionGuard&) = delete;

    private:
        const RefCounted& m_object;
    };

private:
    void DropReferenceWithoutHook([[maybe_unused]] const void* owner) const noexcept
    {
#if LUHOST_REFERENCE_LEDGER
        if (ReferenceLedger::IsOn()) {
            ReferenceLedger::NoteRemoved(this, owner);
        }
#endif
        m_count.fetch_sub(1, std::memory_order_acq_rel);
    }

    mutable std::atomic<std::uint32_t> m_count{0};
    static std::atomic<std::size_t> s_liveObjects;
};

} // namespace du
