#include <luk/illustration2d/BaseKernelFactory.h>

namespace luk::illustration2d
{

BaseKernelFactory::~BaseKernelFactory() = default;

du::SmartPtr<Stamp2D> BaseKernelFactory::CreateStamp2D() { return du::MakeCounted<Stamp2D>(); }

} // namespace luk::illustration2d
