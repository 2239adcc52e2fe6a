#include <luk/illustration/CollectionItem.h>

#include <algorithm>

namespace luk::illustration
{

CollectionItem::CollectionItem(const CollectionItem& other)
    : du::RefCounted(other), m_origin(other.m_origin), m_id(other.m_id), m_name(other.m_name)
{
}

CollectionItem& CollectionItem::operator=(const CollectionItem& other)
{
    m_origin = other.m_origin;
    Rename([&] {
        m_id = other.m_id;
        m_name = other.m_name;
    });
    return *this;
}

CollectionItem::~CollectionItem() = default;

void CollectionItem::SetId(const std::string& id)
{
    if (id != m_id) {
        Rename([&] { m_id = id; });
    }
}

void CollectionItem::SetName(const std::string& name)
{
    if (name != m_name) {
        Rename([&] { m_name = name; });
    }
}

template <class Change>
void CollectionItem::Rename(const Change& change)
{
    if (!m_collection) {
        change();
        return;
    }
    m_collection->PlaceRenaming(m_position);
    for (std::size_t i = 0; m_furtherPlaces && i < m_furtherPlaces->size(); ++i) {
        (*m_furtherPlaces)[i].collection->PlaceRenaming((*m_furtherPlaces)[i].position);
    }
    change();
    m_collection->PlaceRenamed(m_position);
    for (std::size_t i = 0; m_furtherPlaces && i < m_furtherPlaces->size(); ++i) {
        (*m_furtherPlaces)[i].collection->PlaceRenamed((*m_furtherPlaces)[i].position);
    }
}

void CollectionItem::AddPlace(AssociativeObjectCollection& collection, std::uint32_t position)
{
    if (!m_collection) {
        m_collection = &collection;
        m_position = position;
        return;
    }
    if (!m_furtherPlaces) {
        m_furtherPlaces = std::make_unique<std::vector<Place>>();
    }
    m_furtherPlaces->push_back({&collection, position});
}

void CollectionItem::RemovePlace(AssociativeObjectCollection& collection, std::uint32_t position) noexcept
{
    const bool isFirst = m_collection == &collection && m_position == position;
    if (!m_furtherPlaces) {
        m_collection = isFirst ? nullptr : m_collection;
        return;
    }
    if (isFirst) {
        m_collection = m_furtherPlaces->back().collection;
        m_position = m_furtherPlaces->back().position;
        m_furtherPlaces->pop_back();
    } else {
        std::erase_if(*m_furtherPlaces, [&](const Place& place) {
            return place.collection == &collection && place.position == position;
        });
    }
    if (m_furtherPlaces->empty()) {
        m_furtherPlaces.reset();
    }
}

void CollectionItem::RemovePlaces(const AssociativeObjectCollection& collection) noexcept
{
    if (m_furtherPlaces) {
        std::erase_if(*m_furtherPlaces, [&](const Place& place) { return place.collection == &collection; });
        if (m_furtherPlaces->empty()) {
            m_furtherPlaces.reset();
        }
    }
    if (m_collection == &collection) {
        RemovePlace(*m_collection, m_position);
    }
}

bool CollectionItem::FindPlace(const AssociativeObjectCollection& collection, std::uint32_t& position) const noexcept
{
    bool found = m_collection == &collection;
    position = m_position;
    for (std::size_t i = 0; m_furtherPlaces && i < m_furtherPlaces->size(); ++i) {
        const Place& place = (*m_furtherPlaces)[i];
        if (place.collection == &collection) {
            position = found ? std::min(position, place.position) : place.position;
            found = true;
        }
    }
    return found;
}

} // namespace luk::illustration
