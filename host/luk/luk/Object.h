#pragma once

#include <du/Symbol.h>
#include <luk/MemoryPoolAllocated.h>

namespace luk
{

/// Base of kernel objects: lives in the host's pool and tells its class word.
class LUHOST_API Object : public MemoryPoolAllocated
{
public:
    virtual ~Object();

    /// Word that names the object's class to people and in traces.
    virtual du::Symbol GetObjectClass() const;

protected:
    Object() noexcept = default;
    Object(const Object&) noexcept = default;
    Object& operator=(const Object&) noexcept = default;
};

} // namespace luk
