#include "FileClaim.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <tuple>

namespace test
{

namespace
{

namespace fs = std::filesystem;

void WriteTo(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

TEST(FileClaim, TellsWhetherAnotherProgramHasTouchedTheFile)
{
    const TemporaryFolder folder;
    const fs::path path = folder.Path("file");
    const fs::path other = folder.Path("other");
    const std::tuple<const char*, std::function<void()>, bool> cases[] = {
        {"nothing", [] {}, true},
        {"replaced by a file of the same size", [&] { fs::rename(other, path); }, false},
        {"written in its place", [&] { WriteTo(path, "longer"); }, false},
        {"removed", [&] { fs::remove(path); }, false},
    };
    for (const auto& [what, change, isFree] : cases) {
        WriteTo(path, "old");
        WriteTo(other, "new");
        lusym::FileClaim claim(path);
        change();
        EXPECT_EQ(claim.Take(), isFree) << what;
    }
    WriteTo(path, "old");
    lusym::FileClaim later(path);
    {
        lusym::FileClaim first(path);
        EXPECT_TRUE(first.Take());
        EXPECT_FALSE(later.Take());
    }
    EXPECT_TRUE(later.Take());
    EXPECT_TRUE(lusym::FileClaim(other.string() + "/none").Take());
}

} // namespace

} // namespace test
