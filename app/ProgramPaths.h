#pragma once

#include <string>

namespace lusym
{

/// The plug-in: the one that LUSYMBOLS_PLUGIN names, else the one that belongs to this program, beside which it lies
/// installed and in the build tree alike.
std::string FindPlugin();

/// The program that reads models: the one that LUSYM_IMPORT names, else the one beside this program.
std::string FindImporter();

/// The program that runs one check of a plug-in: the one beside this program.
std::string FindPluginChecker();

/// The folder of one of the examples, such as "library".
std::string FindExample(const std::string& name);

} // namespace lusym
