#pragma once

#include "xml/SymbolTemplateLoader.h"

#include <string>

namespace lusym
{

/// The url that the writer writes for a file of an entry, so that it can be told before it is written.
/// @param resolved the url as the entry has it once it is read
std::string WrittenUrl(const std::string& resolved, bool isShape, lusymbols::SymbolTemplateLoader::Origin origin,
                       bool exportAsStandard);

} // namespace lusym
