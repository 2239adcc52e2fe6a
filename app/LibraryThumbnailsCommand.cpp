#include "FileText.h"
#include "Finding.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "LibraryThumbnails.h"
#include "ParallelWork.h"
#include "Printable.h"
#include "Progress.h"
#include "ThumbnailNaming.h"
#include "ValueOptions.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace lusym
{

namespace
{

using nlohmann::ordered_json;
using State = ThumbnailFile::State;

struct ThumbnailOptions {
    LibraryOptions library;
    std::string file;
    bool isDryRun = false;
    bool isForced = false;
    bool asJson = false;
    luhost::render::UpAxis up = luhost::render::UpAxis::Z;
};

const char* WordOf(State state)
{
    switch (state) {
    case State::Current:
        return "current";
    case State::Missing:
        return "missing";
    case State::Changed:
        return "changed";
    case State::Own:
        break;
    }
    return "own";
}

void MakeThumbnails(LibraryThumbnails& thumbnails, Progress& progress)
{
    std::vector<EntryThumbnails*> open;
    for (EntryThumbnails& entry : thumbnails.GetEntries()) {
        if (entry.IsToBeMade()) {
            open.push_back(&entry);
        }
    }
    const ThumbnailMaker maker;
    std::vector<std::vector<std::string>> pngs(open.size());
    std::size_t done = 0;
    WorkInParallel(
        open.size(), [&](std::size_t i) { pngs[i] = maker.Draw(*open[i]); },
        [&](std::size_t i) {
            ThumbnailMaker::Write(*open[i], pngs[i]);
            pngs[i] = {};
            progress.Step("making thumbnails", ++done, open.size());
        });
}

/// What has become of the library's thumbnails.
class Report
{
public:
    Report(const ThumbnailOptions& options, const LibraryThumbnails& thumbnails)
        : m_options(options), m_thumbnails(thumbnails)
    {
    }

    bool HasProblems() const
    {
        return !std::ranges::all_of(m_thumbnails.GetEntries(), &std::string::empty, &EntryThumbnails::problem);
    }

    std::string AsText() const
    {
        std::string text;
        for (const EntryThumbnails& entry : m_thumbnails.GetEntries()) {
            for (const ThumbnailFile& file : entry.files) {
                if (IsTold(entry, file)) {
                    text.append(Printable(m_thumbnails.NameOf(file.path))).append(": ").append(WordOf(file.state));
                    text.append(file.isMade ? ", made\n" : "\n");
                }
            }
        }
        return text;
    }

    ordered_json AsJson(bool isRewritten) const
    {
        ordered_json entries = ordered_json::array();
        for (const EntryThumbnails& entry : m_thumbnails.GetEntries()) {
            ordered_json files = ordered_json::array();
            for (const ThumbnailFile& file : entry.files) {
                files.push_back({{"file", m_thumbnails.NameOf(file.path)},
                                 {"size", file.side},
                                 {"state", WordOf(file.state)},
                                 {"made", file.isMade}});
            }
            entries.push_back({{"id", entry.item->GetId()},
                               {"kind", entry.isShape ? "shape" : "image"},
                               {"source", m_thumbnails.NameOf(entry.source)},
                               {"named", !entry.newUrl.empty() && isRewritten && entry.problem.empty()},
                               {"problem", entry.problem},
                               {"remark", entry.remark},
                               {"thumbnails", std::move(files)}});
        }
        return {{"file", m_options.file}, {"rewritten", isRewritten}, {"entries", std::move(entries)}};
    }

    void TellProblems(Progress& progress) const
    {
        const auto tell = [&](const EntryThumbnails& entry, const char* word, const std::string& what) {
            if (!what.empty()) {
                progress.Tell(Printable(m_options.file).append(": ").append(word).append(": the entry ") +
                              Quote(entry.item->GetId()).append(": ").append(what).append(".\n"));
            }
        };
        for (const EntryThumbnails& entry : m_thumbnails.GetEntries()) {
            tell(entry, "error", entry.problem);
            tell(entry, "warning", entry.remark);
        }
    }

    std::string Summary(bool isRewritten) const
    {
        std::size_t made = 0;
        std::size_t open = 0;
        std::size_t own = 0;
        std::size_t all = 0;
        for (const EntryThumbnails& entry : m_thumbnails.GetEntries()) {
            for (const ThumbnailFile& file : entry.files) {
                ++all;
                made += file.isMade ? 1U : 0U;
                open += IsTold(entry, file) && !file.isMade ? 1U : 0U;
                own += file.state == State::Own ? 1U : 0U;
            }
        }
        std::string text = Printable(m_options.file).append(": ").append(CountOf(all, "thumbnail", "thumbnails"));
        const auto add = [&text](std::size_t count, const char* what) {
            if (count != 0) {
                text.append(", ").append(std::to_string(count)).append(what);
            }
        };
        add(made, " made");
        add(open, " to be made");
        add(own, " made by others and left alone");
        return text.append(made + open == 0 ? ", nothing to be made" : "")
            .append(isRewritten ? "; the library names the new ones" : "")
            .append(".\n");
    }

private:
    bool IsTold(const EntryThumbnails& entry, const ThumbnailFile& file) const
    {
        return file.isMade || (m_options.isDryRun && entry.problem.empty() && file.IsToBeMade());
    }

    const ThumbnailOptions& m_options;
    const LibraryThumbnails& m_thumbnails;
};

/// @param[out] text of the library, as it was read
LibraryReading ReadLibrary(LibrarySource& source, const LibraryPlace& place, std::string& text)
{
    std::string error;
    // What cannot be read is told by the source.
    return ReadFileText(place.path, text, error) ? source.ReadText(text, place) : source.Read(place);
}

ExitCode RunThumbnails(const ThumbnailOptions& options, Progress& progress)
{
    LibrarySource source(options.library, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    std::string text;
    const LibraryReading reading = ReadLibrary(source, FindLibraryPlace(options.file, options.library), text);
    if (!reading.isReadable || !reading.examination.isRead) {
        TellEffects(reading, progress);
        return reading.isReadable ? ExitCode::Findings : ExitCode::InputUnreadable;
    }
    progress.Step("looking at thumbnails");
    LibraryThumbnails thumbnails(reading, options.up, options.isForced);
    const ThumbnailNaming naming(reading, std::move(text));
    naming.Try(thumbnails);
    bool isRewritten = false;
    std::string error;
    if (!options.isDryRun) {
        MakeThumbnails(thumbnails, progress);
        isRewritten = naming.Write(thumbnails, error);
    }
    const Report report(options, thumbnails);
    report.TellProblems(progress);
    const ExitCode reported =
        PutResult(options.asJson ? JsonText(report.AsJson(isRewritten)) : report.AsText(), progress);
    progress.Tell(report.Summary(isRewritten));
    if (!error.empty()) {
        progress.Tell("lusym: " + error + ".\n");
        return ExitCode::OutputNotWritable;
    }
    return reported != ExitCode::Done ? reported : report.HasProblems() ? ExitCode::PartOfBatchFailed : ExitCode::Done;
}

} // namespace

void AddLibraryThumbnails(CLI::App& library, Invocation& invocation)
{
    CLI::App& verb =
        *library.add_subcommand("thumbnails", "Make the thumbnails that entries lack or that are outdated");
    const auto options = std::make_shared<ThumbnailOptions>();
    verb.add_option("LIB.xml", options->file, "The library")->required();
    verb.add_flag("--dry-run", options->isDryRun, "Report only");
    verb.add_flag("--force", options->isForced, "Make all of them anew, those too that were not made by this program");
    verb.add_flag("--json", options->asJson, "The report as JSON");
    using luhost::render::UpAxis;
    AddChoice<UpAxis>(verb, "--up", options->up, "Which way is up in shapes without a camera, y or z (default: z)",
                      {{"y", UpAxis::Y}, {"z", UpAxis::Z}})
        ->type_name("AXIS");
    AddLibraryOptions(verb, options->library, false);
    verb.footer(
        "Each entry has one of 64x64 pixels for the gallery, which it names, and one of 192x192 for the dialog, whose\n"
        "name follows. Pictures keep their proportions, flips and turns; shapes are seen through the entry's camera,\n"
        "else from the front, the right and above. A thumbnail tells in itself what it was made from, and is made\n"
        "again when the picture, the shape or the camera has changed. Those of others stay. An entry that names none\n"
        "gets one in the folder of the library's files; LIB.xml, which has to be in canonical form, is rewritten for\n"
        "that alone. Nothing is written outside the library's folder.\n\n"
        "Examples:\n"
        "  lusym library thumbnails SymbolsLibrary/PartSymbolLibrary.xml --dry-run\n"
        "  lusym library thumbnails SymbolsLibrary/PartSymbolLibrary.xml\n\n"
        "Exit codes: 0 done; 3 LIB.xml is unreadable; 4 LIB.xml is not writable; 5 it is no library; 6 some entries\n"
        "got no thumbnail.\n");
    verb.callback([options, &invocation] {
        invocation = [options](Progress& progress) { return RunThumbnails(*options, progress); };
    });
}

} // namespace lusym
