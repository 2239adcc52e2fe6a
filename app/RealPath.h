#pragma once

#include <filesystem>
#include <string>

namespace lusym
{

/// Where a path leads once links and ".." are followed; empty when that cannot be told.
std::filesystem::path RealPath(const std::string& path);

/// Whether a file lies in a folder, both as RealPath gives them.
bool IsInside(const std::filesystem::path& file, const std::filesystem::path& folder);

} // namespace lusym
