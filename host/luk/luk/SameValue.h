#pragma once

#include <dg/Color.h>
#include <dg/Location.h>

#include <algorithm>
#include <cmath>
#include <concepts>

namespace luk
{

/// Whether a value was only set again; for the sources of the host alone. Unlike equality, something that is not a number
/// is the same as itself here: setting a missing position again is no change that anybody has to hear of.
template <std::floating_point Number>
bool IsSame(Number a, Number b) noexcept
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

inline bool IsSame(const dg::Color& a, const dg::Color& b) noexcept
{
    return IsSame(a.red, b.red) && IsSame(a.green, b.green) && IsSame(a.blue, b.blue) && IsSame(a.alpha, b.alpha);
}

inline bool IsSame(const dg::Location& a, const dg::Location& b) noexcept
{
    const auto& left = a.GetMat().GetEntries();
    const auto& right = b.GetMat().GetEntries();
    return IsSame(a.GetPosition().x, b.GetPosition().x) && IsSame(a.GetPosition().y, b.GetPosition().y) &&
           IsSame(a.GetPosition().z, b.GetPosition().z) &&
           std::equal(left.begin(), left.end(), right.begin(), [](float x, float y) { return IsSame(x, y); });
}

} // namespace luk
