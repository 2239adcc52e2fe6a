#include "LibraryText.h"
#include "Process.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <sys/stat.h>

namespace
{

using namespace test;

/// A root with the files that the test documents name.
class LibraryCheck : public testing::Test
{
protected:
    LibraryCheck()
    {
        for (const char* const name : {"2D/p.png", "2D/p_64x64.png", "2D/p_192x192.png", "Shape/s.obj",
                                       "Shape/s_64x64.png", "Shape/s_192x192.png"}) {
            m_folder.Write("SymbolsLibrary/" + std::string(name), "file");
        }
    }

    std::string Write(const std::string& text) const
    {
        return m_folder.Write("SymbolsLibrary/PartSymbolLibrary.xml", text);
    }

    TemporaryFolder m_folder;
};

TEST_F(LibraryCheck, TellsEachFindingInOneLine)
{
    const ProcessResult clean = RunLusym({"library", "check", Write(Library(Symbol("a", "A") + Symbol("b", "B")))});
    EXPECT_EQ(clean.out, "");
    EXPECT_EQ(clean.err, "0 errors, 0 warnings in 2 entries\n");
    const std::string file = Write(
        Library(Symbol("a", "Bolt") + "\n" + Symbol("b", "Bolt") + "\n" + Symbol("c", "C", "<scale>2,5</scale>")));
    const ProcessResult result = RunLusym({"library", "check", file}, 5);
    EXPECT_EQ(result.out,
              file +
                  ":13: error: the name \"Bolt\" is already taken by the entry at line 12; the loader drops this "
                  "entry. Give it another name. [name-taken]\n" +
                  file + ":14: warning: \"2,5\" for \"scale\" reads as 2. Write a whole number. [number-cut-off]\n");
    EXPECT_EQ(result.err, "1 error, 1 warning in 3 entries\n");
}

TEST_F(LibraryCheck, NotesCountOnlyWhenStrict)
{
    const std::string file = Write("\xEF\xBB\xBF" + Library(Symbol("a", "A")));
    EXPECT_EQ(RunLusym({"library", "check", file}).err, "0 errors, 0 warnings, 1 note in 1 entry\n");
    const ProcessResult strict = RunLusym({"library", "check", file, "--strict"}, 5);
    EXPECT_TRUE(Contains(strict.out, ":1: note: from here on the file differs"));
    const ProcessResult noFolder = RunLusym({"library", "check", file, "--strict"}, 1, {{"TMPDIR=/proc"}, 0, {}});
    EXPECT_TRUE(Contains(noFolder.err, "cannot make the temporary folder \"/proc/lusym-"));
}

TEST_F(LibraryCheck, StrictNamesTheFirstLineThatTheWriterWouldWriteOtherwise)
{
    std::filesystem::create_directory(m_folder.Path("lib"));
    std::string text = TemporaryFolder::ReadFile(EXAMPLE_LIBRARY "/SymbolsLibrary/PartSymbolLibrary.xml");
    text.replace(text.find("    <shape id"), 4, "\t");
    const std::string file = m_folder.Write("lib.xml", text);
    EXPECT_EQ(RunLusym({"library", "check", file, "--strict", "--root=" EXAMPLE_LIBRARY}, 5).out,
              file + ":18: note: from here on the file differs from what the writer would write. Write it anew with "
                     "\"lusym library format\". [not-canonical]\n");
}

TEST_F(LibraryCheck, ExampleLibraryIsCleanAndCanonical)
{
    const std::vector<std::string> cases[] = {
        {"SymbolsLibrary"},
        {"SymbolsLibrary", "--origin=user"},
        {"SymbolsLibrary", "--origin=shared"},
        {"shared/SymbolsLibrary"},
        {"shared/SymbolsLibrary", "--origin=user"},
        {"shared/SymbolsLibrary", "--origin=shared"},
        {"SymbolsLibrary/standard"},
    };
    for (std::vector<std::string> arguments : cases) {
        arguments[0] = EXAMPLE_LIBRARY "/" + arguments[0] + "/PartSymbolLibrary.xml";
        arguments.insert(arguments.begin(), {"library", "check", "--strict"});
        EXPECT_EQ(RunLusym(arguments).out, "");
    }
}

TEST_F(LibraryCheck, ResolvesUrlsAgainstTheRoot)
{
    const std::string file = m_folder.Write("elsewhere/lib.xml", Library(Symbol("a", "A")));
    const ProcessResult missing = RunLusym({"library", "check", file}, 5);
    EXPECT_EQ(missing.err, "3 errors, 0 warnings in 1 entry\n");
    EXPECT_TRUE(Contains(missing.out, m_folder.Path("elsewhere/SymbolsLibrary/2D/p_192x192.png")));
    RunLusym({"library", "check", file, "--root", m_folder.Path()});
    const ProcessResult moved =
        RunLusym({"library", "check", file, "--root", m_folder.Path(), "--origin", "delivered"}, 5);
    EXPECT_TRUE(Contains(moved.out, "the url \"SymbolsLibrary/2D/p.png\" would be written as "
                                    "\"SymbolsLibrary/standard/2D/p.png\""));
}

TEST_F(LibraryCheck, ReadsTheMessagesOfTheRoot)
{
    const std::string file = Write(Library("<symbol id=\"a\" categoryId=\"c\"><name locid=\"K\"/><title locid=\"K\"/>"
                                           "<gallery_thumbnail url=\"SymbolsLibrary/2D/p_64x64.png\"/>"
                                           "<image url=\"SymbolsLibrary/2D/p.png\"/></symbol>"));
    EXPECT_TRUE(Contains(RunLusym({"library", "check", file}, 5).out, ":12: warning: 2 texts are named by key"));
    m_folder.Write("messages.xml", "<messages table=\"lubase:lumodulesStrings\" default=\"en\"><message key=\"K\">"
                                   "<text lang=\"en\">Key</text><text lang=\"de\">Text</text></message></messages>");
    EXPECT_EQ(RunLusym({"library", "check", file}).out, "");
    m_folder.Write("messages.xml", "<messages>\n<message>");
    EXPECT_TRUE(Contains(RunLusym({"library", "check", file}, 5).err, "messages.xml:"));
}

TEST_F(LibraryCheck, WritesFindingsAsJson)
{
    // Bytes that are not UTF-8 must not break the JSON.
    const std::string file = Write(Library(Symbol("a", "\xFF\"\n</>") + Symbol("b", "B")) + "\xFF");
    const ProcessResult broken = RunLusym({"library", "check", file, "--json"}, 5);
    const nlohmann::json report = nlohmann::json::parse(broken.out, nullptr, false);
    ASSERT_FALSE(report.is_discarded()) << broken.out;
    EXPECT_EQ(report["file"], file);
    EXPECT_EQ(report["counts"]["errors"], 2);
    const nlohmann::json& finding = report["findings"][1];
    EXPECT_EQ(finding["code"], "not-well-formed");
    EXPECT_EQ(finding["severity"], "error");
    EXPECT_EQ(finding["line"], 13);
    EXPECT_GT(finding["column"], 0);
    EXPECT_TRUE(finding["text"].is_string() && finding["mend"].is_string());
}

TEST_F(LibraryCheck, RefusesWhatIsNoRegularFile)
{
    const std::string fifo = m_folder.Path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::pair<std::string, std::string> files[] = {
        {m_folder.Path("none.xml"), "the library does not exist"},
        {m_folder.Path(), "the library is a folder"},
        {fifo, "the library is a pipe"},
        {"/dev/zero", "the library is a device"},
    };
    for (const auto& [file, reason] : files) {
        EXPECT_EQ(RunLusym({"library", "check", file}, 3).out,
                  file + ": error: " + reason + ". Name the XML file of a library. [unreadable]\n");
    }
}

TEST_F(LibraryCheck, ListsEveryCode)
{
    const std::string codes = RunLusym({"library", "check", "--codes"}).out;
    EXPECT_TRUE(Contains(codes, "name-taken            error    An entry before it has the same name; the loader drops "
                                "the later one.\n"));
    EXPECT_TRUE(Contains(codes, "\nnot-canonical         note     "));
}

TEST_F(LibraryCheck, TakesAHundredMegabytes)
{
    constexpr std::size_t kEntries = 90000;
    const std::string description = "<description>" + std::string(900, 'd') + "</description>";
    std::string entries;
    for (std::size_t entry = 0; entry < kEntries; ++entry) {
        entries += Symbol("id" + std::to_string(entry), "Name " + std::to_string(entry), description) + "\n";
    }
    const std::string file = Write(Library(entries + Symbol("last", "Name 0")));
    ASSERT_GT(std::filesystem::file_size(file), 100'000'000U);
    const ProcessResult result = RunLusym({"library", "check", file}, 5);
    EXPECT_EQ(result.err, "1 error, 0 warnings in 90001 entries\n");
    EXPECT_TRUE(Contains(result.out, ":90012: error: the name \"Name 0\" is already taken by the entry at line 12;"));
}

} // namespace
