#include "support/Links.h"
#include "support/TemporaryFolder.h"

#include <du/FileSystem.h>
#include <du/FoundFiles.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using du::FileSystem;

class FileSystemTest : public testing::Test
{
protected:
    std::string Path(const std::string& name) const { return m_folder.Path(name); }

    test::TemporaryFolder m_folder;
};

TEST_F(FileSystemTest, MkdirMakesOneLevelOnly)
{
    EXPECT_NE(FileSystem::Mkdir(Path("a/b")), 0);
    EXPECT_FALSE(FileSystem::DirExists(Path("a")));
    EXPECT_EQ(FileSystem::Mkdir(Path("a/")), 0);
    EXPECT_EQ(FileSystem::Mkdir(Path("a/b")), 0);
    EXPECT_TRUE(FileSystem::DirExists(Path("a/b/")));
    for (const std::string& taken : {Path("a/b/"), m_folder.Write("file", ""), std::string()}) {
        EXPECT_NE(FileSystem::Mkdir(taken), 0) << taken;
    }
}

TEST_F(FileSystemTest, OnlyRegularFilesAreFiles)
{
    m_folder.Write("f", "x");
    test::MakePipe(Path("pipe"));
    test::MakeLink(Path("pipe"), Path("pipe link"));
    test::MakeLink(Path("ring"), Path("ring"));
    for (const std::string& path :
         {std::string(), Path("missing"), Path("."), m_folder.Path(), Path("f") + "/", Path("f") + std::string(1, '\0'),
          std::string(test::kDevice), Path("pipe"), Path("pipe link"), Path("ring")}) {
        EXPECT_FALSE(FileSystem::FileExists(path)) << path;
        EXPECT_FALSE(FileSystem::FileReadable(path)) << path;
        EXPECT_FALSE(FileSystem::CopyFile(path, Path("copy"))) << path;
        EXPECT_FALSE(fs::exists(Path("copy"))) << path;
    }
    EXPECT_TRUE(FileSystem::FileExists(Path("f")));
    EXPECT_TRUE(FileSystem::FileReadable(Path("f")));
    EXPECT_FALSE(FileSystem::DirExists(Path("f")));
}

TEST_F(FileSystemTest, WhatWasFoundIsKnownWhileItIsWanted)
{
    const std::string early = m_folder.Write("early", "x");
    const std::string other = m_folder.Write("other", "x");
    const std::string late = Path("late");
    {
        const du::FoundFiles foundFiles;
        const du::FoundFiles within;
        EXPECT_TRUE(FileSystem::FileExists(early));
        EXPECT_FALSE(FileSystem::FileExists(late));
        m_folder.Write("late", "x");
        EXPECT_TRUE(FileSystem::FileExists(late)); // what was missing is looked for again

        fs::remove(early);
        EXPECT_TRUE(FileSystem::FileExists(early));
        std::thread([&] { EXPECT_FALSE(FileSystem::FileExists(early)); }).join();
        EXPECT_TRUE(FileSystem::DeletePath(other));
        EXPECT_FALSE(FileSystem::FileExists(early));
        fs::remove(late);
    }
    EXPECT_FALSE(FileSystem::FileExists(late));
}

TEST_F(FileSystemTest, CopiesEveryByte)
{
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 300000U}) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<char>(i * 7 + i / 251);
        }
        const std::string target = "to \xC3\xBC " + std::to_string(size);
        EXPECT_TRUE(FileSystem::CopyFile(m_folder.Write("from", bytes), Path(target)));
        EXPECT_EQ(m_folder.Read(target), bytes);
    }
}

TEST_F(FileSystemTest, CopyNeverTouchesWhatIsAtTheTarget)
{
    const std::string source = m_folder.Write("source", "new");
    const std::string victim = m_folder.Write("victim", "old");
    fs::create_directory(Path("folder"));
    std::vector<const char*> targets = {"victim", "folder", "source", "no/such"};
    if (test::kHasLinks) {
        test::MakeLink(victim, Path("link"));
        test::MakeLink(Path("not yet there"), Path("dangling"));
        targets.insert(targets.end(), {"link", "dangling"});
    }
    for (const char* target : targets) {
        EXPECT_FALSE(FileSystem::CopyFile(source, Path(target))) << target;
    }
    EXPECT_EQ(m_folder.Read("victim"), "old");
    EXPECT_EQ(m_folder.Read("source"), "new");
    EXPECT_FALSE(fs::exists(Path("not yet there")));
    EXPECT_EQ(fs::is_symlink(Path("link")), test::kHasLinks);
}

TEST_F(FileSystemTest, DeleteTakesLinksAndLeavesWhatTheyLeadTo)
{
    m_folder.Write("kept/file", "kept");
    m_folder.Write("tree/deep/file", "x");
    test::MakeLink(Path("kept"), Path("tree/link"));
    test::MakeLink(Path("kept"), Path("direct"));
    for (const char* gone : {"tree/", "direct/", "tree", "kept/file/below"}) {
        EXPECT_TRUE(FileSystem::DeletePath(Path(gone))) << gone;
    }
    EXPECT_FALSE(fs::exists(Path("tree")));
    EXPECT_FALSE(fs::is_symlink(Path("direct")));
    for (const std::string& refused : {Path("kept/.."), Path("."), Path("kept/file") + std::string("\0x", 2)}) {
        EXPECT_FALSE(FileSystem::DeletePath(refused)) << refused;
    }
    EXPECT_EQ(m_folder.Read("kept/file"), "kept");
}

} // namespace
