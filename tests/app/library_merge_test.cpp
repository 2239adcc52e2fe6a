#include "FileText.h"
#include "LibraryText.h"
#include "Process.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace
{

using namespace test;

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
    const std::vector<std::string> command = {"library", "merge", m_a, m_b, "-o", m_out, "--copy-files"};
    EXPECT_TRUE(Contains(RunLusym(command).out, "6 files brought along\n"));
    EXPECT_EQ(m_folder.Read("out/SymbolsLibrary/2D/nut_192x192.png"), "b/SymbolsLibrary/2D/nut_192x192");
    EXPECT_EQ(RunLusym({"library", "check", m_out, "--strict"}).out, "");
    EXPECT_FALSE(Contains(RunLusym(command).out, "brought along")) << "everything is there already";
}

TEST_F(LibraryMerge, NeverOverwritesAFileThatDiffers)
{
    m_folder.Write("out/SymbolsLibrary/2D/nut.png", "mine");
    const ProcessResult result = RunLusym({"library", "merge", m_a, m_b, "-o", m_out, "--copy-files"}, 5);
    EXPECT_TRUE(Contains(result.out, "The files " + m_folder.Path("out/SymbolsLibrary/2D/nut.png") + " and " +
                                         m_folder.Path("b/SymbolsLibrary/2D/nut.png") + " differ"));
    EXPECT_EQ(m_folder.Read("out/SymbolsLibrary/2D/nut.png"), "mine");
    EXPECT_FALSE(std::filesystem::exists(m_out));
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("out/SymbolsLibrary/2D/bolt.png")));

    // Two inputs that want one place for different pictures are told of once.
    m_folder.Write("b" + std::string(kLibrary),
                   Library(Picture("3", "Screw", "bolt") + Picture("4", "Short screw", "bolt") +
                           Picture("5", "Long screw", "../2D/bolt")));
    m_folder.Write("b/SymbolsLibrary/2D/bolt.png", "another bolt");
    const std::string out = RunLusym({"library", "merge", m_a, m_b, "-o", m_folder.Path("x.xml"), "--dry-run"}).out;
    const std::string told = " differ, and both would be SymbolsLibrary/2D/bolt.png\n";
    EXPECT_TRUE(Contains(out, told));
    EXPECT_EQ(out.find(told), out.rfind(told)) << out;
}

TEST_F(LibraryMerge, CopiesNothingFromOutsideTheRootOfALibrary)
{
    MakeOutFolder();
    const std::string secret = m_folder.Write("secret.png", "secret");
    m_folder.Write("a2/secret.png", "secret");
    const std::string pictures = m_folder.Path("a/SymbolsLibrary/2D/");
    std::filesystem::create_symlink(secret, pictures + "link.png");
    std::filesystem::create_symlink("bolt.png", pictures + "near.png");
    const std::tuple<std::string, std::string, bool> cases[] = {
        {secret, "secret.png", false},
        {"SymbolsLibrary/../../secret.png", "secret.png", false},
        {m_folder.Path("a2/secret.png"), "secret.png", false},
        {"SymbolsLibrary/2D/link.png", "link.png", false},
        {"/proc/self/status", "status", false},
        {"/dev/null", "null", false},
        {"SymbolsLibrary/2D/near.png", "near.png", true},
        {pictures + "../2D/bolt.png", "bolt.png", true},
    };
    for (const auto& [url, name, isCopied] : cases) {
        m_folder.Write(
            "a" + std::string(kLibrary),
            Library("<symbol id=\"1\" categoryId=\"c\"><name>N</name><image url=\"" + url + "\"/></symbol>"));
        const std::string out = RunLusym({"library", "merge", m_a, "-o", m_out, "--copy-files"}).out;
        EXPECT_EQ(std::filesystem::exists(m_folder.Path("out/SymbolsLibrary/2D/" + name)), isCopied) << url;
        EXPECT_EQ(Contains(out, " is not copied: it lies outside the root") ||
                      Contains(out, " is missing or cannot be read"),
                  !isCopied)
            << out;
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

TEST_F(LibraryMerge, TellsOfTextsThatDifferAndKeepsTheReportOutOfTheLibrary)
{
    std::string text = m_folder.Read("b" + std::string(kLibrary));
    text.replace(text.find("mm"), 2, "in");
    m_folder.Write("b" + std::string(kLibrary), text);
    const ProcessResult result = RunLusym({"library", "merge", m_a, m_b, "-o", "-"});
    EXPECT_TRUE(result.out.starts_with("<?xml ") && result.out.ends_with("</drellin-library>\n")) << result.out;
    EXPECT_TRUE(Contains(result.out, "<units>in</units>"));
    EXPECT_TRUE(Contains(result.err, "The inputs differ in units: \"in\" of " + m_b + " stands\n"));
}

} // namespace
