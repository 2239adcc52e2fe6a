#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/illustration2d/Stamp2D.h>
#include <luk/Object.h>

namespace luk::illustration2d
{

/// Makes the elements of 2D documents.
///
/// Threads: belongs to the host thread.
class LUHOST_API BaseKernelFactory : public luk::Object, public virtual du::RefCounted
{
public:
    BaseKernelFactory() = default;
    ~BaseKernelFactory() override;

    virtual du::SmartPtr<Stamp2D> CreateStamp2D();
};

} // namespace luk::illustration2d
