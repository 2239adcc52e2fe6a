#include "DemoDocument.h"
#include "DemoFiles.h"
#include "FileText.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "LibraryCheckCommand.h"
#include "LibraryGallery.h"
#include "LibraryListing.h"
#include "LibraryMerge.h"
#include "OutputFile.h"
#include "Printable.h"
#include "ProgramPaths.h"
#include "Progress.h"
#include "xml/LibraryFormat.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <system_error>
#include <utility>

namespace lusym
{

namespace
{

namespace format = lusymbols::format;

using Origin = LibraryPlace::Origin;

struct DemoOptions {
    std::string output;
    std::string libraryFolder;
    std::string language;
};

/// The road of the example library, step by step; a step that fails is told and the next one goes on.
class LibraryRoad
{
public:
    LibraryRoad(const std::string& base, LibrarySource& source, DemoFiles& files, Progress& progress)
        : m_source(source), m_files(files), m_progress(progress)
    {
        const std::string file =
            std::string(format::kLibraryFileBaseName) + "." + std::string(format::kLibraryFileExtension);
        const std::string library = "/" + std::string(format::kLibraryFolder) + "/";
        const std::string standard = library + std::string(format::kStandardFolder) + "/";
        m_places.push_back(FindLibraryPlace(base + library + file, WithOrigin("user")));
        m_places.push_back(FindLibraryPlace(base + standard + file, WithOrigin("delivered")));
        m_places.push_back(FindLibraryPlace(base + "/shared" + library + file, WithOrigin("shared")));
    }

    bool Walk()
    {
        Do("checking the example library", &LibraryRoad::Check);
        Do("writing it back", &LibraryRoad::WriteBack);
        Do("merging", &LibraryRoad::MergeTwo);
        Do("making the gallery", &LibraryRoad::MakePage);
        Do("listing", &LibraryRoad::List);
        return m_isDone;
    }

private:
    static constexpr const char* kNames[] = {"user", "delivered", "shared"};

    static LibraryOptions WithOrigin(const char* origin)
    {
        LibraryOptions options;
        options.origin = origin;
        return options;
    }

    void Do(const char* what, bool (LibraryRoad::*step)())
    {
        constexpr std::size_t kSteps = 5;
        m_progress.Step(what, m_step++, kSteps);
        m_isDone = (this->*step)() && m_isDone;
    }

    bool Check()
    {
        bool isClean = true;
        for (const LibraryPlace& place : m_places) {
            m_readings.push_back(m_source.Read(place));
            const LibraryReading& reading = m_readings.back();
            for (const Finding& finding : reading.examination.findings) {
                m_progress.Tell(FormatFinding(place.name, finding));
            }
            const FindingCounts counts = CountFindings(reading.examination.findings);
            isClean = isClean && reading.isReadable && counts.errors + counts.warnings == 0;
            if (reading.examination.isRead) {
                AddToCollection(m_source, reading);
            }
        }
        return isClean;
    }

    bool WriteBack()
    {
        bool areEqual = true;
        for (std::size_t index = 0; index < m_places.size(); ++index) {
            LibraryPlace place = m_places[index];
            // Nothing of a shared library is written but by its owner.
            place.origin = place.origin == Origin::ORIGIN_SHARED ? Origin::ORIGIN_USER : place.origin;
            const LibraryReading reading = m_source.Read(place);
            const std::string name = kNames[index];
            areEqual = reading.examination.isRead &&
                       WriteLibrary(name + ".xml", ContentOf(reading.examination),
                                    "the " + name + " library, read and written again: the same bytes") &&
                       IsSame(place.path, name + ".xml") && areEqual;
        }
        return areEqual;
    }

    bool IsSame(const std::string& original, const std::string& copy)
    {
        std::string before;
        std::string after;
        std::string error;
        const bool isSame =
            ReadFileText(original, before, error) && ReadFileText(PathOf(copy), after, error) && before == after;
        if (!isSame) {
            m_progress.Tell("lusym: " + Printable(PathOf(copy)) + " differs from " + Printable(original) + ".\n");
        }
        return isSame;
    }

    bool MergeTwo()
    {
        std::vector<LibraryReading> readings;
        for (const LibraryPlace* const input : {&m_places[0], &m_places[1]}) {
            LibraryPlace place = *input;
            place.origin = Origin::ORIGIN_USER;
            readings.push_back(m_source.Read(place));
            if (!readings.back().examination.isRead) {
                return false;
            }
        }
        LibraryPlace output;
        const Merge merge = MergeLibraries(readings, output);
        return WriteLibrary("merged.xml", merge.content, "the user's and the delivered library as one");
    }

