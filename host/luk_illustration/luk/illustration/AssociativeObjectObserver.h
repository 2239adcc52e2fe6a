#pragma once

#include <du/SmartPtr.h>
#include <luk/Observer.h>

namespace luk::illustration
{

class AssociativeObject;

/// Observer of a collection of associative objects.
class LUHOST_API AssociativeObjectObserver : public luk::Observer
{
public:
    /// @param interest kept for the observer's own use; what it is told of is said when it is registered
    explicit AssociativeObjectObserver(int interest);
    ~AssociativeObjectObserver() override;

    int GetInterest() const noexcept { return m_interest; }

    /// [host thread] The collection has just been loaded from the delivered library.
    virtual void OnCollectionLoadedFromStandard();

    /// [host thread] An object was added, changed, replaced or removed.
    /// @param object null when there were several: every object may have changed then
    virtual void OnAssociativeObjectChanged(const du::SmartPtr<AssociativeObject>& object);

private:
    int m_interest;
};

} // namespace luk::illustration
