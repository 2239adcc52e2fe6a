#pragma once

#include <dg/FMat33.h>

namespace dg
{

/// Rotation as a quaternion w + xi + yj + zk. Starts as the identity. Only float and double are built.
template <class T>
struct Quaternion {
    T w = T(1);
    T x = T(0);
    T y = T(0);
    T z = T(0);

    static const Quaternion IDENTITY;

    constexpr Quaternion() noexcept = default;
    constexpr Quaternion(T wValue, T xValue, T yValue, T zValue) noexcept : w(wValue), x(xValue), y(yValue), z(zValue)
    {
    }

    /// The rotation of a matrix; its scale, also one that differs by axis, and a mirror are left out. Of the two
    /// quaternions of one rotation the one with w >= 0. A matrix that flattens or is not finite gives the identity.
    LUHOST_API static Quaternion FromMat(const FMat33& matrix) noexcept;

    /// The rotation matrix. The quaternion need not have length 1; one without a direction gives the identity.
    LUHOST_API FMat33 ToMat() const noexcept;

    friend constexpr bool operator==(const Quaternion&, const Quaternion&) noexcept = default;
};

template <class T>
inline constexpr Quaternion<T> Quaternion<T>::IDENTITY{};

} // namespace dg
