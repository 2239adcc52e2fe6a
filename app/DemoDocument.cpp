#include "DemoDocument.h"

#include <filesystem>
#include <system_error>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* kDocument = "manual.luz";
constexpr const char* kPicture = "library/SymbolsLibrary/2D/mark_pin.svg";
constexpr const char* kChangedEntry = "img-mark-pin";

class DocumentRoad : public DemoRoad
{
public:
    using DemoRoad::DemoRoad;

    bool Walk() { return CopyLibrary() && MakeDocument() && FollowLibrary() && Draw(); }

private:
    bool CopyLibrary()
    {
        std::error_code error;
        fs::copy(m_start.library, PathOf(kLibrary), fs::copy_options::recursive | fs::copy_options::overwrite_existing,
                 error);
        if (error) {
            return Fail(m_start.library + ": cannot be copied to " + PathOf(kLibrary) + ": " + error.message());
        }
        m_files.Add(kLibrary, "a copy of the example library, in which entries were changed");
        return true;
    }

    bool MakeDocument()
    {
        const std::string root = PathOf(kLibrary);
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
               ChangeEntry(kChangedEntry, "Check this place first", kPicture, m_start.manual + "/mark_pin.svg") &&
               RunInLanguage({"document", "update", m_document, "--dry-run"}) && Say("That is well, so they do:") &&
               RunInLanguage({"document", "update", m_document}) && Say("Is anything amiss?") &&
               RunInLanguage({"document", "check", m_document}) && Named(kDocument, "the document");
    }

    bool Draw()
    {
        return Say("Pages and view as pictures:") &&
               Render("page-{page}.svg", {}, "the pages; titles and descriptions are tooltips") &&
               Render("page-{page}.pdf", {}, "the same, to print") &&
               Render("page.png", {"--page", "1", "--background", "white"}, "page 1 as pixels") &&
               Render("view.png", {"--size", "1280", "--background", "white"}, "the view");
    }

    bool Render(const std::string& name, const Arguments& options, const std::string& what)
    {
        Arguments arguments = {"render", m_document, "-o", PathOf(name)};
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

    const std::string m_document = PathOf(kDocument);
};

} // namespace

bool WalkDocumentRoad(const DemoStart& start, DemoFiles& files, Progress& progress)
{
    return DocumentRoad(start, files, progress).Walk();
}

} // namespace lusym
