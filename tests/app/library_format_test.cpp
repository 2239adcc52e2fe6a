#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "LibraryText.h"
#include "LibraryUrl.h"
#include "LibraryWriting.h"
#include "Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

using test::Library;
using test::ProcessOptions;
using test::ProcessResult;
using test::RunLusym;
using test::Shape;
using test::Symbol;
using test::TemporaryFolder;

constexpr const char* kExample = EXAMPLE_LIBRARY "/SymbolsLibrary/standard/PartSymbolLibrary.xml";

std::vector<std::string> FilesIn(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(LibraryFormat, WritesACanonicalLibraryBackByteForByte)
{
    const TemporaryFolder folder;
    const std::string expected = TemporaryFolder::ReadFile(kExample);
    const ProcessResult toFile = RunLusym({"library", "format", kExample, "-o", folder.Path("out.xml")});
    EXPECT_EQ(toFile.exitCode, 0);
    EXPECT_EQ(toFile.out + toFile.err, "");
    EXPECT_EQ(folder.Read("out.xml"), expected);
    const ProcessResult toStandardOutput = RunLusym({"library", "format", kExample, "--output=-"});
    EXPECT_EQ(toStandardOutput.exitCode, 0);
    EXPECT_EQ(toStandardOutput.out, expected);
}

TEST(LibraryFormat, WritesInPlaceWhatThenIsCanonical)
{
    const TemporaryFolder folder;
    const std::string file =
        folder.Write("SymbolsLibrary/PartSymbolLibrary.xml",
                     "\xEF\xBB\xBF" + Library(Symbol("a", "&lt;A &amp; \xD7\xA9&gt;\r\n"), Shape("s", "S")));
    const ProcessResult result = RunLusym({"library", "format", file, "-o", file});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.err.find("[byte-order-mark]"), std::string::npos);
    const ProcessResult check = RunLusym({"library", "check", file, "--strict", "--json"});
    EXPECT_EQ(check.out.find("not-canonical"), std::string::npos) << check.out;
    EXPECT_NE(folder.Read("SymbolsLibrary/PartSymbolLibrary.xml").find("<name>&lt;A &amp; \xD7\xA9&gt;\n</name>"),
              std::string::npos);
}

TEST(LibraryFormat, RefusesToLoseWithoutLeave)
{
    const TemporaryFolder folder;
    std::string fourSections = Library(Symbol("a", "A"));
    fourSections.erase(fourSections.find("<information>"), std::string("<information>I</information>").size());
    const struct {
        std::string document;
        std::string code;
        bool canBeAllowed;
    } cases[] = {
        {Library(Symbol("a", "A", "<colour/>")), "unknown-element", true},
        {Library(Symbol("a", "A") + Symbol("b", "A")), "name-taken", true},
        {fourSections, "wrong-section-count", true},
        {"<library/>", "wrong-root", false},
        {"<drellin-library>", "not-well-formed", false},
    };
    for (const auto& entry : cases) {
        const std::string file = folder.Write("lib.xml", entry.document);
        const std::string out = folder.Write("out.xml", "old");
        const ProcessResult refused = RunLusym({"library", "format", file, "-o", out});
        EXPECT_EQ(refused.exitCode, 5) << entry.code;
        EXPECT_NE(refused.err.find("[" + entry.code + "]"), std::string::npos) << refused.err;
        EXPECT_EQ(folder.Read("out.xml"), "old") << entry.code;
        const ProcessResult allowed = RunLusym({"library", "format", file, "-o", out, "--allow-loss"});
        EXPECT_EQ(allowed.exitCode, entry.canBeAllowed ? 0 : 5) << entry.code;
        EXPECT_EQ(folder.Read("out.xml").find("<name>A</name>") != std::string::npos, entry.canBeAllowed);
    }
}

TEST(LibraryFormat, TellsWhichUrlsItRewrites)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("SymbolsLibrary/lib.xml", Library(Symbol("a", "A")));
    const ProcessResult result = RunLusym({"library", "format", file, "-o", "-", "--standard"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find("<image url=\"SymbolsLibrary/standard/2D/p.png\"/>"), std::string::npos);
    EXPECT_NE(result.err.find("the url \"SymbolsLibrary/2D/p.png\" would be written as "
                              "\"SymbolsLibrary/standard/2D/p.png\""),
              std::string::npos)
        << result.err;

    std::string text = Library(Symbol("a", "A"));
    text.erase(text.find("SymbolsLibrary/2D/p.png"), std::string("SymbolsLibrary/2D/p.png").size());
    folder.Write("SymbolsLibrary/lib.xml", text);
    const ProcessResult empty = RunLusym({"library", "format", file, "-o", "-"});
    EXPECT_NE(empty.out.find("<image url=\"SymbolsLibrary/2D/\"/>"), std::string::npos) << empty.out;
    EXPECT_NE(empty.err.find("the empty url would be written as the folder \"SymbolsLibrary/2D/\""), std::string::npos)
        << empty.err;
    EXPECT_NE(RunLusym({"library", "check", file}).out.find("[missing-url]"), std::string::npos);
}

