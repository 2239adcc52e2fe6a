#include <dg/FMat33.h>

#include <cmath>

namespace dg
{

DVec3 FMat33::GetScale() const noexcept
{
    return {GetColumn(0).Length(), GetColumn(1).Length(), GetColumn(2).Length()};
}

double FMat33::GetDeterminant() const noexcept { return GetColumn(0).Dot(GetColumn(1).Cross(GetColumn(2))); }

FMat33 operator*(const FMat33& a, const FMat33& b) noexcept
{
    FMat33 product;
    for (int column = 0; column < 3; ++column) {
        const DVec3 image = a * b.GetColumn(column);
        for (int row = 0; row < 3; ++row) {
            product.Set(row, column, static_cast<float>(image.Get(row)));
        }
    }
    return product;
}

bool ApproximateEquality(const FMat33& a, const FMat33& b, double tolerance) noexcept
{
    return ApproximateEquality(a.GetColumn(0), b.GetColumn(0), tolerance) &&
           ApproximateEquality(a.GetColumn(1), b.GetColumn(1), tolerance) &&
           ApproximateEquality(a.GetColumn(2), b.GetColumn(2), tolerance);
}

} // namespace dg
