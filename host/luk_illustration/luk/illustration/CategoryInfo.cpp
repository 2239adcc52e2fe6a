#include <luk/illustration/CategoryInfo.h>

namespace luk::illustration
{

CategoryInfo::CategoryInfo(Origin origin, AssociativeObjectCollection::Type type, const std::string& name)
    : CollectionItem(origin, name), m_type(type)
{
}

CategoryInfo::CategoryInfo(const CategoryInfo&) = default;
CategoryInfo& CategoryInfo::operator=(const CategoryInfo&) = default;
CategoryInfo::~CategoryInfo() = default;

AssociativeObjectCollection::Type CategoryInfo::GetType() const { return m_type; }

} // namespace luk::illustration
