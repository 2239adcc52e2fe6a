#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration/SymbolTemplateHolder.h>

namespace luk::illustration
{

SymbolTemplateHolder::~SymbolTemplateHolder() = default;

AssociativeObjectCollection* SymbolTemplateHolder::GetAssociativeCollection() const
{
    return SymbolTemplateCollection::GetCollection().get();
}

} // namespace luk::illustration
