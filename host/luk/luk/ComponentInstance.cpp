#include <luk/ComponentInstance.h>
#include <luk/ComponentNode.h>
#include <luk/SameValue.h>
#include <luk/Tree.h>

namespace luk
{

ComponentInstance::ComponentInstance(const du::Symbol& id, const du::SmartPtr<ComponentNode>& node)
    : m_id(id), m_node(node)
{
}

ComponentInstance::~ComponentInstance() = default;

void ComponentInstance::SetLocation(const dg::Location& location)
{
    if (IsSame(location, m_location)) {
        return;
    }
    m_location = location;
    if (m_parent) {
        Tree::FollowMoved(*m_parent, *this);
    }
}

} // namespace luk
