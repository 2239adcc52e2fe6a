#include <luk/ObjectWithRWLock.h>

#include <atomic>

namespace luk
{

namespace
{

std::atomic<bool> s_locksEnabled{true};

} // namespace

ObjectWithRWLock::ObjectWithRWLock() noexcept : m_hasLock(s_locksEnabled) {}

ObjectWithRWLock::ObjectWithRWLock(const ObjectWithRWLock& other) noexcept : Object(other), m_hasLock(other.m_hasLock)
{
}

ObjectWithRWLock& ObjectWithRWLock::operator=(const ObjectWithRWLock&) noexcept { return *this; }

ObjectWithRWLock::~ObjectWithRWLock() = default;

void ObjectWithRWLock::SetLocksEnabled(bool enabled) noexcept { s_locksEnabled = enabled; }

} // namespace luk
