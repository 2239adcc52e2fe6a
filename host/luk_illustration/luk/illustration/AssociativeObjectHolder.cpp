#include <luk/illustration/AssociativeObject.h>
#include <luk/illustration/AssociativeObjectHolder.h>

namespace luk::illustration
{

AssociativeObjectHolder::~AssociativeObjectHolder() = default;

du::SmartPtr<AssociativeObject> AssociativeObjectHolder::GetRelatedAssociativeObject() const
{
    const AssociativeObjectCollection* const collection = m_related ? GetAssociativeCollection() : nullptr;
    return collection ? collection->GetAssociativeObjectById(m_relatedId) : nullptr;
}

bool AssociativeObjectHolder::UpdateAssociativeObject(const du::SmartPtr<AssociativeObject>& object)
{
    const AssociativeObjectCollection* const collection = object ? GetAssociativeCollection() : nullptr;
    if (!collection || !collection->GetAssociativeObjectById(object->GetId())) {
        return false;
    }
    m_relatedId = object->GetId();
    m_related = true;
    return true;
}

void AssociativeObjectHolder::ReleaseAssociativeObject()
{
    m_relatedId.clear();
    m_related = false;
}

} // namespace luk::illustration
