#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/illustration/CollectionInformation.h>
#include <luk/Preferences.h>

namespace luk::illustration
{

/// Component that reads a library of associative objects. A host makes a fresh one for each library that it reads.
class LUHOST_API AssociativeObjectLoader : public du::RefCounted
{
public:
    AssociativeObjectLoader();
    AssociativeObjectLoader(const AssociativeObjectLoader&);
    AssociativeObjectLoader& operator=(const AssociativeObjectLoader&);
    ~AssociativeObjectLoader() override;

    virtual du::SmartPtr<CollectionInformation> GetCollectionInformation() = 0;

    /// Called before anything is read.
    virtual void SetPreferences(const du::SmartPtr<luk::Preferences>& preferences);

protected:
    const du::SmartPtr<luk::Preferences>& GetPreferences() const noexcept { return m_preferences; }

private:
    du::SmartPtr<luk::Preferences> m_preferences;
};

} // namespace luk::illustration
