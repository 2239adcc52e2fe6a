#include <dg/Location.h>
#include <dg/Quaternion.h>

#include <cmath>

namespace dg
{

Location Location::FromXform(const DMat44& xform) noexcept
{
    FMat33 matrix;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            matrix.Set(row, column, static_cast<float>(xform.Get(row, column)));
        }
    }
    return {matrix, DPoint3D(xform.Get(0, 3), xform.Get(1, 3), xform.Get(2, 3))};
}

DMat44 Location::GetXform() const noexcept
{
    DMat44 xform;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            xform.Set(row, column, static_cast<double>(m_mat.Get(row, column)));
        }
        xform.Set(row, 3, m_position.Get(row));
    }
    return xform;
}

void Location::Set(const DPoint3D& position, const Quaternion<float>& orientation, double scale) noexcept
{
    m_mat = orientation.ToMat() * FMat33::Scaling(scale, scale, scale);
    m_position = position;
}

void Location::Get(DPoint3D& position, Quaternion<float>& orientation, double& scale) const noexcept
{
    position = m_position;
    orientation = Quaternion<float>::FromMat(m_mat);
    scale = std::cbrt(m_mat.GetDeterminant());
}

Location operator*(const Location& outer, const Location& inner) noexcept
{
    return {outer.m_mat * inner.m_mat, outer.m_position + outer.m_mat * (inner.m_position - DPoint3D::ORIGIN)};
}

bool ApproximateEquality(const Location& a, const Location& b, double tolerance) noexcept
{
    return ApproximateEquality(a.GetMat(), b.GetMat(), tolerance) &&
           ApproximateEquality(a.GetPosition(), b.GetPosition(), tolerance);
}

} // namespace dg
