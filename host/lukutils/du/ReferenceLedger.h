#pragma once

#include <du/Export.h>

#include <cstddef>
#include <string>
#include <vector>

/// 1 in builds whose handles report every reference to the ledger (presets debug, asan, tsan), else 0. The plug-in, the
/// host and the application must agree on it, because it decides what the inline parts of RefCounted and SmartPtr do.
#ifndef LUHOST_REFERENCE_LEDGER
#  define LUHOST_REFERENCE_LEDGER 0
#endif

namespace du
{

class RefCounted;

/// Book of who holds which counted object: finds a leak by its holder.
///
/// Use: switch it on around the work to be watched, then ask for what is left. Only builds with
/// LUHOST_REFERENCE_LEDGER 1 write into it; elsewhere it stays empty.
///
/// Threads and locks: every call is safe on any thread; the book has a lock of its own and calls nobody under it.
///
/// Errors: a reference removed under a tag that never took it is kept as a mismatch, not as a fault at once, since the
/// one who made it is best found at the end, beside the reference that was left over. A note that finds no memory is counted
/// as lost, and its reference goes on unwatched: handles come and go where nothing may throw.
class LUHOST_API ReferenceLedger
{
public:
    struct Entry {
        const RefCounted* object;
        const void* owner;       ///< address of the holding pointer
        std::string objectClass; ///< class name where the object was alive to tell it, else empty
        long count;              ///< references that this owner still holds; negative: released more than taken
    };

    /// Starts with an empty book. References taken before are unknown, and their release is not written down.
    static void SwitchOn();
    static void SwitchOff();
    static bool IsOn() noexcept;

    /// What is still held, or was released by someone who never took it, in no particular order. Class names are exact
    /// while no other thread is destroying the objects.
    static std::vector<Entry> GetOpenEntries();

    /// One line for each open entry, and one when notes were lost; empty when all is settled.
    static std::string Describe();

    static void NoteAdded(const RefCounted* object, const void* owner) noexcept;
    static void NoteRemoved(const RefCounted* object, const void* owner) noexcept;
    static void NoteDestroyed(const RefCounted* object) noexcept;

    ReferenceLedger() = delete;
};

} // namespace du
