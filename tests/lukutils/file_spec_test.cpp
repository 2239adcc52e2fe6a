#include "support/Native.h"

#include <gtest/gtest.h>

namespace
{

// Expectations are written with '/' and compared in native form.
using test::Native;

std::string LocationOf(const du::FileSpec& spec, bool withSeparator)
{
    std::string location = "to be replaced";
    spec.GetLocation(&location, withSeparator);
    return location;
}

TEST(FileSpec, SplitsAndNormalises)
{
    // path: whole, location with its separator, file, extension
    const std::tuple<std::string_view, const char*, const char*, const char*, const char*> cases[] = {
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
        {"http://host//a/b.png", "http://host/a/b.png", "http://host/a/", "b.png", "png"},
        {"file:////tmp/a.png", "file:///tmp/a.png", "file:///tmp/", "a.png", "png"},
        {"ab://", "ab://", "ab://", "", ""},
        {"c://a", "c:/a", "c:/", "a", ""},
        {".hidden", ".hidden", "", ".hidden", "hidden"},
        {std::string_view("a/\0/b", 5), nullptr, nullptr, "b", ""},
    };
    for (const auto& [path, whole, location, file, extension] : cases) {
        SCOPED_TRACE(path);
        const du::FileSpec spec(path);
        if (whole) {
            EXPECT_EQ(spec.GetFileSpec(), Native(whole));
            EXPECT_EQ(LocationOf(spec, true), Native(location));
            EXPECT_EQ(du::FileSpec(spec.GetFileSpec()).GetFileSpec(), spec.GetFileSpec());
        }
        EXPECT_EQ(spec.GetFile(), file);
        EXPECT_EQ(spec.GetFileExtension(), extension);
    }
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
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
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
    for (const auto& [location, pushed, file, whole] : cases) {
        du::FileSpec spec("old");
        spec.SetLocation(location);
        spec.DirPushBack(pushed);
        spec.SetFile(file);
        EXPECT_EQ(spec.GetFileSpec(), Native(whole)) << location << " + " << pushed << " + " << file;
        spec.SetFile("");
        EXPECT_EQ(LocationOf(spec, false), spec.GetFileSpec());
    }
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
