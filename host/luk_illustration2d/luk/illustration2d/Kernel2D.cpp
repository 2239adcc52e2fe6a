#include <luk/CurrentHandle.h>
#include <luk/illustration2d/Kernel2D.h>

namespace luk::illustration2d
{

Kernel2D::Kernel2D() : m_baseFactory(du::MakeCounted<BaseKernelFactory>()) {}

Kernel2D::~Kernel2D() = default;

du::SmartPtr<Kernel2D> Kernel2D::GetSingleton() { return CurrentHandle<Kernel2D>::GetSlot().Get(); }

void Kernel2D::SetSingleton(const du::SmartPtr<Kernel2D>& kernel) { CurrentHandle<Kernel2D>::GetSlot().Set(kernel); }

du::SmartPtr<BaseKernelFactory> Kernel2D::GetFactory(int kind) const
{
    return kind == BASE_KERNEL_FACTORY ? m_baseFactory : du::SmartPtr<BaseKernelFactory>();
}

void Kernel2D::SetFactory(int kind, const du::SmartPtr<BaseKernelFactory>& factory)
{
    if (kind == BASE_KERNEL_FACTORY) {
        m_baseFactory = factory;
    }
}

} // namespace luk::illustration2d
