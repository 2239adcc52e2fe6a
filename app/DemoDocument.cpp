#include "DemoDocument.h"

#include "catalog/PartslibraryItem.h"
#include "CommandLine.h"
#include "DemoFiles.h"
#include "FileText.h"
#include "LibrarySource.h"
#include "LibraryWriting.h"
#include "Printable.h"
#include "Progress.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

using Arguments = std::vector<std::string>;

constexpr const char* kDocument = "manual.luz";
constexpr const char* kLibrary = "library";
constexpr const char* kUserLibrary = "library/SymbolsLibrary/PartSymbolLibrary.xml";
constexpr const char* kPicture = "library/SymbolsLibrary/2D/mark_pin.svg";
constexpr const char* kChangedEntry = "img-mark-pin";

/// As a shell reads it, and a terminal may show it.
std::string ShellWord(const std::string& word)
{
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./,:=@%+-";
    if (!word.empty() && word.find_first_not_of(kPlain) == word.npos) {
        return word;
    }
    std::string quoted = "'";
    for (const char letter : word) {
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return Printable(quoted + "'");
}

class DocumentRoad
{
public:
    DocumentRoad(const DemoStart& start, DemoFiles& files, Progress& progress)
        : m_start(start), m_files(files), m_progress(progress), m_document(files.PathOf(kDocument))
    {
    }

    bool Walk() { return CopyLibrary() && MakeDocument() && FollowLibrary() && Draw(); }

private:
    bool CopyLibrary()
    {
        std::error_code error;
        fs::copy(m_start.library, m_files.PathOf(kLibrary),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing, error);
        if (error) {
            return Fail(m_start.library + ": cannot be copied to " + m_files.PathOf(kLibrary) + ": " + error.message());
        }
        m_files.Add(kLibrary, "a copy of the example library, in which one entry was changed");
        return true;
    }

    bool MakeDocument()
    {
        const std::string root = m_files.PathOf(kLibrary);
        const std::string file = "/SymbolsLibrary/PartSymbolLibrary.xml";
        return Say("A document with two pages and a view, which follows the three libraries:") &&
               Run({"document", "new", "-o", m_document, "--page", "a4-landscape", "--page", "a4", "--library",
                    root + "/SymbolsLibrary/standard/PartSymbolLibrary.xml", "--library", root + file, "--library",
                    root + "/shared" + file}) &&
               Say("Symbols on the pages and over the view, from a table that says what goes where:") &&
               RunInLanguage({"symbol", "place", m_document, "--quiet", "--from", m_start.manual + "/symbols.csv"}) &&
               Say("The saved document is opened again:") && Run({"symbol", "list", m_document, "--page", "2"}) &&
               Render("before.svg", {"--page", "1"}, "page 1 as it was before the library changed");
    }

    bool FollowLibrary()
    {
        return Say("Now the library changes: the entry \"" + std::string(kChangedEntry) +
                   "\" gets another picture and another title.\nWhat would its symbols take over?") &&
               ChangeEntry() && RunInLanguage({"document", "update", m_document, "--dry-run"}) &&
               Say("That is well, so they do:") && RunInLanguage({"document", "update", m_document}) &&
               Say("Is anything amiss?") && RunInLanguage({"document", "check", m_document}) &&
               Named(kDocument, "the document");
    }

    bool Draw()
    {
        return Say("Pages and view as pictures:") &&
               Render("page-{page}.svg", {}, "the pages; titles and descriptions are tooltips") &&
               Render("page-{page}.pdf", {}, "the same, to print") &&
               Render("page.png", {"--page", "1", "--background", "white"}, "page 1 as pixels") &&
               Render("view.png", {"--size", "1280", "--background", "white"}, "the view");
    }

    /// As an author would change it, with the reader and the writer that every verb uses.
    bool ChangeEntry()
    {
        std::error_code error;
        fs::copy_file(m_start.manual + "/mark_pin.svg", m_files.PathOf(kPicture), fs::copy_options::overwrite_existing,
                      error);
        if (error) {
            return Fail(m_files.PathOf(kPicture) + ": cannot be replaced: " + error.message());
        }
        LibrarySource source({}, m_progress);
        if (!source.IsUsable()) {
            return false;
        }
        const LibraryReading reading = source.Read(m_files.PathOf(kUserLibrary));
        LibraryContent content = ContentOf(reading.examination);
        const auto entry =
            std::ranges::find(content.templates, kChangedEntry, [](const auto& item) { return item->GetId(); });
        const auto item =
            entry == content.templates.end() ? nullptr : du::DynamicCast<lusymbols::PartslibraryItem>(*entry);
        if (!item) {
            return Fail(m_files.PathOf(kUserLibrary) + ": has no entry " + kChangedEntry);
        }
        item->SetTitle("Check this place first");
        return PutLibrary(std::move(content), false, m_files.PathOf(kUserLibrary), m_progress) == ExitCode::Done;
    }

    bool Render(const std::string& name, const Arguments& options, const std::string& what)
    {
        Arguments arguments = {"render", m_document, "-o", m_files.PathOf(name)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments) && Named(name, what);
    }

    /// {page} stands for both pages.
    bool Named(const std::string& name, const std::string& what)
    {
        constexpr std::string_view kPageWord = "{page}";
        const std::size_t place = name.find(kPageWord);
        for (const char* const page : {"1", "2"}) {
            std::string file = name;
            if (place != name.npos) {
                file.replace(place, kPageWord.size(), page);
            }
            m_files.Add(file, what);
            if (place == name.npos) {
                break;
            }
        }
        return true;
    }

    bool RunInLanguage(Arguments arguments)
    {
        if (!m_start.language.empty()) {
            arguments.insert(arguments.end(), {"--lang", m_start.language});
        }
        return Run(arguments);
    }

    bool Run(const Arguments& arguments)
    {
        std::string line = "$ lusym";
        for (const std::string& argument : arguments) {
            line += " " + ShellWord(argument);
        }
        return PutResult(line + "\n", m_progress) == ExitCode::Done && RunVerb(arguments, m_progress) == ExitCode::Done;
    }

    bool Say(const std::string& words) { return PutResult("\n" + words + "\n", m_progress) == ExitCode::Done; }

    bool Fail(const std::string& reason)
    {
        m_progress.Tell("lusym: " + Printable(reason) + ".\n");
        return false;
    }

    const DemoStart& m_start;
    DemoFiles& m_files;
    Progress& m_progress;
    const std::string m_document;
};

} // namespace

bool WalkDocumentRoad(const DemoStart& start, DemoFiles& files, Progress& progress)
{
    return DocumentRoad(start, files, progress).Walk();
}

} // namespace lusym
