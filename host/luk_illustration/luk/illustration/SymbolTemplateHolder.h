#pragma once

#include <luk/illustration/AssociativeObjectHolder.h>

namespace luk::illustration
{

/// Relation to an entry of the symbol library.
class LUHOST_API SymbolTemplateHolder : public AssociativeObjectHolder
{
public:
    SymbolTemplateHolder() = default;
    SymbolTemplateHolder(const SymbolTemplateHolder&) = default;
    SymbolTemplateHolder& operator=(const SymbolTemplateHolder&) = default;
    ~SymbolTemplateHolder() override;

protected:
    AssociativeObjectCollection* GetAssociativeCollection() const override;
};

} // namespace luk::illustration
