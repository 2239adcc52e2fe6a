#pragma once

#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolTemplate.h>
#include <luk/illustration/SymbolTemplateCollection.h>

#include <functional>
#include <string>
#include <vector>

namespace test
{

using Collection = luk::illustration::SymbolTemplateCollection;
using luk::illustration::AssociativeObject;
using luk::illustration::CategoryInfo;
using luk::illustration::CollectionItem;
using luk::illustration::SymbolTemplate;

inline du::SmartPtr<SymbolTemplate> MakeEntry(const std::string& id, const std::string& name = {},
                                              CollectionItem::Origin origin = CollectionItem::ORIGIN_USER)
{
    auto entry = du::MakeCounted<SymbolTemplate>(origin);
    entry->SetId(id);
    entry->SetName(name);
    return entry;
}

inline du::SmartPtr<CategoryInfo> MakeCategory(const std::string& id, const std::string& name = {})
{
    auto category = du::MakeCounted<CategoryInfo>(CollectionItem::ORIGIN_USER, Collection::CATEGORY, name);
    category->SetId(id);
    return category;
}

class CollectionListener : public luk::illustration::AssociativeObjectObserver
{
public:
    CollectionListener() : AssociativeObjectObserver(0) {}

    void OnCollectionLoadedFromStandard() override { log += "standard "; }
    void OnAssociativeObjectChanged(const du::SmartPtr<AssociativeObject>& object) override
    {
        log += (object ? object->GetId() : "several") + " ";
        if (reaction) {
            reaction();
        }
    }
    void OnDetached() override { log += "detached "; }

    std::string log;
    std::function<void()> reaction;
};

} // namespace test
