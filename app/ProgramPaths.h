#pragma once

#include <string>

namespace lusym
{

/// The plug-in: the one that LUSYMBOLS_PLUGIN names, else the one that belongs to this program, beside which it lies
/// installed and in the build tree alike.
std::string FindPlugin();

/// The folder of the example library.
std::string FindExampleLibrary();

} // namespace lusym
