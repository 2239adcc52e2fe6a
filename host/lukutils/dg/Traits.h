#pragma once

namespace dg
{

/// Numbers that the geometry of the host agrees on.
struct Traits {
    /// Differences up to this count as none. Entries of a FMat33 carry about seven digits, so the product of a few of
    /// them is this exact for values near 1 and not more.
    static constexpr double s_EPSILON = 1e-6;
};

} // namespace dg
