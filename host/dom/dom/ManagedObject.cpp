#include <dom/ManagedObject.h>
#include <du/SpinLock.h>

#include <mutex>

namespace dom
{

namespace
{

/// Used until the process ends, since an observer of a plug-in may be the last object of all to go.
constinit du::SpinLock s_booksLock;

} // namespace

ManagedObject::~ManagedObject()
{
    const std::lock_guard lock(s_booksLock);
    LeaveManager();
    while (m_first) {
        m_first->LeaveManager();
    }
}

void ManagedObject::ManageObject(ManagedObject& object)
{
    if (&object == this) {
        return;
    }
    const std::lock_guard lock(s_booksLock);
    object.LeaveManager();
    object.m_manager = this;
    object.m_next = m_first;
    if (m_first) {
        m_first->m_previous = &object;
    }
    m_first = &object;
    ++m_managedCount;
}

void ManagedObject::UnmanageObject(ManagedObject& object)
{
    const std::lock_guard lock(s_booksLock);
    if (object.m_manager == this) {
        object.LeaveManager();
    }
}

std::size_t ManagedObject::GetManagedObjectCount() const
{
    const std::lock_guard lock(s_booksLock);
    return m_managedCount;
}

bool ManagedObject::IsManaged() const
{
    const std::lock_guard lock(s_booksLock);
    return m_manager != nullptr;
}

void ManagedObject::LeaveManager() noexcept
{
    if (!m_manager) {
        return;
    }
    (m_previous ? m_previous->m_next : m_manager->m_first) = m_next;
    if (m_next) {
        m_next->m_previous = m_previous;
    }
    --m_manager->m_managedCount;
    m_manager = m_previous = m_next = nullptr;
}

} // namespace dom
