#pragma once

#include <du/RefCounted.h>
#include <luk/illustration/AssociativeObjectCollection.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace luk::illustration
{

/// Entry of a collection: an id, a name and where it comes from.
///
/// Ownership: counted; the collections that hold it are known to it by plain back links, which they undo themselves.
///
/// Threads: built by a loader, then belongs to the host thread.
///
/// Copies: id, name and origin are copied, places in collections are not. Assigning to an item of a collection renames
/// it there.
///
/// Cost: a renamed item updates the indices of its collection, usually in constant time.
class LUHOST_API CollectionItem : public du::RefCounted
{
public:
    /// A set of bits: an entry may be delivered with the product and shared at once.
    enum Origin : std::uint32_t {
        ORIGIN_OOTB = 1,   ///< delivered with the product, "out of the box"
        ORIGIN_SHARED = 2, ///< from the library that several users share
        ORIGIN_USER = 4,   ///< the user's own
    };

    ~CollectionItem() override;

    virtual AssociativeObjectCollection::Type GetType() const = 0;

    const std::string& GetId() const noexcept { return m_id; }
    void SetId(const std::string& id);

    const std::string& GetName() const noexcept { return m_name; }
    void SetName(const std::string& name);

    Origin GetOrigin() const noexcept { return m_origin; }
    bool IsOOTB() const noexcept { return (m_origin & ORIGIN_OOTB) != 0; }
    bool IsShared() const noexcept { return (m_origin & ORIGIN_SHARED) != 0; }

protected:
    explicit CollectionItem(Origin origin) noexcept : m_origin(origin) {}
    CollectionItem(Origin origin, const std::string& name) : m_origin(origin), m_name(name) {}
    CollectionItem(const CollectionItem& other);
    CollectionItem& operator=(const CollectionItem& other);

private:
    friend class AssociativeObjectCollection;

    /// A place in a collection. Nearly every item has one at most, so that further ones are kept apart.
    struct Place {
        AssociativeObjectCollection* collection;
        std::uint32_t position;
    };

    void AddPlace(AssociativeObjectCollection& collection, std::uint32_t position);
    void RemovePlace(AssociativeObjectCollection& collection, std::uint32_t position) noexcept;
    void RemovePlaces(const AssociativeObjectCollection& collection) noexcept;
    /// @param[out] position the smallest one in the collection
    bool FindPlace(const AssociativeObjectCollection& collection, std::uint32_t& position) const noexcept;
    template <class Change>
    void Rename(const Change& change);

    Origin m_origin;
    std::uint32_t m_position = 0;
    AssociativeObjectCollection* m_collection = nullptr;
    std::unique_ptr<std::vector<Place>> m_furtherPlaces;
    std::string m_id;
    std::string m_name;
};

} // namespace luk::illustration
