#include <du/FileSpec.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace
{

/// Expectations are written with '/' and compared in native form.
std::string Native(std::string text)
{
    std::replace(text.begin(), text.end(), '/', du::FileSpec::DIR_SEP_CHAR);
    return text;
}

std::string LocationOf(const du::FileSpec& spec, bool withSeparator)
{
    std::string location = "to be replaced";
    spec.GetLocation(&location, withSeparator);
    return location;
}

TEST(FileSpec, SplitsAndNormalises)
{
    const struct {
        std::string_view path;
        const char* whole;
        const char* location; ///< with its separator
        const char* file;
        const char* extension;
    } cases[] = {
        {"", "", "", "", ""},
        {"pic.png", "pic.png", "", "pic.png", "png"},
        {"/base/2D/pic.png", "/base/2D/pic.png", "/base/2D/", "pic.png", "png"},
        {"2D\\pic.png", "2D/pic.png", "2D/", "pic.png", "png"},
        {"C:\\lib\\a.b.xml", "C:/lib/a.b.xml", "C:/lib/", "a.b.xml", "xml"},
        {"/base//x///y", "/base/x/y", "/base/x/", "y", ""},
        {"/base/x/", "/base/x", "/base/x/", "", ""},
        {"/base/x\\\\", "/base/x", "/base/x/", "", ""},
        {"./a/./b.c", "a/b.c", "a/", "b.c", "c"},
        {"a/.", "a", "a/", "", ""},
        {".", "", "", "", ""},
        {"a/../b", "a/../b", "a/../", "b", ""},
        {"a/..", "a/..", "a/../", "", ""},
        {"..", "..", "../", "", ""},
        {"/", "", "/", "", ""},
        {"//", "", "/", "", ""},
        {"/pic.png", "/pic.png", "/", "pic.png", "png"},
        {"Case/Kept.PNG", "Case/Kept.PNG", "Case/", "Kept.PNG", "PNG"},
        {"dir.ext/name", "dir.ext/name", "dir.ext/", "name", ""},
        {"name.", "name.", "", "name.", ""},
        {".hidden", ".hidden", "", ".hidden", "hidden"},
        {std::string_view("a/\0/b", 5), nullptr, nullptr, "b", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const du::FileSpec spec(c.path);
        if (c.whole) {
            EXPECT_EQ(spec.GetFileSpec(), Native(c.whole));
            EXPECT_EQ(LocationOf(spec, true), Native(c.location));
            EXPECT_EQ(du::FileSpec(spec.GetFileSpec()).GetFileSpec(), spec.GetFileSpec());
        }
        EXPECT_EQ(spec.GetFile(), c.file);
        EXPECT_EQ(spec.GetFileExtension(), c.extension);
    }
}

TEST(FileSpec, KeepsTheSlashesOfAScheme)
{
    EXPECT_EQ(du::FileSpec("http://host//a/b.png").GetFileSpec(), "http://" + Native("host/a/b.png"));
    EXPECT_EQ(du::FileSpec("file:////tmp/a.png").GetFileSpec(), "file://" + Native("/tmp/a.png"));
    EXPECT_EQ(du::FileSpec("c://a").GetFileSpec(), Native("c:/a"));
}

TEST(FileSpec, JoiningALocationWithASeparatorGivesOneSeparator)
{
    const struct {
        const char* base;
        const char* joined;
    } cases[] = {
        {"/data/base", "/data/base/x"},
        {"/data/base/", "/data/base/x"},
        {"/", "/x"},
        {"\\", "/x"},
        {"C:\\", "C:/x"},
        {"rel", "rel/x"},
        {"rel//", "rel/x"},
    };
    for (const auto& c : cases) {
        du::FileSpec spec;
        spec.SetLocation(c.base);
        EXPECT_EQ(spec.GetFileSpec() + du::FileSpec::DIR_SEP_CHAR + "x", Native(c.joined)) << c.base;
        EXPECT_EQ(LocationOf(spec, true) + "x", Native(c.joined)) << c.base;
        EXPECT_EQ(LocationOf(spec, false), spec.GetFileSpec()) << c.base;
    }
}

TEST(FileSpec, ALibraryFileIsBuiltFromItsPartsInAnyOrder)
{
    du::FileSpec spec;
    spec.SetFileExtension("xml");
    spec.SetLocation("/base/SymbolsLibrary/");
    spec.SetFileBaseName("PartSymbolLibrary");
    EXPECT_EQ(spec.GetFileSpec(), Native("/base/SymbolsLibrary/PartSymbolLibrary.xml"));
    spec.DirPushBack("standard");
    EXPECT_EQ(spec.GetFileSpec(), Native("/base/SymbolsLibrary/standard/PartSymbolLibrary.xml"));
    spec.SetFileExtension(".bak");
    spec.SetFileBaseName("Other");
    EXPECT_EQ(spec.GetFile(), "Other.bak");
    spec.SetFileExtension("");
    EXPECT_EQ(spec.GetFile(), "Other");
    spec.SetLocation("");
    EXPECT_EQ(spec.GetFileSpec(), "Other");
}

TEST(FileSpec, APushedFolderNeverMakesAPathAbsolute)
{
    const struct {
        const char* location;
        const char* pushed;
        const char* whole;
    } cases[] = {
        {"", "Symbols", "Symbols/f"},
        {"", "/Symbols", "Symbols/f"},
        {"/", "Symbols", "/Symbols/f"},
        {"/t", "/a//b/", "/t/a/b/f"},
        {"/t", "", "/t/f"},
        {"/t", ".", "/t/f"},
    };
    for (const auto& c : cases) {
        du::FileSpec spec("f");
        spec.SetLocation(c.location);
        spec.DirPushBack(c.pushed);
        EXPECT_EQ(spec.GetFileSpec(), Native(c.whole)) << c.location << " + " << c.pushed;
    }
}

TEST(FileSpec, AFileNameCannotLeaveTheLocation)
{
    for (const char* name : {"../../etc/passwd", "..\\..\\passwd", "/passwd", "passwd"}) {
        du::FileSpec spec;
        spec.SetLocation("/tmp/Symbols");
        spec.SetFile(name);
        EXPECT_EQ(spec.GetFileSpec(), Native("/tmp/Symbols/passwd")) << name;
    }
    for (const char* name : {"..", ".", "", "x/.."}) {
        du::FileSpec spec("/tmp/Symbols/old");
        spec.SetFile(name);
        EXPECT_EQ(spec.GetFileSpec(), Native("/tmp/Symbols")) << name;
    }
}

TEST(FileSpec, AcceptsPartsOfItsOwnText)
{
    du::FileSpec spec("/a/b/c.d");
    const std::string whole = spec.GetFileSpec();
    spec.SetFileSpec(whole);
    spec.SetLocation(whole);
    EXPECT_EQ(spec.GetFileSpec(), Native("/a/b/c.d/c.d"));
}

TEST(FileSpec, TellsAbsolutePaths)
{
    for (const char* path :
         {"/", "/a", "\\a", "\\\\server\\share", "C:/a", "c:\\a", "http://h", "ab://", "s3+x.y-z://b"}) {
        EXPECT_TRUE(du::FileSpec::IsAbsolute(path)) << path;
    }
    for (const char* path : {"", "a", "a/b", "2D\\pic.png", "C:", "C:a", "1:/a", "a://b/c:/", "://x", "http:/h",
                             "1a://x", "my file://x", "../a", "~", "\xC3\x84:/"}) {
        EXPECT_EQ(du::FileSpec::IsAbsolute(path), std::string_view(path) == "a://b/c:/") << path;
    }
}

} // namespace
