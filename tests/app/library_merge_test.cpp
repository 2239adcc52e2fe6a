#include "FileText.h"
#include "LibraryText.h"
#include "Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

namespace
{

using test::Category;
using test::Library;
using test::ProcessResult;
using test::RunLusym;
using test::Symbol;
using test::TemporaryFolder;

constexpr const char* kLibrary = "/SymbolsLibrary/PartSymbolLibrary.xml";

std::string Picture(const std::string& id, const std::string& name, const std::string& file)
{
    return "<symbol id=\"" + id + "\" categoryId=\"c\"><name>" + name + "</name><title>T</title>" +
           "<gallery_thumbnail url=\"SymbolsLibrary/2D/" + file + "_64x64.png\"/>" + "<image url=\"SymbolsLibrary/2D/" +
           file + ".png\"/></symbol>";
}

/// Two libraries with pictures of their own, and a place for the merged one.
class LibraryMerge : public testing::Test
{
protected:
    LibraryMerge()
    {
        m_a = m_folder.Write("a" + std::string(kLibrary), Library(Picture("1", "Bolt", "bolt")));
        m_b = m_folder.Write("b" + std::string(kLibrary),
                             Library(Picture("1", "Nut", "nut") + "\n" + Picture("2", "Bolt", "bolt"), "",
                                     Category("c", "Other") + Category("d")));
        for (const char* const file : {"a/SymbolsLibrary/2D/bolt", "b/SymbolsLibrary/2D/nut"}) {
            for (const char* const size : {"", "_64x64", "_192x192"}) {
                m_folder.Write(file + std::string(size) + ".png", file + std::string(size));
            }
        }
        m_out = m_folder.Path("out") + kLibrary;
    }

    void MakeOutFolder() const { std::filesystem::create_directories(std::filesystem::path(m_out).parent_path()); }

