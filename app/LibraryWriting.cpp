#include "LibraryWriting.h"

#include "LibraryExamination.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "xml/LibraryFormat.h"
#include "xml/SymbolTemplateWriter.h"

#include <du/FileSystem.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolTemplate.h>

#include <fstream>
#include <utility>

namespace lusym
{

namespace
{

bool EndsWith(const std::string& path, const std::string& end)
{
    std::ifstream file(path, std::ios::binary);
    file.seekg(-static_cast<std::streamoff>(end.size()), std::ios::end);
    std::string found(end.size(), '\0');
    return file.read(found.data(), static_cast<std::streamsize>(found.size())) && found == end;
}

} // namespace

LibraryContent ContentOf(const Examination& examination)
{
    return {examination.templates, examination.categories, examination.loader->GetCollectionInformation()};
}

bool WriteLibraryFile(LibraryContent content, bool exportAsStandard, const std::string& path, std::string& error)
{
    const auto writer = du::MakeCounted<lusymbols::SymbolTemplateWriter>(exportAsStandard);
    writer->SetCollectionInformation(content.information);
    writer->ToXml(du::Symbol(path), std::move(content.templates), content.categories);
    const std::string rootEnd = "</" + std::string(lusymbols::format::kRoot) + ">\n";
    if (!EndsWith(path, rootEnd)) {
        error = "not all of it could be written, as on a medium that is full";
        return false;
    }
    return true;
}

ExitCode PutLibrary(LibraryContent content, bool exportAsStandard, const std::string& output, Progress& progress)
{
    progress.Step("writing " + output);
    OutputFile file(output);
    std::string error;
    if (!file.GetPathToFill().empty() &&
        !WriteLibraryFile(std::move(content), exportAsStandard, file.GetPathToFill(), error)) {
        error = Printable(output) + ": " + error;
    } else {
        progress.Clear();
        error = file.Commit() ? std::string() : file.GetError();
    }
    if (error.empty()) {
        return ExitCode::Done;
    }
    progress.Tell("lusym: " + error + "\n");
    return ExitCode::OutputNotWritable;
}

} // namespace lusym