    bool MakePage()
    {
        const LibraryGallery gallery = MakeGallery();
        const std::string page = GalleryAsPage(gallery, "Example library", m_source.GetLanguage(), m_progress);
        return WriteText("gallery.html", page, "the gallery of all three libraries, to be opened in a browser");
    }

    bool List()
    {
        const LibraryReading& delivered = m_readings[1];
        return delivered.examination.isRead && WriteText("delivered.json", JsonText(ListingAsJson(delivered, {})),
                                                         "every field of the delivered library's entries");
    }

    bool WriteLibrary(const std::string& name, LibraryContent content, const std::string& what)
    {
        return Write(name, what, [&](OutputFile& file, std::string& error) {
            return WriteLibraryFile(std::move(content), false, file.GetPathToFill(), error);
        });
    }

    bool WriteText(const std::string& name, const std::string& text, const std::string& what)
    {
        return Write(name, what, [&](OutputFile& file, std::string&) { return file.Write(text); });
    }

    bool Write(const std::string& name, const std::string& what,
               const std::function<bool(OutputFile&, std::string&)>& fill)
    {
        OutputFile file(PathOf(name));
        std::string error;
        if (file.GetPathToFill().empty() || !fill(file, error) || !file.Commit()) {
            m_progress.Tell("lusym: " + (error.empty() ? file.GetError() : Printable(PathOf(name)) + ": " + error) +
                            "\n");
            return false;
        }
        m_files.Add(name, what);
        return true;
    }

    std::string PathOf(const std::string& name) const { return m_files.PathOf(name); }

    LibrarySource& m_source;
    DemoFiles& m_files;
    Progress& m_progress;
    std::vector<LibraryPlace> m_places;
    std::vector<LibraryReading> m_readings;
    std::size_t m_step = 0;
    bool m_isDone = true;
};

bool WalkLibraryRoad(const DemoStart& start, DemoFiles& files, Progress& progress)
{
    LibraryOptions options;
    options.language = start.language;
    LibrarySource source(options, progress);
    return source.IsUsable() && LibraryRoad(start.library, source, files, progress).Walk();
}

ExitCode RunDemo(const DemoOptions& options, Progress& progress)
{
    std::error_code failure;
    std::filesystem::create_directories(options.output, failure);
    if (!std::filesystem::is_directory(options.output, failure)) {
        progress.Tell("lusym: " + Printable(options.output) + ": is no folder and cannot be made one. Name another.\n");
        return ExitCode::OutputNotWritable;
    }
    const DemoStart start = {options.libraryFolder.empty() ? FindExample("library") : options.libraryFolder,
                             FindExample("manual"), FindExample("product"), options.language};
    DemoFiles files(options.output);
    bool isDone = WalkLibraryRoad(start, files, progress);
    isDone = WalkDocumentRoad(start, files, progress) && isDone;
    isDone = isDone && WalkProductRoad(start, files, progress);
    const ExitCode told = PutResult("\nThese files were made:\n" + files.GetText(), progress);
    if (told != ExitCode::Done) {
        return told;
    }
    return isDone ? ExitCode::Done : ExitCode::Failed;
}

} // namespace

void AddDemo(CLI::App& program, Invocation& invocation)
{
    CLI::App& verb = *program.add_subcommand("demo", "Walk the whole road on the example library");
    const auto options = std::make_shared<DemoOptions>();
    verb.add_option("-o,--output", options->output, "The folder to write to; made when it is missing")
        ->required()
        ->type_name("DIR");
    verb.add_option("--library-dir", options->libraryFolder, "The example library (default: the installed one)")
        ->type_name("DIR");
    verb.add_option("--lang", options->language, "Language of texts that are named by key (default: the user's)")
        ->type_name("CODE");
    verb.footer(
        "Checks the three documents of the example, loads them together, writes each back and compares it byte\n"
        "for byte, merges two of them, makes the gallery page and lists the entries. Then makes a document, places\n"
        "symbols on its pages and over its view, changes a library, lets the symbols follow, and draws all of it; and\n"
        "attaches 3D symbols to the parts of a product, moves and hides parts, and bakes the view into a page;\n"
        "each command of that part is shown before it runs, to be tried out and varied. Files of the same names in\n"
        "DIR are replaced, nothing else is touched. All files are named at the end.\n\n"
        "Example:\n"
        "  lusym demo -o /tmp/demo --progress=json\n\n"
        "Exit codes: 0 done; 1 a step failed; 4 DIR cannot be made.\n");
    verb.callback(
        [options, &invocation] { invocation = [options](Progress& progress) { return RunDemo(*options, progress); }; });
}

} // namespace lusym
