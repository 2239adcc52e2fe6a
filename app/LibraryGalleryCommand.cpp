#include "Invocation.h"
#include "JsonOutput.h"
#include "LibraryGallery.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"

#include <du/FileSpec.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace lusym
{

namespace
{

struct GalleryOptions {
    LibraryOptions library;
    std::vector<std::string> files;
    std::vector<std::string> sharedFiles;
    std::string output;
    std::string title;
    bool asJson = false;
};

void ReadInto(LibrarySource& source, const std::vector<LibraryPlace>& places, std::vector<LibraryReading>& readings,
              Progress& progress)
{
    for (const LibraryPlace& place : places) {
        progress.Step("reading", readings.size(), places.size());
        const LibraryReading& reading = readings.emplace_back(source.Read(place));
        TellEffects(reading, progress);
        if (reading.examination.isRead) {
            AddToCollection(source, reading);
        }
    }
}

bool IsInput(const std::string& output, const std::vector<LibraryPlace>& places)
{
    return std::ranges::any_of(places, [&](const LibraryPlace& place) {
        return OutputFile::IsFile(output, place.path) || OutputFile::IsFile(output, place.messageFile);
    });
}

std::vector<LibraryPlace> PlacesOf(const GalleryOptions& options)
{
    std::vector<LibraryPlace> places;
    for (const std::string& file : options.files) {
        places.push_back(FindLibraryPlace(file, options.library));
    }
    LibraryOptions shared = options.library;
    shared.origin = "shared";
    for (const std::string& file : options.sharedFiles) {
        places.push_back(FindLibraryPlace(file, shared));
    }
    return places;
}

/// What the first library says of itself, else its file's name; never its path, which is nobody's business on a page that
/// is handed on.
std::string DefaultTitle(const LibraryReading& reading, const LibraryPlace& place)
{
    const std::string& information = reading.examination.loader->GetInformation();
    return information.empty() ? du::FileSpec(place.name).GetFile() : information;
}

ExitCode RunGallery(const GalleryOptions& options, Progress& progress)
{
    const std::vector<LibraryPlace> places = PlacesOf(options);
    if (IsInput(options.output, places)) {
        progress.Tell("lusym: " + Printable(options.output) +
                      " is read for the gallery, which would replace it. Name another file with -o.\n");
        return ExitCode::Usage;
    }
    LibrarySource source(options.library, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    std::vector<LibraryReading> readings;
    ReadInto(source, places, readings, progress);
    const ExitCode judgement = JudgeReadings(readings);
    if (judgement != ExitCode::Done) {
        progress.Tell("lusym: not every library could be read, so nothing is written.\n");
        return judgement;
    }
    if (!CanMakeGallery(progress)) {
        return ExitCode::Findings;
    }
    progress.Step("writing " + options.output);
    const LibraryGallery gallery = MakeGallery();
    const std::string title = options.title.empty() ? DefaultTitle(readings.front(), places.front()) : options.title;
    OutputFile output(options.output);
    const std::string text = options.asJson ? JsonText(GalleryAsJson(gallery))
                                            : GalleryAsPage(gallery, title, source.GetLanguage(), progress);
    progress.Clear();
    if (!output.Write(text) || !output.Commit()) {
        progress.Tell("lusym: " + output.GetError() + "\n");
        return ExitCode::OutputNotWritable;
    }
    return ExitCode::Done;
}

} // namespace

void AddLibraryGallery(CLI::App& library, Invocation& invocation)
{
    CLI::App& verb = *library.add_subcommand("gallery", "Make a page that shows the gallery of one or more libraries");
    const auto options = std::make_shared<GalleryOptions>();
    verb.add_option("LIB.xml", options->files, "The libraries")->required();
    verb.add_option("--shared", options->sharedFiles, "A library that several users share; may be repeated")
        ->type_name("LIB.xml");
    AddOutputOption(verb, options->output, "GALLERY.html");
    verb.add_flag("--json", options->asJson, "The rows of the gallery as JSON instead of a page");
    verb.add_option("--title", options->title,
                    "Heading of the page (default: the first library's information text, else its file's name)")
        ->type_name("TEXT");
    AddLibraryOptions(verb, options->library, true);
    verb.footer(
        "In each category shapes come before pictures, and of each kind shared entries first, then delivered ones,\n"
        "then the user's own. An entry of a later library takes the place of one with the same id. The page needs no "
        "file beside it.\n\n"
        "Examples:\n"
        "  lusym library gallery lib.xml -o gallery.html\n"
        "  lusym library gallery mine.xml SymbolsLibrary/standard/PartSymbolLibrary.xml \\\n"
        "      --shared /srv/SymbolsLibrary/PartSymbolLibrary.xml -o gallery.html --lang de\n\n"
        "Exit codes: 0 written; 2 GALLERY.html is one of the files that are read; 3 no library could be read;\n"
        "4 GALLERY.html is not writable; 5 none is a library, or the gallery would have too many rows; 6 some of the\n"
        "libraries could not be read.\n");
    verb.callback([options, &invocation] {
        invocation = [options](Progress& progress) { return RunGallery(*options, progress); };
    });
}

} // namespace lusym
