#include "LibraryText.h"
#include "Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <filesystem>
#include <string>
#include <sys/stat.h>

namespace
{

using test::Library;
using test::ProcessResult;
using test::RunLusym;
using test::Symbol;

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

    test::TemporaryFolder m_folder;
};

TEST_F(LibraryCheck, SaysNothingButTheSummaryOfACleanLibrary)
{
    const ProcessResult result = RunLusym({"library", "check", Write(Library(Symbol("a", "A") + Symbol("b", "B")))});
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "0 errors, 0 warnings in 2 entries\n");
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(LibraryCheck, TellsEachFindingInOneLine)
{
    const std::string file = Write(
        Library(Symbol("a", "Bolt") + "\n" + Symbol("b", "Bolt") + "\n" + Symbol("c", "C", "<scale>2,5</scale>")));
    const ProcessResult result = RunLusym({"library", "check", file});
    EXPECT_EQ(result.out,
              file +
                  ":13: error: the name \"Bolt\" is already taken by the entry at line 12; the loader drops this "
                  "entry. Give it another name. [name-taken]\n" +
                  file + ":14: warning: \"2,5\" for \"scale\" reads as 2. Write a whole number. [number-cut-off]\n");
    EXPECT_EQ(result.err, "1 error, 1 warning in 3 entries\n");
    EXPECT_EQ(result.exitCode, 5);
}

TEST_F(LibraryCheck, NotesCountOnlyWhenStrict)
{
    const std::string file = Write("\xEF\xBB\xBF" + Library(Symbol("a", "A")));
    const ProcessResult lenient = RunLusym({"library", "check", file});
    EXPECT_EQ(lenient.exitCode, 0);
    EXPECT_EQ(lenient.err, "0 errors, 0 warnings, 1 note in 1 entry\n");
    const ProcessResult strict = RunLusym({"library", "check", file, "--strict"});
    EXPECT_EQ(strict.exitCode, 5);
    EXPECT_NE(strict.out.find(":1: note: from here on the file differs"), std::string::npos) << strict.out;
}

TEST_F(LibraryCheck, StrictNamesTheFirstLineThatTheWriterWouldWriteOtherwise)
{
    const std::string file = m_folder.Path("lib.xml");
    std::filesystem::create_directory(m_folder.Path("lib"));
    const std::string canonical = EXAMPLE_LIBRARY "/SymbolsLibrary/PartSymbolLibrary.xml";
    std::string text = test::TemporaryFolder::ReadFile(canonical);
    text.replace(text.find("    <shape id"), 4, "\t");
    m_folder.Write("lib.xml", text);
    const ProcessResult result = RunLusym({"library", "check", file, "--strict", "--root=" EXAMPLE_LIBRARY});
    EXPECT_EQ(result.out, file + ":18: note: from here on the file differs from what the writer would write. Write it "
                                 "anew with \"lusym library format\". [not-canonical]\n");
    EXPECT_EQ(result.exitCode, 5);
}

TEST_F(LibraryCheck, StrictNamesTheTemporaryFolderThatItCannotMake)
{
    test::ProcessOptions options;
    options.environment = {"TMPDIR=/proc"};
    const ProcessResult result = RunLusym({"library", "check", Write(Library(Symbol("a", "A"))), "--strict"}, options);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("cannot make the temporary folder \"/proc/lusym-"), std::string::npos) << result.err;
}

TEST_F(LibraryCheck, ExampleLibraryIsCleanAndCanonical)
{
    for (const char* const file :
         {"SymbolsLibrary/PartSymbolLibrary.xml", "SymbolsLibrary/standard/PartSymbolLibrary.xml",
          "shared/SymbolsLibrary/PartSymbolLibrary.xml"}) {
        for (const char* const origin : {"--origin=user", "--origin=shared"}) {
            if (std::string(file).find("standard") == std::string::npos) {
                const ProcessResult result =
                    RunLusym({"library", "check", std::string(EXAMPLE_LIBRARY "/") + file, "--strict", origin});
                EXPECT_EQ(result.out, "");
                EXPECT_EQ(result.exitCode, 0) << file << " " << origin;
            }
        }
        const ProcessResult result =
            RunLusym({"library", "check", std::string(EXAMPLE_LIBRARY "/") + file, "--strict"});
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.exitCode, 0) << file;
    }
}

