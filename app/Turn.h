#pragma once

#include <dg/DVec3.h>
#include <dg/FMat33.h>

#include <optional>
#include <string>

namespace lusym
{

/// An axis of length 1, and how far around it.
struct Turn {
    dg::DVec3 axis;
    double degrees = 0.0;
};

/// "z,30" or "0,0,1,30"
std::optional<Turn> ParseTurn(const std::string& text);

/// Counter-clockwise for one who looks against the axis.
dg::FMat33 MatrixOf(const Turn& turn);

} // namespace lusym
