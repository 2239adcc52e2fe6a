#include "NearestPart.h"

#include <luk/Instance.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace lusym
{

namespace
{

const std::string& IdPathOf(const NearestPart::Part& part) { return part->GetInstance()->GetIdPath().GetText(); }

bool StandsSomewhere(const dg::DPoint3D& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

double Along(const dg::DPoint3D& point, int axis) { return axis == 0 ? point.x : axis == 1 ? point.y : point.z; }

} // namespace

struct NearestPart::Search {
    dg::DPoint3D point;
    double distance = std::numeric_limits<double>::infinity();
    const Place* nearest = nullptr;
};

NearestPart::NearestPart(const std::vector<Part>& parts)
{
    for (const Part& part : parts) {
        if (!m_first || IdPathOf(part) < IdPathOf(m_first)) {
            m_first = part;
        }
        if (const dg::DPoint3D at = part->GetLocation().GetPosition(); StandsSomewhere(at)) {
            m_places.push_back({at, part});
        }
    }
    // Of several in one place the first is enough.
    std::ranges::sort(m_places, [](const Place& a, const Place& b) {
        return std::tie(a.at.x, a.at.y, a.at.z, IdPathOf(a.part)) < std::tie(b.at.x, b.at.y, b.at.z, IdPathOf(b.part));
    });
    m_places.erase(
        std::unique(m_places.begin(), m_places.end(), [](const Place& a, const Place& b) { return a.at == b.at; }),
        m_places.end());
    Order(0, m_places.size(), 0);
}

void NearestPart::Order(std::size_t first, std::size_t last, int axis)
{
    if (last - first < 2) {
        return;
    }
    const std::size_t middle = first + (last - first) / 2;
    const auto at = [this](std::size_t index) { return m_places.begin() + static_cast<std::ptrdiff_t>(index); };
    std::nth_element(at(first), at(middle), at(last),
                     [axis](const Place& a, const Place& b) { return Along(a.at, axis) < Along(b.at, axis); });
    Order(first, middle, (axis + 1) % 3);
    Order(middle + 1, last, (axis + 1) % 3);
}

NearestPart::Part NearestPart::Find(const dg::DPoint3D& point) const
{
    if (m_places.empty() || !StandsSomewhere(point)) {
        return m_first;
    }
    Search search{point};
    Look(0, m_places.size(), 0, search);
    return search.nearest->part;
}

void NearestPart::Look(std::size_t first, std::size_t last, int axis, Search& search) const
{
    if (first == last) {
        return;
    }
    const std::size_t middle = first + (last - first) / 2;
    const Place& place = m_places[middle];
    const dg::DVec3 way = place.at - search.point;
    const double distance = std::hypot(way.x, way.y, way.z);
    if (!search.nearest || distance < search.distance ||
        (distance == search.distance && IdPathOf(place.part) < IdPathOf(search.nearest->part))) {
        search.distance = distance;
        search.nearest = &place;
    }
    const double beyond = Along(search.point, axis) - Along(place.at, axis);
    const int next = (axis + 1) % 3;
    const auto look = [&](bool isAbove) {
        isAbove ? Look(middle + 1, last, next, search) : Look(first, middle, next, search);
    };
    look(beyond > 0.0);
    if (std::abs(beyond) <= search.distance) {
        look(!(beyond > 0.0));
    }
}

} // namespace lusym