TEST_F(LibraryCheck, ResolvesUrlsAgainstTheRoot)
{
    const std::string file = m_folder.Write("elsewhere/lib.xml", Library(Symbol("a", "A")));
    const ProcessResult missing = RunLusym({"library", "check", file});
    EXPECT_EQ(missing.err, "3 errors, 0 warnings in 1 entry\n") << missing.out;
    EXPECT_NE(missing.out.find(m_folder.Path("elsewhere/SymbolsLibrary/2D/p_192x192.png")), std::string::npos);
    const ProcessResult found = RunLusym({"library", "check", file, "--root", m_folder.Path()});
    EXPECT_EQ(found.exitCode, 0) << found.out;
    const ProcessResult moved =
        RunLusym({"library", "check", file, "--root", m_folder.Path(), "--origin", "delivered"});
    EXPECT_NE(moved.out.find("the url \"SymbolsLibrary/2D/p.png\" would be written as "
                             "\"SymbolsLibrary/standard/2D/p.png\""),
              std::string::npos)
        << moved.out;
    EXPECT_EQ(moved.exitCode, 5);
}

TEST_F(LibraryCheck, ReadsTheMessagesOfTheRoot)
{
    const std::string file = Write(Library("<symbol id=\"a\" categoryId=\"c\"><name locid=\"K\"/><title locid=\"K\"/>"
                                           "<gallery_thumbnail url=\"SymbolsLibrary/2D/p_64x64.png\"/>"
                                           "<image url=\"SymbolsLibrary/2D/p.png\"/></symbol>"));
    const ProcessResult without = RunLusym({"library", "check", file});
    EXPECT_NE(without.out.find(":12: warning: 2 texts are named by key"), std::string::npos) << without.out;

    m_folder.Write("messages.xml", "<messages table=\"lubase:lumodulesStrings\" default=\"en\"><message key=\"K\">"
                                   "<text lang=\"en\">Key</text><text lang=\"de\">Text</text></message></messages>");
    const ProcessResult with = RunLusym({"library", "check", file});
    EXPECT_EQ(with.exitCode, 0) << with.out;

    m_folder.Write("messages.xml", "<messages>\n<message>");
    const ProcessResult broken = RunLusym({"library", "check", file});
    EXPECT_NE(broken.err.find("messages.xml:"), std::string::npos) << broken.err;
    EXPECT_EQ(broken.exitCode, 5);
}

TEST_F(LibraryCheck, WritesFindingsAsJson)
{
    // Bytes that are not UTF-8 must not break the JSON.
    const std::string file = Write(Library(Symbol("a", "\xFF\"\n</>") + Symbol("b", "B")) + "\xFF");
    const ProcessResult broken = RunLusym({"library", "check", file, "--json"});
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
    EXPECT_EQ(broken.exitCode, 5);
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
        const ProcessResult result = RunLusym({"library", "check", file});
        EXPECT_EQ(result.out, file + ": error: " + reason + ". Name the XML file of a library. [unreadable]\n");
        EXPECT_EQ(result.exitCode, 3);
    }
}

TEST_F(LibraryCheck, ListsEveryCode)
{
    const ProcessResult result = RunLusym({"library", "check", "--codes"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find("name-taken            error    An entry before it has the same name; the loader drops "
                              "the later one.\n"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("\nnot-canonical         note     "), std::string::npos);
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
    const ProcessResult result = RunLusym({"library", "check", file});
    EXPECT_EQ(result.err, "1 error, 0 warnings in 90001 entries\n");
    EXPECT_NE(result.out.find(":90012: error: the name \"Name 0\" is already taken by the entry at line 12;"),
              std::string::npos)
        << result.out;
}

} // namespace
