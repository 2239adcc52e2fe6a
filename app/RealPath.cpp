#include "RealPath.h"

#include <algorithm>
#include <system_error>

namespace lusym
{

std::filesystem::path RealPath(const std::string& path)
{
    std::error_code error;
    std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? std::filesystem::path() : real;
}

bool IsInside(const std::filesystem::path& file, const std::filesystem::path& folder)
{
    return !file.empty() && !folder.empty() && std::ranges::mismatch(folder, file).in1 == folder.end();
}

} // namespace lusym
