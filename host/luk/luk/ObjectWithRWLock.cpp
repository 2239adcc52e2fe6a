#include <dp/ReadWriteLock.h>
#include <luk/ObjectWithRWLock.h>

#include <atomic>

namespace luk
{

namespace
{

std::atomic<bool> s_locksEnabled{true};

} // namespace

ObjectWithRWLock::ObjectWithRWLock() : m_lock(s_locksEnabled ? std::make_unique<dp::ReadWriteLock>() : nullptr) {}

ObjectWithRWLock::ObjectWithRWLock(const ObjectWithRWLock& other)
    : Object(other), m_lock(other.m_lock ? std::make_unique<dp::ReadWriteLock>() : nullptr)
{
}

ObjectWithRWLock& ObjectWithRWLock::operator=(const ObjectWithRWLock&) noexcept { return *this; }

ObjectWithRWLock::~ObjectWithRWLock() = default;

void ObjectWithRWLock::SetLocksEnabled(bool enabled) noexcept { s_locksEnabled = enabled; }

} // namespace luk
