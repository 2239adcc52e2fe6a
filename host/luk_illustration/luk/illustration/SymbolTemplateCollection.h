#pragma once

#include <luk/illustration/AssociativeObjectCollection.h>

namespace luk::illustration
{

/// The symbol library of the session.
class LUHOST_API SymbolTemplateCollection : public AssociativeObjectCollection
{
public:
    SymbolTemplateCollection();
    ~SymbolTemplateCollection() override;

    /// [host thread] Always the same reference, valid for ever; the handle in it is null outside a session.
    static const du::SmartPtr<SymbolTemplateCollection>& GetCollection();
    /// [host thread] For the session, and for tests that stand in for one. Observers of the collection before are
    /// detached.
    static void SetCollection(const du::SmartPtr<SymbolTemplateCollection>& collection);
};

} // namespace luk::illustration
