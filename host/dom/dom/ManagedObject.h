#pragma once

#include <du/Export.h>

#include <cstddef>

namespace dom
{

/// An object that may be kept in the books of another one, and may keep such books itself.
///
/// Use: events and observers are handed to the kernel, `luk::Kernel::GetKernel()->ManageObject(*event)`, which can then
/// tell at any time what is still under way.
///
/// Ownership: the books hold no reference. A managed object lives by its handles alone; its end takes it out of the
/// books, and the end of the manager leaves its objects unmanaged.
///
/// Threads and locks: every call is safe on any thread. One lock serves all books; nobody is called under it.
///
/// Copies: a copy is managed by nobody and manages nobody.
///
/// Cost: constant for insertion and removal.
class LUHOST_API ManagedObject
{
public:
    ManagedObject() noexcept = default;
    ManagedObject(const ManagedObject&) noexcept {}
    ManagedObject& operator=(const ManagedObject&) noexcept { return *this; }
    virtual ~ManagedObject();

    /// Takes the object into the books; an object managed elsewhere moves over. Managing oneself is without effect.
    void ManageObject(ManagedObject& object);
    /// Takes the object out again; an object that is not in these books is left alone.
    void UnmanageObject(ManagedObject& object);

    std::size_t GetManagedObjectCount() const;
    bool IsManaged() const;

private:
    void LeaveManager() noexcept;

    ManagedObject* m_manager = nullptr;
    ManagedObject* m_previous = nullptr;
    ManagedObject* m_next = nullptr;
    ManagedObject* m_first = nullptr;
    std::size_t m_managedCount = 0;
};

} // namespace dom