TEST(LibraryFormat, TellsOfCarriageReturnsThatDoNotComeBack)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("lib.xml", Library(Symbol("a", "A", "<tooltip>a&#13;&#10;b</tooltip>")));
    const ProcessResult first = RunLusym({"library", "format", file, "-o", file});
    EXPECT_NE(first.err.find("[carriage-return]"), std::string::npos) << first.err;
    const ProcessResult second = RunLusym({"library", "format", file, "-o", "-"});
    EXPECT_NE(second.out.find("a\nb"), std::string::npos) << second.out;
    EXPECT_EQ(second.err.find("[carriage-return]"), std::string::npos) << second.err;
}

TEST(LibraryFormat, LeavesTheOldFileWhenTheNewOneCannotBeWritten)
{
    const TemporaryFolder folder;
    const std::string out = folder.Write("out.xml", "old");
    ProcessOptions options;
    options.largestFile = 4096;
    const ProcessResult full = RunLusym({"library", "format", kExample, "-o", out}, options);
    EXPECT_EQ(full.exitCode, 4);
    EXPECT_NE(full.err.find(out + ": "), std::string::npos) << full.err;
    EXPECT_EQ(folder.Read("out.xml"), "old");
    EXPECT_EQ(FilesIn(folder.Path()), std::vector<std::string>{"out.xml"});

    const std::pair<std::string, std::string> unwritable[] = {
        {folder.Path("none/out.xml"), "a folder that is missing"},
        {folder.Path(), "a folder itself"},
        {"/proc/out.xml", "a folder that takes no files"},
    };
    for (const auto& [path, what] : unwritable) {
        const ProcessResult result = RunLusym({"library", "format", kExample, "-o", path});
        EXPECT_EQ(result.exitCode, 4) << what << ": " << result.err;
        EXPECT_NE(result.err.find(path + ": cannot be written: "), std::string::npos) << result.err;
    }
    EXPECT_EQ(FilesIn(folder.Path()), std::vector<std::string>{"out.xml"});
}

TEST(LibraryFormat, SignalsLeaveNothingBehind)
{
    std::string entries;
    for (int entry = 0; entry < 20000; ++entry) {
        entries += Symbol("id" + std::to_string(entry), "Name " + std::to_string(entry)) + "\n";
    }
    const TemporaryFolder folder;
    const std::string file = folder.Write("in/lib.xml", Library(entries));
    for (const int signalNumber : {SIGINT, SIGTERM}) {
        const TemporaryFolder out;
        const TemporaryFolder temporary;
        out.Write("out.xml", "old");
        ProcessOptions options;
        options.environment = {"TMPDIR=" + temporary.Path()};
        options.signalNumber = signalNumber;
        // The first time while the document is being read, the second time while it is being written.
        options.signalWhenExists = signalNumber == SIGINT ? temporary.Path("lusym-") : out.Path(".");
        const ProcessResult result = RunLusym({"library", "format", file, "-o", out.Path("out.xml")}, options);
        EXPECT_EQ(result.signalNumber, signalNumber) << result.err;
        EXPECT_EQ(out.Read("out.xml"), "old");
        EXPECT_EQ(FilesIn(out.Path()), std::vector<std::string>{"out.xml"});
        EXPECT_TRUE(FilesIn(temporary.Path()).empty());
    }
}

/// What is said of urls beforehand is what the writer then does.
TEST(LibraryFormat, ForetellsTheUrlsOfTheWriter)
{
    using lusymbols::SymbolTemplateLoader;
    const TemporaryFolder folder;
    for (const auto origin : {SymbolTemplateLoader::Origin::ORIGIN_USER, SymbolTemplateLoader::Origin::ORIGIN_OOTB}) {
        for (const bool asStandard : {false, true}) {
            for (const std::string url : {"/a/b/p.png", "2D/p.png", "", "C:\\x\\p.png", "/a/b/", "http://h/p.png"}) {
                const auto image = du::MakeCounted<lusymbols::PartslibraryImageItem>(origin);
                image->SetImageUrl(url);
                const auto shape = du::MakeCounted<lusymbols::PartslibraryOlItem>(origin);
                shape->SetOlUrl(url);
                lusym::LibraryContent content;
                content.templates = {image, shape};
                std::string error;
                ASSERT_TRUE(lusym::WriteLibraryFile(content, asStandard, folder.Path("l.xml"), error)) << error;
                const std::string text = folder.Read("l.xml");
                for (const bool isShape : {false, true}) {
                    const std::string element = std::string(isShape ? "<graphic" : "<image") + " url=\"" +
                                                lusym::WrittenUrl(url, isShape, origin, asStandard) + "\"/>";
                    EXPECT_NE(text.find(element), std::string::npos) << element << "\n" << text;
                }
            }
        }
    }
}

} // namespace
