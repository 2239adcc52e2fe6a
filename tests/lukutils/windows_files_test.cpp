#include "support/TemporaryFolder.h"

#include <du/FileSpec.h>
#include <du/FileSystem.h>

#include <gtest/gtest.h>

#include <tuple>
#include <windows.h>
#undef CopyFile

// What is Windows' own: drives, shares of the network, devices, wide names, and paths beyond the old limit.

namespace
{

using du::FileSpec;
using du::FileSystem;

TEST(WindowsFiles, DrivesAndSharesAreKeptApart)
{
    const std::tuple<const char*, const char*, const char*, bool> cases[] = {
        {"\\\\server\\share\\a.xml", "\\\\server\\share\\a.xml", "\\\\server\\share\\", true},
        {"//server/share//x/./a.xml", "\\\\server\\share\\x\\a.xml", "\\\\server\\share\\x\\", true},
        {"\\\\\\server\\a", "\\server\\a", "\\server\\", true},
        {"C:\\x\\a.xml", "C:\\x\\a.xml", "C:\\x\\", true},
        {"c:/x//a.xml", "c:\\x\\a.xml", "c:\\x\\", true},
        {"x/a.xml", "x\\a.xml", "x\\", false},
    };
    for (const auto& [path, whole, location, isAbsolute] : cases) {
        const FileSpec spec(path);
        std::string found;
        spec.GetLocation(&found, true);
        EXPECT_EQ(spec.GetFileSpec(), whole) << path;
        EXPECT_EQ(found, location) << path;
        EXPECT_EQ(FileSpec::IsAbsolute(path), isAbsolute) << path;
    }
}

TEST(WindowsFiles, ADriveIsAFolderAndItsLetterAloneToo)
{
    for (const char* const drive : {"C:", "C:\\", "C:/", "c:\\windows\\"}) {
        EXPECT_TRUE(FileSystem::DirExists(drive)) << drive;
        EXPECT_FALSE(FileSystem::FileExists(drive)) << drive;
    }
    EXPECT_FALSE(FileSystem::DeletePath("C:\\"));
    EXPECT_FALSE(FileSystem::DeletePath("C:"));
    EXPECT_FALSE(FileSystem::DirExists("\\\\no-such-server\\share"));
}

TEST(WindowsFiles, DevicesAndPipesAreNoFiles)
{
    for (const char* const device : {"NUL", "nul", "\\\\.\\NUL", "\\\\.\\pipe\\any", "CON", "COM1"}) {
        EXPECT_FALSE(FileSystem::FileExists(device)) << device;
        EXPECT_FALSE(FileSystem::FileReadable(device)) << device;
    }
}

TEST(WindowsFiles, NamesAreWideAndMayHaveBothSeparators)
{
    const test::TemporaryFolder folder;
    const std::string name = "\xC3\x84 \xE6\x96\x87 \xF0\x9F\x94\xA7";
    ASSERT_EQ(FileSystem::Mkdir(folder.Path() + "/" + name + "\\"), 0);
    const std::string source = folder.Write("source", "bytes");
    const std::string target = folder.Path() + "/" + name + "\\" + name + ".png";
    ASSERT_TRUE(FileSystem::CopyFile(source, target));
    // The same name as other programs see it.
    const std::wstring wide = L"\u00C4 \u6587 \U0001F527";
    const std::wstring path = std::filesystem::path(folder.Path()).native() + L"\\" + wide + L"\\" + wide + L".png";
    EXPECT_NE(::GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(test::TemporaryFolder::ReadFile(target), "bytes");
    // Case does not count.
    EXPECT_TRUE(FileSystem::FileReadable(folder.Path("SOURCE")));
    EXPECT_FALSE(FileSystem::CopyFile(target, folder.Path("Source")));
}

TEST(WindowsFiles, PathsMayBeLongerThanTheOldLimit)
{
    const test::TemporaryFolder folder;
    std::string deep = folder.Path();
    while (deep.size() < 600) {
        deep += "\\" + std::string(100, 'd');
        ASSERT_EQ(FileSystem::Mkdir(deep), 0) << deep.size();
    }
    const std::string file = deep + "\\..\\" + std::string(100, 'd') + "/" + std::string(120, 'f') + ".xml";
    ASSERT_TRUE(FileSystem::CopyFile(folder.Write("source", "bytes"), file));
    EXPECT_TRUE(FileSystem::FileReadable(file));
    EXPECT_TRUE(FileSystem::CopyFile(file, folder.Path("back")));
    EXPECT_EQ(folder.Read("back"), "bytes");
    EXPECT_NE(FileSystem::Mkdir(deep), 0);
    EXPECT_TRUE(FileSystem::DeletePath(folder.Path(std::string(100, 'd'))));
    EXPECT_FALSE(FileSystem::DirExists(folder.Path(std::string(100, 'd'))));
}

TEST(WindowsFiles, WhatMayNotBeWrittenIsCopiedAsAnOrdinaryFileAndDeleted)
{
    const test::TemporaryFolder folder;
    const std::string source = folder.Write("tree/source", "bytes");
    ::SetFileAttributesA(source.c_str(), FILE_ATTRIBUTE_READONLY);
    ASSERT_TRUE(FileSystem::CopyFile(source, folder.Path("copy")));
    EXPECT_EQ(::GetFileAttributesA(folder.Path("copy").c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
    EXPECT_TRUE(FileSystem::DeletePath(folder.Path("tree")));
}

} // namespace
