#include <luk/ComponentNode.h>
#include <luk/IdPath.h>
#include <luk/illustration/SbomInstance.h>
#include <luk/Instance.h>
#include <luk/Tree.h>

namespace luk
{

const du::Symbol Instance::s_content_symbolPrefix("symbol:");

Instance::Instance(Tree& tree, Instance* parent, const du::SmartPtr<ComponentInstance>& componentInstance)
    : m_idPath(parent ? du::Symbol(IdPath::Join(parent->m_idPath, componentInstance->GetId())) : IdPath::GetRoot()),
      m_componentInstance(componentInstance), m_parent(parent), m_tree(&tree)
{
}

Instance::~Instance() { DropService(); }

void Instance::DropService() noexcept
{
    if (m_sbomInstance) {
        m_sbomInstance->m_ebomInstance = nullptr;
        m_sbomInstance = nullptr;
    }
}

du::SmartPtr<ComponentNode> Instance::GetNode() const
{
    if (!m_tree) {
        return {};
    }
    return m_componentInstance ? m_componentInstance->GetNode() : m_tree->m_rootNode;
}

du::SmartPtr<Instance> Instance::FindChild(const du::Symbol& id) const
{
    if (!m_tree || !IdPath::IsComponent(id)) {
        return {};
    }
    return m_tree->FindInstance(du::Symbol::Find(IdPath::Join(m_idPath, id)));
}

std::vector<du::SmartPtr<Instance>> Instance::GetChildren() const
{
    std::vector<du::SmartPtr<Instance>> children;
    for (Instance* child = m_firstChild; child; child = child->m_next) {
        children.emplace_back(child);
    }
    return children;
}

du::SmartPtr<illustration::SbomInstance> Instance::GetSbomInstance() const
{
    return du::SmartPtr<illustration::SbomInstance>(m_sbomInstance);
}

} // namespace luk
