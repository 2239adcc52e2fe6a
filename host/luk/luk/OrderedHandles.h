#pragma once

#include <du/SmartPtr.h>

#include <cstddef>
#include <list>
#include <unordered_map>
#include <utility>
#include <vector>

namespace luk
{

/// Holds objects in the order in which they came, each once; for the sources of the host alone.
///
/// Cost: constant for each object that comes, goes or is looked for.
template <class T>
class OrderedHandles
{
public:
    /// @return false for null and for an object that is held already
    bool Add(const du::SmartPtr<T>& object)
    {
        if (!object) {
            return false;
        }
        List one{object}; // first, so that nothing is left when there is no memory
        const bool isNew = m_places.try_emplace(object.get(), one.begin()).second;
        if (isNew) {
            m_inOrder.splice(m_inOrder.end(), one);
        }
        return isNew;
    }

    /// Hands over the object, whose last handle this may be, after it has left. @return null when it was not held
    du::SmartPtr<T> Take(const T* object)
    {
        const auto place = m_places.find(object);
        if (place == m_places.end()) {
            return nullptr;
        }
        du::SmartPtr<T> taken = std::move(*place->second);
        m_inOrder.erase(place->second);
        m_places.erase(place);
        return taken;
    }

    std::list<du::SmartPtr<T>> TakeAll()
    {
        m_places.clear();
        return std::exchange(m_inOrder, {});
    }

    /// Null when there is none.
    du::SmartPtr<T> GetFirst() const { return m_inOrder.empty() ? du::SmartPtr<T>() : m_inOrder.front(); }
    bool Contains(const T* object) const { return m_places.count(object) != 0; }
    std::size_t GetCount() const noexcept { return m_inOrder.size(); }
    std::vector<du::SmartPtr<T>> GetAll() const { return {m_inOrder.begin(), m_inOrder.end()}; }

private:
    using List = std::list<du::SmartPtr<T>>;

    List m_inOrder;
    std::unordered_map<const T*, typename List::iterator> m_places;
};

} // namespace luk
