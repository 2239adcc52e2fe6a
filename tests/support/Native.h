#pragma once

#include <du/FileSpec.h>

#include <algorithm>
#include <string>

namespace test
{

/// A path with the separators of the platform; the two slashes of "scheme://" stay.
inline std::string Native(std::string path)
{
    const std::size_t scheme = path.find("://");
    const bool hasScheme = scheme != std::string::npos && scheme > 1;
    const char separator = du::FileSpec::DIR_SEP_CHAR;
    std::replace(path.begin() + static_cast<std::ptrdiff_t>(hasScheme ? scheme + 3 : 0), path.end(), '/', separator);
    return path;
}

} // namespace test
