#pragma once

#include <du/Export.h>

#include <string>

namespace dg
{

/// Appends a number as default stream insertion in the classic locale writes it: integers in decimal, reals in general
/// form with six significant digits (1, 0.5, 25.4, 1e+06). Does not depend on any locale.
LUHOST_API void AppendNumber(std::string& out, int value);
LUHOST_API void AppendNumber(std::string& out, float value);
LUHOST_API void AppendNumber(std::string& out, double value);

/// Appends the shortest text that reads back to the same value, bit for bit.
LUHOST_API void AppendShortest(std::string& out, float value);
LUHOST_API void AppendShortest(std::string& out, double value);

} // namespace dg
