#pragma once

#include <dg/DMat44.h>
#include <dg/DPoint3D.h>
#include <dg/FMat33.h>

namespace dg
{

template <class T>
struct Quaternion;

/// Placement of a frame in another: a rotation-scale matrix and a position in the outer frame.
///
/// Use: `outer = matrix * inner + position`. `a * b` is b placed inside a.
///
/// A fresh location has the identity matrix and a bad position, which means "no position given"; it equals neither
/// IDENTITY nor ZERO, nor itself. HasPosition() asks for it.
class Location
{
public:
    static const Location IDENTITY;
    /// Every number 0: an all-zero matrix at the origin.
    static const Location ZERO;

    constexpr Location() noexcept = default;
    constexpr Location(const FMat33& matrix, const DPoint3D& position) noexcept : m_mat(matrix), m_position(position) {}

    /// Rotation and scale of the transform, rounded to single precision, and its translation.
    LUHOST_API static Location FromXform(const DMat44& xform) noexcept;
    LUHOST_API DMat44 GetXform() const noexcept;

    constexpr const FMat33& GetMat() const noexcept { return m_mat; }
    constexpr void SetMat(const FMat33& matrix) noexcept { m_mat = matrix; }
    constexpr const DPoint3D& GetPosition() const noexcept { return m_position; }
    constexpr void SetPosition(const DPoint3D& position) noexcept { m_position = position; }
    constexpr bool HasPosition() const noexcept { return !m_position.IsBad(); }

    /// The matrix becomes the rotation times the scale; a negative scale mirrors through the point.
    LUHOST_API void Set(const DPoint3D& position, const Quaternion<float>& orientation, double scale) noexcept;

    /// The inverse of Set, exact to single precision. A scale that differs by axis is answered by its geometric mean; a
    /// matrix that flattens has the scale 0 and the identity as orientation.
    LUHOST_API void Get(DPoint3D& position, Quaternion<float>& orientation, double& scale) const noexcept;

    /// Exact, component by component.
    friend constexpr bool operator==(const Location&, const Location&) noexcept = default;

    LUHOST_API friend Location operator*(const Location& outer, const Location& inner) noexcept;

private:
    FMat33 m_mat;
    DPoint3D m_position = DPoint3D::BAD;
};

inline constexpr Location Location::IDENTITY{FMat33::IDENTITY, DPoint3D::ORIGIN};
inline constexpr Location Location::ZERO{FMat33{0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F},
                                         DPoint3D::ORIGIN};

/// True when no entry of the matrices and no component of the positions differs by more than the tolerance; false when
/// any is NaN or infinite.
LUHOST_API bool ApproximateEquality(const Location& a, const Location& b, double tolerance) noexcept;

} // namespace dg
