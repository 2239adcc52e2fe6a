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

TEST(FileSpec, ALibraryFileIsBuiltFromItsPartsInAnyOrder)
{
    du::FileSpec spec;
    spec.SetFileExtension("xml");
    spec.SetLocation("/base/");
    spec.SetFileBaseName("Library");
    EXPECT_EQ(spec.GetFileSpec(), Native("/base/Library.xml"));
    spec.SetFileExtension(".bak");
    spec.SetFileBaseName("Other");
    EXPECT_EQ(spec.GetFile(), "Other.bak");
    spec.SetFileExtension("");
    spec.SetLocation("");
    EXPECT_EQ(spec.GetFileSpec(), "Other");
}

TEST(FileSpec, PartsJoinWithOneSeparatorAndNeverLeaveTheLocation)
{
    const struct {
        const char* location;
        const char* pushed;
        const char* file;
        const char* whole;
    } cases[] = {
        {"/data/base", "", "x", "/data/base/x"},
        {"/data/base/", "", "x", "/data/base/x"},
        {"/", "", "x", "/x"},
        {"\\", "", "x", "/x"},
        {"C:\\", "", "x", "C:/x"},
        {"rel//", "", "x", "rel/x"},
        // a pushed folder never makes a path absolute
        {"", "Symbols", "f", "Symbols/f"},
        {"", "/Symbols", "f", "Symbols/f"},
        {"/", "Symbols", "f", "/Symbols/f"},
        {"/t", "/a//b/", "f", "/t/a/b/f"},
        {"/t", ".", "f", "/t/f"},
        // a file name is one name
        {"/tmp/Symbols", "", "../../etc/passwd", "/tmp/Symbols/passwd"},
        {"/tmp/Symbols", "", "..\\..\\passwd", "/tmp/Symbols/passwd"},
        {"/tmp/Symbols", "", "/passwd", "/tmp/Symbols/passwd"},
        {"/tmp/Symbols", "", "..", "/tmp/Symbols"},
        {"/tmp/Symbols", "", ".", "/tmp/Symbols"},
        {"/tmp/Symbols", "", "x/..", "/tmp/Symbols"},
    };
    for (const auto& c : cases) {
        du::FileSpec spec("old");
        spec.SetLocation(c.location);
        spec.DirPushBack(c.pushed);
        spec.SetFile(c.file);
        EXPECT_EQ(spec.GetFileSpec(), Native(c.whole)) << c.location << " + " << c.pushed << " + " << c.file;
        spec.SetFile("");
        EXPECT_EQ(LocationOf(spec, false), spec.GetFileSpec());
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
         {"/", "/a", "\\a", "\\\\server\\share", "C:/a", "c:\\a", "http://h", "ab://", "s3+x.y-z://b", "a://b/c:/"}) {
        EXPECT_TRUE(du::FileSpec::IsAbsolute(path)) << path;
    }
    for (const char* path : {"", "a", "a/b", "2D\\pic.png", "C:", "C:a", "1:/a", "://x", "http:/h", "1a://x",
                             "my file://x", "../a", "~", "\xC3\x84:/"}) {
        EXPECT_FALSE(du::FileSpec::IsAbsolute(path)) << path;
    }
}

} // namespace
