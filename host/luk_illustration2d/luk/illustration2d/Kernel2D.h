#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/illustration2d/BaseKernelFactory.h>
#include <luk/Object.h>

namespace luk::illustration2d
{

/// The 2D side of a session.
///
/// Ownership: the session holds the kernel; GetSingleton hands out counted handles and null outside a session.
///
/// Threads: GetSingleton is safe on any thread, the rest belongs to the host thread.
class LUHOST_API Kernel2D : public luk::Object, public virtual du::RefCounted
{
public:
    /// Kinds of factories.
    enum FactoryKind : int { BASE_KERNEL_FACTORY = 4 };

    Kernel2D();
    ~Kernel2D() override;

    static du::SmartPtr<Kernel2D> GetSingleton();
    /// [host thread] For the session, and for tests that stand in for one.
    static void SetSingleton(const du::SmartPtr<Kernel2D>& kernel);

    /// Null for a kind that there is no factory of.
    du::SmartPtr<BaseKernelFactory> GetFactory(int kind) const;
    void SetFactory(int kind, const du::SmartPtr<BaseKernelFactory>& factory);

private:
    du::SmartPtr<BaseKernelFactory> m_baseFactory;
};

} // namespace luk::illustration2d
