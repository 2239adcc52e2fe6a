#include <luk/IdPath.h>
#include <luk/illustration/SbomInstance.h>
#include <luk/Instance.h>

#include <utility>

namespace luk::illustration
{

SbomInstance::SbomInstance(SbomInstance* parent, const du::Symbol& id, std::string name)
    : m_id(id), m_idPath(parent ? du::Symbol(IdPath::Join(parent->m_idPath, id)) : IdPath::GetRoot()),
      m_name(std::move(name)), m_parent(parent)
{
}

SbomInstance::~SbomInstance() { DropPart(); }

void SbomInstance::DropPart() noexcept
{
    if (m_ebomInstance) {
        m_ebomInstance->m_sbomInstance = nullptr;
        m_ebomInstance = nullptr;
    }
}

du::SmartPtr<luk::Instance> SbomInstance::GetEbomInstance() const
{
    return du::SmartPtr<luk::Instance>(m_ebomInstance);
}

std::vector<du::SmartPtr<SbomInstance>> SbomInstance::GetChildren() const
{
    std::vector<du::SmartPtr<SbomInstance>> children;
    for (SbomInstance* child = m_firstChild; child; child = child->m_next) {
        children.emplace_back(child);
    }
    return children;
}

} // namespace luk::illustration