    TemporaryFolder m_folder;
    std::string m_a;
    std::string m_b;
    std::string m_out;
};

TEST_F(LibraryMerge, ReportsWhatComesFromWhere)
{
    const ProcessResult result = RunLusym({"library", "merge", m_a, m_b, "-o", m_out, "--dry-run"});
    EXPECT_EQ(result.out, m_a + ": 1 of 1 entry and 1 of 1 category taken\n" + m_b +
                              ": 1 of 2 entries and 1 of 2 categories taken\n" + m_b +
                              ":13: the entry \"Bolt\" is dropped: the one at " + m_a + ":12 has its name\n" + m_b +
                              ":12: the id \"1\" of \"Nut\" becomes \"11\"\n" + m_b +
                              ": the category \"c\" joins the one of " + m_a + "\n6 files to bring along\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("out")));

    const nlohmann::json report = nlohmann::json::parse(
        RunLusym({"library", "merge", m_a, m_b, "-o", m_out, "--dry-run", "--json"}).out, nullptr, false);
    ASSERT_FALSE(report.is_discarded());
    EXPECT_EQ(report["entries"], 2);
    EXPECT_EQ(report["dropped"][0]["takenBy"], m_a);
    EXPECT_EQ(report["renamed"][0]["newId"], "11");
    EXPECT_EQ(report["categoriesJoined"][0]["id"], "c");
    EXPECT_EQ(report["files"]["toBring"].size(), 6U);
}

TEST_F(LibraryMerge, WritesALibraryThatChecksOut)
{
    MakeOutFolder();
    const ProcessResult result = RunLusym({"library", "merge", m_a, m_b, "-o", m_out, "--copy-files"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("6 files brought along\n"), std::string::npos) << result.out;
    EXPECT_EQ(m_folder.Read("out/SymbolsLibrary/2D/nut_192x192.png"), "b/SymbolsLibrary/2D/nut_192x192");
    const ProcessResult check = RunLusym({"library", "check", m_out, "--strict"});
    EXPECT_EQ(check.exitCode, 0) << check.out;
    // Once more: everything is there already.
    const ProcessResult again = RunLusym({"library", "merge", m_a, m_b, "-o", m_out, "--copy-files"});
    EXPECT_EQ(again.exitCode, 0) << again.err;
    EXPECT_EQ(again.out.find("brought along"), std::string::npos) << again.out;
}

TEST_F(LibraryMerge, NeverOverwritesAFileThatDiffers)
{
    m_folder.Write("out/SymbolsLibrary/2D/nut.png", "mine");
    const ProcessResult result = RunLusym({"library", "merge", m_a, m_b, "-o", m_out, "--copy-files"});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_NE(result.out.find("The files " + m_folder.Path("out/SymbolsLibrary/2D/nut.png") + " and " +
                              m_folder.Path("b/SymbolsLibrary/2D/nut.png") + " differ"),
              std::string::npos)
        << result.out;
    EXPECT_EQ(m_folder.Read("out/SymbolsLibrary/2D/nut.png"), "mine");
    EXPECT_FALSE(std::filesystem::exists(m_out));
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("out/SymbolsLibrary/2D/bolt.png")));

    // Two inputs that want one place for different pictures.
    m_folder.Write("b" + std::string(kLibrary),
                   Library(Picture("3", "Screw", "bolt") + Picture("4", "Short screw", "bolt") +
                           Picture("5", "Long screw", "../2D/bolt")));
    m_folder.Write("b/SymbolsLibrary/2D/bolt.png", "another bolt");
    const ProcessResult rivals = RunLusym({"library", "merge", m_a, m_b, "-o", m_folder.Path("x.xml"), "--dry-run"});
    const std::size_t told = rivals.out.find(" differ, and both would be SymbolsLibrary/2D/bolt.png\n");
    EXPECT_NE(told, std::string::npos) << rivals.out;
    EXPECT_EQ(rivals.out.find("would be SymbolsLibrary/2D/bolt.png\n", told + 30), std::string::npos) << rivals.out;
}

TEST_F(LibraryMerge, CopiesNothingFromOutsideTheRootOfALibrary)
{
    MakeOutFolder();
    const std::string secret = m_folder.Write("secret.png", "secret");
    m_folder.Write("a2/secret.png", "secret");
    const std::string pictures = m_folder.Path("a/SymbolsLibrary/2D/");
    std::filesystem::create_symlink(secret, pictures + "link.png");
    std::filesystem::create_symlink("bolt.png", pictures + "near.png");
    const struct {
        std::string url;
        std::string name;
        bool isCopied;
    } cases[] = {
        {secret, "secret.png", false},
        {"SymbolsLibrary/../../secret.png", "secret.png", false},
        {m_folder.Path("a2/secret.png"), "secret.png", false},
        {"SymbolsLibrary/2D/link.png", "link.png", false},
        {"/proc/self/status", "status", false},
        {"/dev/null", "null", false},
        {"SymbolsLibrary/2D/near.png", "near.png", true},
        {pictures + "../2D/bolt.png", "bolt.png", true},
    };
    for (const auto& entry : cases) {
        m_folder.Write(
            "a" + std::string(kLibrary),
            Library("<symbol id=\"1\" categoryId=\"c\"><name>N</name><image url=\"" + entry.url + "\"/></symbol>"));
        const ProcessResult result = RunLusym({"library", "merge", m_a, "-o", m_out, "--copy-files"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(std::filesystem::exists(m_folder.Path("out/SymbolsLibrary/2D/" + entry.name)), entry.isCopied)
            << entry.url;
        const bool isTold = result.out.find(" is not copied: it lies outside the root") != std::string::npos ||
                            result.out.find(" is missing or cannot be read") != std::string::npos;
        EXPECT_EQ(isTold, !entry.isCopied) << result.out;
    }
}

TEST(FileText, ReadsAndComparesInBlocks)
{
    const TemporaryFolder folder;
    std::string error;
    for (const std::size_t size : {0U, 1U, 262144U, 262145U, 600000U}) {
        const std::string text(size, 'x');
        const std::string a = folder.Write("a", text);
        EXPECT_TRUE(lusym::HasSameContent(a, folder.Write("b", text))) << size;
        EXPECT_FALSE(lusym::HasSameContent(a, folder.Write("b", text + "x"))) << size;
        EXPECT_FALSE(size != 0 && lusym::HasSameContent(a, folder.Write("b", text.substr(1) + "y"))) << size;
        EXPECT_FALSE(lusym::HasSameContent(a, folder.Path()) || lusym::HasSameContent(folder.Path("none"), a));
        std::string read;
        const auto take = [&read](std::string_view block) { return read.append(block).size() != 262144; };
        EXPECT_EQ(lusym::ReadFileBlocks(a, take, error), size < 262144) << size;
        EXPECT_EQ(error, "");
        EXPECT_EQ(read, text.substr(0, 262144)) << size;
    }
    EXPECT_FALSE(lusym::ReadFileBlocks(
        folder.Path(), [](std::string_view) { return true; }, error));
    EXPECT_EQ(error, "is a folder");
}

TEST_F(LibraryMerge, WritesNothingUnlessEveryInputIsRead)
{
    m_folder.Write("out.xml", "old");
    const std::string out = m_folder.Path("out.xml");
    const std::string other = m_folder.Write("other.xml", "<other/>");
    const ProcessResult some = RunLusym({"library", "merge", m_a, other, m_folder.Path("none"), "-o", out});
    EXPECT_EQ(some.exitCode, 6);
    EXPECT_NE(some.err.find("2 of 3 libraries could not be read, so nothing is written.\n"), std::string::npos);
    EXPECT_EQ(RunLusym({"library", "merge", m_folder.Path("none"), "-o", out}).exitCode, 3);
    EXPECT_EQ(m_folder.Read("out.xml"), "old");
}

TEST_F(LibraryMerge, TellsOfTextsThatDifferAndKeepsTheReportOutOfTheLibrary)
{
    std::string text = m_folder.Read("b" + std::string(kLibrary));
    text.replace(text.find("mm"), 2, "in");
    m_folder.Write("b" + std::string(kLibrary), text);
    const ProcessResult result = RunLusym({"library", "merge", m_a, m_b, "-o", "-"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.out.starts_with("<?xml ") && result.out.ends_with("</drellin-library>\n")) << result.out;
    EXPECT_NE(result.out.find("<units>in</units>"), std::string::npos);
    EXPECT_NE(result.err.find("The inputs differ in units: \"in\" of " + m_b + " stands\n"), std::string::npos)
        << result.err;
}

} // namespace
