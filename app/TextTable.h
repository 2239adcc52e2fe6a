#pragma once

#include <string>
#include <vector>

namespace lusym
{

/// Rows of equally many texts, the first of them the headings, as columns for a terminal. A column is as wide as its
/// widest text, but one that is very long; the last column is not filled up.
std::string TableText(const std::vector<std::vector<std::string>>& rows);

} // namespace lusym
