#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/illustration/CollectionInformation.h>

namespace luk::illustration
{

/// Component that writes a library of associative objects.
class LUHOST_API AssociativeObjectSaver : public du::RefCounted
{
public:
    AssociativeObjectSaver();
    AssociativeObjectSaver(const AssociativeObjectSaver&);
    AssociativeObjectSaver& operator=(const AssociativeObjectSaver&);
    ~AssociativeObjectSaver() override;

    /// Another kind of information than the saver knows, and null, are without effect.
    virtual void SetCollectionInformation(const du::SmartPtr<CollectionInformation>& information) = 0;
};

} // namespace luk::illustration
