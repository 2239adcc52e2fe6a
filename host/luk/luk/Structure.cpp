#include <luk/Structure.h>

namespace luk
{

Structure::~Structure() = default;

du::SmartPtr<ComponentNode> Structure::CreateComponentNode(const du::Symbol& name)
{
    return du::MakeCounted<ComponentNode>(name);
}

} // namespace luk
