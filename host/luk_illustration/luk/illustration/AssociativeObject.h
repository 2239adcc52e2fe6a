#pragma once

#include <du/SmartPtr.h>
#include <luk/illustration/CollectionItem.h>

#include <string>
#include <vector>

namespace luk
{
class Annotation;
class SerializedContentElement;
} // namespace luk

namespace luk::illustration
{

/// Entry of a collection that other objects are made from and stay related to.
class LUHOST_API AssociativeObject : public CollectionItem
{
public:
    ~AssociativeObject() override;

    /// Whether the other object is one of the same kind and says the same. False for null.
    virtual bool Compare(const du::SmartPtr<AssociativeObject>& other) const;

    /// Appends the annotations that use this object, in the order in which they began to.
    virtual void GetFigures(std::vector<du::SmartPtr<luk::Annotation>>& figures) const;

    /// Writes the object itself into saved content. @return false when it writes nothing there
    virtual bool Save(luk::SerializedContentElement& element) const;

    /// Compares id, name and category; neither origin nor users.
    bool operator==(const AssociativeObject& other) const noexcept;

    const std::string& GetCategoryId() const noexcept { return m_categoryId; }
    void SetCategoryId(const std::string& categoryId) { m_categoryId = categoryId; }

protected:
    explicit AssociativeObject(Origin origin) noexcept : CollectionItem(origin) {}
    AssociativeObject(const AssociativeObject&);
    AssociativeObject& operator=(const AssociativeObject&);

private:
    std::string m_categoryId;
};

} // namespace luk::illustration
