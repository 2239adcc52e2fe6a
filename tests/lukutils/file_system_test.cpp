#include <du/FileSystem.h>
#include <du/UuidGen.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#if !defined(_WIN32)
#  include <sys/stat.h>
#endif

namespace
{

namespace fs = std::filesystem;

class FileSystemTest : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string name;
        du::UuidGen::GetUuidString(name);
        m_root = fs::temp_directory_path() / name;
        fs::create_directories(m_root);
    }
    void TearDown() override { fs::remove_all(m_root); }

    std::string Path(const std::string& name) const { return (m_root / name).string(); }

    std::string MakeFile(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(m_root / name, std::ios::binary) << bytes;
        return Path(name);
    }

    static std::string Content(const std::string& path)
    {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    fs::path m_root;
};

TEST_F(FileSystemTest, MkdirMakesOneLevelOnly)
{
    EXPECT_NE(du::FileSystem::Mkdir(Path("a/b")), 0);
    EXPECT_FALSE(du::FileSystem::DirExists(Path("a")));
    EXPECT_EQ(du::FileSystem::Mkdir(Path("a/")), 0);
    EXPECT_EQ(du::FileSystem::Mkdir(Path("a/b")), 0);
    EXPECT_NE(du::FileSystem::Mkdir(Path("a/b/")), 0);
    EXPECT_TRUE(du::FileSystem::DirExists(Path("a/b")));
    EXPECT_TRUE(du::FileSystem::DirExists(Path("a/b/")));
    EXPECT_NE(du::FileSystem::Mkdir(MakeFile("file", "")), 0);
    EXPECT_NE(du::FileSystem::Mkdir(""), 0);
}

TEST_F(FileSystemTest, OnlyRegularFilesAreFiles)
{
    const std::string target = Path("copy");
    std::vector<std::string> noFiles{"",         Path("missing"),          Path("."),
                                     Path(""),   MakeFile("f", "x") + "/", Path("f") + std::string("\0", 1),
                                     "/dev/null"};
#if !defined(_WIN32)
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
    noFiles.push_back(Path("pipe"));
    fs::create_symlink(Path("pipe"), Path("pipe link"));
    noFiles.push_back(Path("pipe link"));
    fs::create_symlink(Path("ring"), Path("ring"));
    noFiles.push_back(Path("ring"));
#endif
    for (const std::string& path : noFiles) {
        EXPECT_FALSE(du::FileSystem::FileExists(path)) << path;
        EXPECT_FALSE(du::FileSystem::FileReadable(path)) << path;
        EXPECT_FALSE(du::FileSystem::CopyFile(path, target)) << path;
        EXPECT_FALSE(fs::exists(target)) << path;
    }
    EXPECT_TRUE(du::FileSystem::FileExists(Path("f")));
    EXPECT_TRUE(du::FileSystem::FileReadable(Path("f")));
    EXPECT_FALSE(du::FileSystem::DirExists(Path("f")));
}

TEST_F(FileSystemTest, CopiesEveryByte)
{
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 300000U}) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<char>(i * 7 + i / 251);
        }
        const std::string source = MakeFile("from", bytes);
        const std::string target = Path("to \xC3\xBC " + std::to_string(size));
        EXPECT_TRUE(du::FileSystem::CopyFile(source, target));
        EXPECT_EQ(Content(target), bytes);
    }
}

TEST_F(FileSystemTest, CopyNeverTouchesWhatIsAtTheTarget)
{
    const std::string source = MakeFile("source", "new");
    const std::string victim = MakeFile("victim", "old");
    fs::create_symlink(victim, Path("link"));
    fs::create_symlink(Path("not yet there"), Path("dangling"));
    fs::create_directory(Path("folder"));
    for (const std::string& target :
         {victim, Path("link"), Path("dangling"), Path("folder"), source, Path("no/such")}) {
        EXPECT_FALSE(du::FileSystem::CopyFile(source, target)) << target;
    }
    EXPECT_EQ(Content(victim), "old");
    EXPECT_EQ(Content(source), "new");
    EXPECT_FALSE(fs::exists(Path("not yet there")));
    EXPECT_TRUE(fs::is_symlink(Path("link")));
}

TEST_F(FileSystemTest, DeleteTakesLinksAndLeavesWhatTheyLeadTo)
{
    fs::create_directories(Path("kept"));
    MakeFile("kept/file", "kept");
    fs::create_directories(Path("tree/deep/deeper"));
    MakeFile("tree/deep/file", "x");
    fs::create_directory_symlink(Path("kept"), Path("tree/link"));
    fs::create_directory_symlink(Path("kept"), Path("direct"));

    EXPECT_TRUE(du::FileSystem::DeletePath(Path("tree/")));
    EXPECT_FALSE(fs::exists(Path("tree")));
    EXPECT_TRUE(du::FileSystem::DeletePath(Path("direct/")));
    EXPECT_FALSE(fs::is_symlink(fs::symlink_status(Path("direct"))));
    EXPECT_EQ(Content(Path("kept/file")), "kept");
    EXPECT_TRUE(du::FileSystem::DeletePath(Path("tree")));
    EXPECT_TRUE(du::FileSystem::DeletePath(Path("kept/file/below")));
}

TEST_F(FileSystemTest, DeleteRefusesPathsThatNameNoEntryOfTheirOwn)
{
    MakeFile("file", "kept");
    fs::create_directory(Path("folder"));
    for (const std::string& path : {Path("folder/.."), Path("."), Path("file") + std::string("\0x", 2)}) {
        EXPECT_FALSE(du::FileSystem::DeletePath(path)) << path;
    }
    EXPECT_EQ(Content(Path("file")), "kept");
}

} // namespace
