#include "catalog/PartslibraryCategoryItem.h"

#include <luk/illustration/AssociativeObjectCollection.h>

namespace lusymbols
{

PartslibraryCategoryItem::PartslibraryCategoryItem(Origin origin)
    : CategoryInfo(origin, luk::illustration::AssociativeObjectCollection::Type::CATEGORY, std::string())
{
}

PartslibraryCategoryItem::~PartslibraryCategoryItem() = default;
PartslibraryCategoryItem::PartslibraryCategoryItem(const PartslibraryCategoryItem& other) = default;
PartslibraryCategoryItem::PartslibraryCategoryItem(PartslibraryCategoryItem&& other) = default;
PartslibraryCategoryItem& PartslibraryCategoryItem::operator=(const PartslibraryCategoryItem& other) = default;
PartslibraryCategoryItem& PartslibraryCategoryItem::operator=(PartslibraryCategoryItem&& other) = default;

} // namespace lusymbols
