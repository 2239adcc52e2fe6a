#pragma once

#include "ExampleCatalog.h"

#include <string>

namespace bench
{

/// The same work as the plug-in's loader, on the tree of libxml2: the same entries, fields, resolved URLs and merge.
Catalog LoadWithLibxml2(const std::string& path);

/// The same document as the plug-in's writer makes, but for the blanks at line ends, through libxml2's text writer.
void WriteWithLibxml2(const std::string& path, const Catalog& catalog);

} // namespace bench
