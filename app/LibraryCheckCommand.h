#pragma once

#include "LibrarySource.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>

namespace lusym
{

/// "3 errors, 1 warning in 48 entries"
std::string SummarizeFindings(const Examination& examination);

/// Adds where the file first differs from what the writer would write.
/// @return false with the reason when it could not be found out
bool AddCanonicalFinding(LibrarySource& source, LibraryReading& reading, std::string& error);

nlohmann::ordered_json FindingsAsJson(const LibraryReading& reading);

} // namespace lusym
