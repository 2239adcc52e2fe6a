#include <luk/illustration/SymbolTemplateCollection.h>

#include <utility>

namespace luk::illustration
{

namespace
{

du::SmartPtr<SymbolTemplateCollection>& CurrentCollection()
{
    static auto* const s_collection = new du::SmartPtr<SymbolTemplateCollection>;
    return *s_collection;
}

} // namespace

SymbolTemplateCollection::SymbolTemplateCollection() = default;

SymbolTemplateCollection::~SymbolTemplateCollection() = default;

const du::SmartPtr<SymbolTemplateCollection>& SymbolTemplateCollection::GetCollection() { return CurrentCollection(); }

void SymbolTemplateCollection::SetCollection(const du::SmartPtr<SymbolTemplateCollection>& collection)
{
    const du::SmartPtr<SymbolTemplateCollection> previous = std::exchange(CurrentCollection(), collection);
    if (previous && previous != collection) {
        previous->DetachAllObservers();
    }
}

} // namespace luk::illustration
