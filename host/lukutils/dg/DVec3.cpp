#include <dg/DVec3.h>

#include <cmath>

namespace dg
{

double DVec3::Length() const noexcept { return std::hypot(x, y, z); }

DVec3 DVec3::Normalized() const noexcept
{
    const double length = Length();
    if (!(length > 0.0) || !std::isfinite(length)) {
        return BAD;
    }
    // Dividing keeps tiny lengths, whose reciprocal is infinite, usable.
    return {x / length, y / length, z / length};
}

bool ApproximateEquality(const DVec3& a, const DVec3& b, double tolerance) noexcept
{
    // An infinite component differs from its like by NaN, which no tolerance admits.
    return std::fabs(a.x - b.x) <= tolerance && std::fabs(a.y - b.y) <= tolerance && std::fabs(a.z - b.z) <= tolerance;
}

} // namespace dg
