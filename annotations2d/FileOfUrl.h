#pragma once

#include "catalog/FileNames.h"

#include <string_view>

namespace luannotations
{

/// Whether a URL ends with this plain file name, so that resolving it would tell nothing new.
inline bool NamesFile(std::string_view url, std::string_view fileName)
{
    return url.substr(url.rfind('/') + 1) == fileName && lusymbols::IsPlainFileName(fileName);
}

} // namespace luannotations
