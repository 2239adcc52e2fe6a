#include "MatrixInversion.h"

#include <dg/DMat44.h>

namespace dg
{

DPoint3D DMat44::TransformPoint(const DPoint3D& point) const noexcept
{
    const DVec3 turned = TransformVector(point - DPoint3D::ORIGIN);
    return DPoint3D(Get(0, 3), Get(1, 3), Get(2, 3)) + turned;
}

DVec3 DMat44::TransformVector(const DVec3& v) const noexcept
{
    return {Get(0, 0) * v.x + Get(0, 1) * v.y + Get(0, 2) * v.z, Get(1, 0) * v.x + Get(1, 1) * v.y + Get(1, 2) * v.z,
            Get(2, 0) * v.x + Get(2, 1) * v.y + Get(2, 2) * v.z};
}

bool DMat44::Invert() noexcept { return MatrixInversion<4>::Invert(m_entries); }

DMat44 operator*(const DMat44& a, const DMat44& b) noexcept
{
    DMat44 product;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k) {
                sum += a.Get(row, k) * b.Get(k, column);
            }
            product.Set(row, column, sum);
        }
    }
    return product;
}

} // namespace dg
