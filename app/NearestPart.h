#pragma once

#include <dg/DPoint3D.h>
#include <du/SmartPtr.h>
#include <luk/ShapeInstance.h>

#include <cstddef>
#include <vector>

namespace lusym
{

/// Parts by where they stand.
///
/// Cost: a search takes about the logarithm of the number of parts, since they lie in a tree whose levels divide space
/// along x, y and z by turns.
class NearestPart
{
public:
    using Part = du::SmartPtr<luk::ShapeInstance>;

    explicit NearestPart(const std::vector<Part>& parts);

    /// Of several that are as near the one whose path is the first; the same where nothing is near, since it or they stand
    /// nowhere. Null when there is none at all.
    Part Find(const dg::DPoint3D& point) const;

private:
    struct Place {
        dg::DPoint3D at;
        Part part;
    };
    struct Search;

    void Order(std::size_t first, std::size_t last, int axis);
    void Look(std::size_t first, std::size_t last, int axis, Search& search) const;

    std::vector<Place> m_places; ///< each range with its middle in the middle, along the axis of its level
    Part m_first;                ///< by its path
};

} // namespace lusym
