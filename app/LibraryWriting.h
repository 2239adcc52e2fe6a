#pragma once

#include "ExitCode.h"

#include <du/SmartPtr.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/CollectionInformation.h>
#include <luk/illustration/SymbolTemplate.h>

#include <string>
#include <vector>

namespace lusym
{

class Progress;
struct Examination;

/// What a library document is made of.
struct LibraryContent {
    std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> templates;
    std::vector<du::SmartPtr<luk::illustration::CategoryInfo>> categories;
    du::SmartPtr<luk::illustration::CollectionInformation> information;
};

LibraryContent ContentOf(const Examination& examination);

/// Writes the document into a file that is there already or may be made.
/// @return false with the reason when not all of it arrived, which the writer itself does not tell
bool WriteLibraryFile(LibraryContent content, bool exportAsStandard, const std::string& path, std::string& error);

/// Writes the document to a file, which is replaced in one step, or to standard output for "-". Failure is told on stderr.
ExitCode PutLibrary(LibraryContent content, bool exportAsStandard, const std::string& output, Progress& progress);

} // namespace lusym
