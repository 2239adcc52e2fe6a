#include <dg/Quaternion.h>

#include <cmath>

namespace dg
{

namespace
{

struct Components {
    double w;
    double x;
    double y;
    double z;
};

/// From the three columns of a rotation matrix. The largest of the four components is taken from the diagonal first,
/// because the others are divided by it.
Components FromRotation(const DVec3& c0, const DVec3& c1, const DVec3& c2) noexcept
{
    const double trace = c0.x + c1.y + c2.z;
    if (trace >= 0.0) {
        return {1.0 + trace, c1.z - c2.y, c2.x - c0.z, c0.y - c1.x};
    }
    if (c0.x >= c1.y && c0.x >= c2.z) {
        return {c1.z - c2.y, 1.0 + c0.x - c1.y - c2.z, c0.y + c1.x, c2.x + c0.z};
    }
    if (c1.y >= c2.z) {
        return {c2.x - c0.z, c0.y + c1.x, 1.0 + c1.y - c0.x - c2.z, c1.z + c2.y};
    }
    return {c0.y - c1.x, c2.x + c0.z, c1.z + c2.y, 1.0 + c2.z - c0.x - c1.y};
}

} // namespace

template <class T>
Quaternion<T> Quaternion<T>::FromMat(const FMat33& matrix) noexcept
{
    const double mirror = matrix.GetDeterminant() < 0.0 ? -1.0 : 1.0;
    const DVec3 c0 = matrix.GetColumn(0).Normalized() * mirror;
    const DVec3 c1 = matrix.GetColumn(1).Normalized() * mirror;
    const DVec3 c2 = matrix.GetColumn(2).Normalized() * mirror;
    const Components q = FromRotation(c0, c1, c2);
    const double length = std::hypot(std::hypot(q.w, q.x), std::hypot(q.y, q.z));
    if (!(length > 0.0) || !std::isfinite(length) || matrix.GetDeterminant() == 0.0) {
        return IDENTITY;
    }
    const double factor = (q.w < 0.0 ? -1.0 : 1.0) / length;
    return {static_cast<T>(q.w * factor), static_cast<T>(q.x * factor), static_cast<T>(q.y * factor),
            static_cast<T>(q.z * factor)};
}

template <class T>
FMat33 Quaternion<T>::ToMat() const noexcept
{
    const double length = std::hypot(std::hypot(static_cast<double>(w), static_cast<double>(x)),
                                     std::hypot(static_cast<double>(y), static_cast<double>(z)));
    if (!(length > 0.0) || !std::isfinite(length)) {
        return FMat33::IDENTITY;
    }
    const double a = static_cast<double>(w) / length;
    const double b = static_cast<double>(x) / length;
    const double c = static_cast<double>(y) / length;
    const double d = static_cast<double>(z) / length;
    const auto entry = [](double value) { return static_cast<float>(value); };
    return {entry(1.0 - 2.0 * (c * c + d * d)), entry(2.0 * (b * c - a * d)),       entry(2.0 * (b * d + a * c)),
            entry(2.0 * (b * c + a * d)),       entry(1.0 - 2.0 * (b * b + d * d)), entry(2.0 * (c * d - a * b)),
            entry(2.0 * (b * d - a * c)),       entry(2.0 * (c * d + a * b)),       entry(1.0 - 2.0 * (b * b + c * c))};
}

template struct Quaternion<float>;
template struct Quaternion<double>;

} // namespace dg
