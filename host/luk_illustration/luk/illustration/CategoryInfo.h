#pragma once

#include <luk/illustration/CollectionItem.h>

namespace luk::illustration
{

/// Category that groups the entries of a collection; entries name it by its id.
class LUHOST_API CategoryInfo : public CollectionItem
{
public:
    CategoryInfo(Origin origin, AssociativeObjectCollection::Type type, const std::string& name);
    CategoryInfo(const CategoryInfo&);
    CategoryInfo& operator=(const CategoryInfo&);
    ~CategoryInfo() override;

    AssociativeObjectCollection::Type GetType() const override;

private:
    AssociativeObjectCollection::Type m_type;
};

} // namespace luk::illustration
