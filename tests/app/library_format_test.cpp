#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "LibraryText.h"
#include "LibraryUrl.h"
#include "LibraryWriting.h"
#include "Process.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{

using namespace test;

constexpr const char* kDelivered = EXAMPLE_LIBRARY "/SymbolsLibrary/standard/PartSymbolLibrary.xml";

TEST(LibraryFormat, WritesInPlaceWhatThenIsCanonical)
{
    const TemporaryFolder folder;
    const std::string document =
        Library(Symbol("a", "&lt;A &amp; \xD7\xA9&gt;\r\n", "<tooltip>a&#13;&#10;b</tooltip>"), Shape("s", "S"));
    const std::string file = folder.Write("SymbolsLibrary/PartSymbolLibrary.xml", "\xEF\xBB\xBF" + document);
    const ProcessResult first = RunLusym({"library", "format", file, "-o", file});
    EXPECT_TRUE(Contains(first.err, "[byte-order-mark]") && Contains(first.err, "[carriage-return]")) << first.err;
    // A carriage return that the file still holds goes with the next writing, and is told no more.
    const ProcessResult second = RunLusym({"library", "format", file, "-o", file});
    EXPECT_EQ(second.err.find("[carriage-return]"), std::string::npos) << second.err;
    const std::string text = folder.Read("SymbolsLibrary/PartSymbolLibrary.xml");
    EXPECT_TRUE(Contains(text, "<name>&lt;A &amp; \xD7\xA9&gt;\n</name>"));
    EXPECT_TRUE(Contains(text, "<tooltip>a\nb</tooltip>"));
    const ProcessResult check = RunLusym({"library", "check", file, "--strict", "--json"}, 5);
    EXPECT_EQ(check.out.find("not-canonical"), std::string::npos) << check.out;
}

TEST(LibraryFormat, RefusesToLoseWithoutLeave)
{
    const TemporaryFolder folder;
    std::string fourSections = Library(Symbol("a", "A"));
    fourSections.erase(fourSections.find("<information>"), std::string("<information>I</information>").size());
    const std::tuple<std::string, std::string, bool> cases[] = {
        {Library(Symbol("a", "A", "<colour/>")), "unknown-element", true},
        {Library(Symbol("a", "A") + Symbol("b", "A")), "name-taken", true},
        {fourSections, "wrong-section-count", true},
        {"<library/>", "wrong-root", false},
        {"<drellin-library>", "not-well-formed", false},
    };
    for (const auto& [document, code, canBeAllowed] : cases) {
        const std::string file = folder.Write("lib.xml", document);
        const std::string out = folder.Write("out.xml", "old");
        EXPECT_TRUE(Contains(RunLusym({"library", "format", file, "-o", out}, 5).err, "[" + code + "]"));
        EXPECT_EQ(folder.Read("out.xml"), "old") << code;
        RunLusym({"library", "format", file, "-o", out, "--allow-loss"}, canBeAllowed ? 0 : 5);
        EXPECT_EQ(folder.Read("out.xml").find("<name>A</name>") != std::string::npos, canBeAllowed) << code;
    }
}

TEST(LibraryFormat, TellsWhichUrlsItRewrites)
{
    const TemporaryFolder folder;
    std::string text = Library(Symbol("a", "A"));
    const std::string file = folder.Write("SymbolsLibrary/lib.xml", text);
    const ProcessResult standard = RunLusym({"library", "format", file, "-o", "-", "--standard"});
    EXPECT_TRUE(Contains(standard.out, "<image url=\"SymbolsLibrary/standard/2D/p.png\"/>"));
    EXPECT_TRUE(Contains(standard.err, "the url \"SymbolsLibrary/2D/p.png\" would be written as "
                                       "\"SymbolsLibrary/standard/2D/p.png\""));
    const std::string url = "SymbolsLibrary/2D/p.png";
    text.erase(text.find(url), url.size());
    folder.Write("SymbolsLibrary/lib.xml", text);
    const ProcessResult empty = RunLusym({"library", "format", file, "--output=-"});
    EXPECT_TRUE(Contains(empty.out, "<image url=\"SymbolsLibrary/2D/\"/>"));
    EXPECT_TRUE(Contains(empty.err, "the empty url would be written as the folder \"SymbolsLibrary/2D/\""));
}

TEST(LibraryFormat, LeavesTheOldFileWhenTheNewOneCannotBeWritten)
{
    const TemporaryFolder folder;
    const std::string out = folder.Write("out.xml", "old");
    // Eight blocks of 512 bytes are the largest file that may be written.
    const ProcessResult full = RunProcess(
        {"/bin/sh", "-c", "ulimit -f 8; exec \"$@\"", "sh", LUSYM_PROGRAM, "library", "format", kDelivered, "-o", out});
    EXPECT_EQ(full.exitCode, 4);
    EXPECT_TRUE(Contains(full.err, out + ": "));
    for (const std::string& path : {folder.Path("none/out.xml"), folder.Path(), std::string("/proc/out.xml")}) {
        const ProcessResult result = RunLusym({"library", "format", kDelivered, "-o", path}, 4);
        EXPECT_TRUE(Contains(result.err, path + ": cannot be written: "));
    }
    EXPECT_EQ(folder.Read("out.xml"), "old");
    using Files = std::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(Files(folder.Path()), Files()), 1);
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
                for (const bool isShape : {false, true}) {
                    const std::string written = lusym::WrittenUrl(url, isShape, origin, asStandard);
                    EXPECT_TRUE(Contains(folder.Read("l.xml"),
                                         (isShape ? "<graphic url=\"" : "<image url=\"") + written + "\"/>"));
                }
            }
        }
    }
}

} // namespace
