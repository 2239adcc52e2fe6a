#pragma once

#include <du/SmartPtr.h>

#include <string>

namespace luk::illustration
{

class AssociativeObject;
class AssociativeObjectCollection;

/// Relation to an object of a collection, by the object's id: it follows when the object is replaced.
///
/// Ownership: holds no object, so that no cycle can go through it.
///
/// Threads: belongs to the host thread, as the collection does.
class LUHOST_API AssociativeObjectHolder
{
public:
    virtual ~AssociativeObjectHolder();

    /// What the collection now holds under the related id; null without a relation, object or collection.
    du::SmartPtr<AssociativeObject> GetRelatedAssociativeObject() const;

    /// Relates to the given object. @return false, with the relation as it was, for null and for an object whose id the
    /// collection does not know
    bool UpdateAssociativeObject(const du::SmartPtr<AssociativeObject>& object);
    void ReleaseAssociativeObject();

    bool HasRelation() const noexcept { return m_related; }
    const std::string& GetRelatedId() const noexcept { return m_relatedId; }

protected:
    AssociativeObjectHolder() = default;
    AssociativeObjectHolder(const AssociativeObjectHolder&) = default;
    AssociativeObjectHolder& operator=(const AssociativeObjectHolder&) = default;

    virtual AssociativeObjectCollection* GetAssociativeCollection() const = 0;

private:
    std::string m_relatedId;
    bool m_related = false;
};

} // namespace luk::illustration
