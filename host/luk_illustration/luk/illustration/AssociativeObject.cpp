#include <luk/Annotation.h>
#include <luk/illustration/AssociativeObject.h>

namespace luk::illustration
{

AssociativeObject::AssociativeObject(const AssociativeObject&) = default;
AssociativeObject& AssociativeObject::operator=(const AssociativeObject&) = default;
AssociativeObject::~AssociativeObject() = default;

bool AssociativeObject::Compare(const du::SmartPtr<AssociativeObject>& other) const { return other && *this == *other; }

void AssociativeObject::GetFigures(std::vector<du::SmartPtr<luk::Annotation>>&) const {}

bool AssociativeObject::Save(luk::SerializedContentElement&) const { return false; }

bool AssociativeObject::operator==(const AssociativeObject& other) const noexcept
{
    return GetId() == other.GetId() && GetName() == other.GetName() && m_categoryId == other.m_categoryId;
}

} // namespace luk::illustration
