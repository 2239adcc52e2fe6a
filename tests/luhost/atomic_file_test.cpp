#include "support/Links.h"
#include "support/TemporaryFolder.h"

#include <du/FileSystem.h>
#include <luhost/AtomicFile.h>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <vector>
#if !defined(_WIN32)
#  include <sys/resource.h>
#  include <sys/stat.h>
#endif

namespace
{

namespace fs = std::filesystem;
using luhost::AtomicFile;

class AtomicFileTest : public testing::Test
{
protected:
    std::size_t CountFiles() const
    {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(m_folder.Path()), fs::directory_iterator()));
    }

    test::TemporaryFolder m_folder;
};

TEST_F(AtomicFileTest, ReplacesTheWholeFileAtTheEnd)
{
    const std::string path = m_folder.Write("a.xml", "old and longer");
    {
        AtomicFile dropped(path);
        EXPECT_TRUE(dropped.Write("never committed"));
        EXPECT_EQ(CountFiles(), 2u);
    }
    AtomicFile file(path);
    EXPECT_TRUE(file.Write("new "));
    EXPECT_TRUE(file.Write(std::string_view("b\0y", 3)));
    EXPECT_EQ(m_folder.Read("a.xml"), "old and longer");
    EXPECT_TRUE(file.Commit());
    EXPECT_EQ(m_folder.Read("a.xml"), std::string("new b\0y", 7));
    EXPECT_FALSE(file.Write("late"));
    EXPECT_FALSE(file.Commit());
    EXPECT_FALSE(file.HasFailed());

    AtomicFile filledByAnother(path);
    std::ofstream(filledByAnother.GetTemporaryPath()) << "by name";
    EXPECT_TRUE(filledByAnother.Commit());
    EXPECT_EQ(m_folder.Read("a.xml"), "by name");
    EXPECT_EQ(CountFiles(), 1u);
}

// There a file has the rights of its folder, and no limit of size.
#if !defined(_WIN32)

mode_t PermissionsOf(const std::string& path)
{
    struct stat status {
    };
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777U;
}

TEST_F(AtomicFileTest, KeepsPermissionBits)
{
    const std::string path = m_folder.Write("a.xml", "old");
    for (const mode_t mode : {mode_t{0640}, mode_t{0444}}) {
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        AtomicFile file(path);
        EXPECT_EQ(PermissionsOf(file.GetTemporaryPath()), 0600U);
        EXPECT_TRUE(file.Commit());
        EXPECT_EQ(PermissionsOf(path), mode);
    }
    AtomicFile fresh(m_folder.Path("fresh.xml"));
    EXPECT_TRUE(fresh.Commit());
    const std::string ordinary = m_folder.Write("ordinary.xml", "");
    EXPECT_EQ(PermissionsOf(m_folder.Path("fresh.xml")), PermissionsOf(ordinary));
}

TEST_F(AtomicFileTest, LeavesTheOldFileWhenTheMediumIsFull)
{
    const std::string path = m_folder.Write("a.xml", "old");
    struct rlimit before {
    };
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct rlimit tight {
        4096, before.rlim_max
    };
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    std::string error;
    bool committed = false;
    {
        AtomicFile file(path);
        file.Write(std::string(100000, 'x'));
        committed = file.Commit();
        error = file.GetError();
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(committed);
    EXPECT_NE(error.find("File too large"), std::string::npos) << error;
    EXPECT_EQ(m_folder.Read("a.xml"), "old");
    EXPECT_EQ(CountFiles(), 1u);
}

#endif

TEST_F(AtomicFileTest, FollowsALink)
{
    m_folder.Write("real/a.xml", "old");
    if (!test::kHasLinks) {
        GTEST_SKIP() << test::kWhyNoLinks;
    }
    test::MakeLink("real/a.xml", m_folder.Path("link.xml"));
    test::MakeLink("real/b.xml", m_folder.Path("dangling.xml"));
    for (const char* const link : {"link.xml", "dangling.xml"}) {
        AtomicFile file(m_folder.Path(link));
        EXPECT_TRUE(file.Write("new"));
        EXPECT_TRUE(file.Commit()) << file.GetError();
        EXPECT_TRUE(fs::is_symlink(m_folder.Path(link)));
    }
    EXPECT_EQ(m_folder.Read("real/a.xml"), "new");
    EXPECT_EQ(m_folder.Read("real/b.xml"), "new");
}

TEST_F(AtomicFileTest, TheFileMayLieDeep)
{
    std::string path = m_folder.Path();
    while (path.size() < 400) {
        path += "/" + std::string(100, 'd');
        ASSERT_EQ(du::FileSystem::Mkdir(path), 0);
    }
    path += "/\xC3\x84.xml";
    for (const char* const text : {"old", "new"}) {
        AtomicFile file(path);
        EXPECT_TRUE(file.Write(text) && file.Commit()) << file.GetError();
    }
    ASSERT_TRUE(du::FileSystem::CopyFile(path, m_folder.Path("copy")));
    EXPECT_EQ(m_folder.Read("copy"), "new");
}

TEST_F(AtomicFileTest, TellsWhyItCannotWrite)
{
    std::vector<std::pair<std::string, const char*>> cases = {
        {"", "Invalid argument"},
        {m_folder.Path("missing/a.xml"), "No such file or directory"},
        {m_folder.Path(), "Is a directory"},
        {test::kDevice, "Invalid argument"},
    };
    if (test::kHasLinks) {
        test::MakeLink("loop", m_folder.Path("loop"));
        cases.emplace_back(m_folder.Path("loop"), "Too many levels");
    }
    for (const auto& [target, reason] : cases) {
        AtomicFile file(target);
        EXPECT_TRUE(file.HasFailed()) << target;
        EXPECT_NE(file.GetError().find(reason), std::string::npos) << file.GetError();
        EXPECT_FALSE(file.Write("x"));
        EXPECT_FALSE(file.Commit());
    }
    EXPECT_EQ(CountFiles(), test::kHasLinks ? 1u : 0u);
}

} // namespace
