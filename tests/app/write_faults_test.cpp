#include "DocumentFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <ostream>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;
using Words = std::vector<std::string>;

/// What each verb that writes is told; the folder is the working one.
struct Verb {
    const char* name;
    Words arguments;
    int exitCodeWhereReadOnly = 4;

    friend void PrintTo(const Verb& verb, std::ostream* out) { *out << verb.name; }
};

const char* const kLibrary = "SymbolsLibrary/PartSymbolLibrary.xml";

const char* const kPictures = "pictures/SymbolsLibrary/PartSymbolLibrary.xml";

const Verb kVerbs[] = {
    {"Format", {"library", "format", kLibrary, "-o", kLibrary, "--allow-loss"}},
    {"Gallery", {"library", "gallery", kLibrary, "-o", "gallery.html"}},
    {"Thumbnails", {"library", "thumbnails", kPictures}, 6},
    {"New", {"document", "new", "-o", "new.luz", "--page", "a4"}},
    {"Place", {"symbol", "place", "doc.luz", "--entry", "a", "--at", "1,2", "--page", "1"}},
    {"Render", {"render", "doc.luz", "-o", "page.png", "--page", "1", "--size", "100"}},
    {"Flatten", {"flatten", "doc.luz", "-o", "flat.luz"}},
};

Files ReadAll(const fs::path& folder)
{
    Files files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files[fs::relative(entry.path(), folder)] = test::TemporaryFolder::ReadFile(entry.path());
        }
    }
    return files;
}

/// Whether files may come and go there.
void MakeWritable(const fs::path& folder, bool isWritable)
{
    constexpr fs::perms kRead =
        fs::perms::all & ~(fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write);
    fs::permissions(folder, isWritable ? fs::perms::owner_all : kRead);
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.is_directory()) {
            MakeWritable(entry.path(), isWritable);
        }
    }
}

/// With a library beside that has pictures and no thumbnails.
class WriteFolder : public test::DocumentFolder
{
public:
    WriteFolder()
    {
        const std::string file =
            Write(kPictures, "<drellin-library><units/><information/><categories/><shapes/><symbols>"
                             "<symbol id=\"a\"><image url=\"SymbolsLibrary/2D/a.svg\"/></symbol>"
                             "</symbols></drellin-library>");
        Write("pictures/SymbolsLibrary/2D/a.svg", Read("SymbolsLibrary/2D/a.svg"));
        Lusym({"library", "format", file, "-o", file});
    }
};

/// Whether a file is as it was, or as it becomes, or not there where it was not.
bool IsWhole(const std::string& name, const std::string& bytes, const Files& before, const Files& after)
{
    const auto is = [&](const Files& files) {
        const auto found = files.find(name);
        return found != files.end() && found->second == bytes;
    };
    return is(before) || is(after);
}

class WriteFaults : public testing::TestWithParam<Verb>
{
protected:
    void SetUp() override
    {
        if (test::RunProcess({"/usr/bin/strace", "-qq", "-o", "/dev/null", "/bin/true"}).exitCode != 0) {
            GTEST_SKIP() << "this system lets nobody trace";
        }
        m_before = ReadAll(m_origin.Path());
        const std::string folder = Copy("unharmed");
        EXPECT_EQ(Run(folder, {}).exitCode, 0);
        m_after = ReadAll(folder);
        EXPECT_TRUE(m_after != m_before);
    }

    std::string Copy(const std::string& name) const
    {
        fs::copy(m_origin.Path(), m_work.Path(name), fs::copy_options::recursive);
        return m_work.Path(name);
    }

    /// @param injection what strace does to which calls; empty for an unharmed run
    test::ProcessResult Run(const std::string& folder, const std::string& injection) const
    {
        Words command = m_user;
        if (!injection.empty()) {
            const std::string calls = injection.substr(0, injection.find(':'));
            command.insert(command.end(), {"/usr/bin/strace", "-f", "--seccomp-bpf", "-qq", "-o", Log(), "-e",
                                           "trace=" + calls, "-e", "signal=none", "-e", "inject=" + injection});
        }
        command.push_back(LUSYM_PROGRAM);
        command.insert(command.end(), GetParam().arguments.begin(), GetParam().arguments.end());
        fs::create_directory(Temporary());
        test::ProcessOptions options;
        // A leak cannot be looked for by a process that is being traced.
        options.environment = {"--chdir=" + folder, "LC_ALL=C", "LUSYMBOLS_PLUGIN=", "ASAN_OPTIONS=detect_leaks=0",
                               "TMPDIR=" + Temporary()};
        return test::RunProcess(command, options);
    }

    std::string Log() const { return m_work.Path("log"); }
    std::string Temporary() const { return m_work.Path("temporary"); }

    bool WasInjected() const
    {
        const std::string log = test::TemporaryFolder::ReadFile(Log());
        return log.find("INJECTED") != log.npos || log.find("killed by") != log.npos;
    }

    void ExpectWhole(const std::string& folder, bool isKilled) const
    {
        for (const auto& [name, bytes] : ReadAll(folder)) {
            const bool isLeftOver = isKilled && fs::path(name).extension() == ".tmp";
            EXPECT_TRUE(isLeftOver || IsWhole(name, bytes, m_before, m_after)) << name;
        }
        for (const auto& [name, bytes] : m_before) {
            EXPECT_TRUE(fs::exists(folder + "/" + name)) << name;
        }
    }

    const WriteFolder m_origin;
    const test::TemporaryFolder m_work;
    Files m_before;
    Files m_after;
    Words m_user; ///< what makes the program run as somebody else
};

constexpr const char* kWriting = "write,writev,pwrite64";
constexpr const char* kChanging =
    "write,writev,pwrite64,fsync,fdatasync,ftruncate,rename,renameat,renameat2,link,unlink,unlinkat,mkdir,chmod,fchmod";

TEST_P(WriteFaults, AFullDiskLeavesTheOldFileOrTheNewOneAndSaysSo)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer finds out by writing which memory it can read";
#endif
    for (const char* const later : {"", "+"}) {
        for (int call = 1; call < 100; ++call) {
            const std::string number = std::to_string(call) + later;
            SCOPED_TRACE(number);
            const std::string folder = Copy("full-" + number);
            const test::ProcessResult result = Run(folder, std::string(kWriting) + ":error=ENOSPC:when=" + number);
            if (!WasInjected()) {
                break;
            }
            ExpectWhole(folder, false);
            EXPECT_EQ(result.signalNumber, 0);
            EXPECT_TRUE(result.exitCode > 0 || ReadAll(folder) == m_after) << result.err;
            // Of a disk that stays full nothing can be told either.
            EXPECT_TRUE(result.exitCode == 0 || *later != '\0' || !result.err.empty());
            EXPECT_TRUE(fs::is_empty(Temporary()));
        }
    }
}

TEST_P(WriteFaults, AKillAtEachCallLeavesTheOldFileOrTheNewOne)
{
    for (int call = 1; call < 100; ++call) {
        const std::string number = std::to_string(call);
        SCOPED_TRACE(number);
        const std::string folder = Copy("killed-" + number);
        Run(folder, std::string(kChanging) + ":signal=KILL:when=" + number);
        if (!WasInjected()) {
            break;
        }
        ExpectWhole(folder, true);
        fs::remove_all(Temporary());
    }
}

TEST_P(WriteFaults, AReadOnlyFolderStaysAsItIsAndIsTold)
{
    const std::string folder = Copy("read-only");
    fs::create_directory(Temporary());
    fs::permissions(Temporary(), fs::perms::all);
    MakeWritable(folder, false);
    if (::geteuid() == 0) { // who may write everywhere
        m_user = {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
        Words trial = m_user;
        trial.insert(trial.end(), {LUSYM_PROGRAM, "--version"});
        if (test::RunProcess(trial).exitCode != 0) {
            GTEST_SKIP() << "nobody else may run the program here";
        }
    }
    const test::ProcessResult result = Run(folder, {});
    EXPECT_EQ(result.exitCode, GetParam().exitCodeWhereReadOnly) << result.err;
    EXPECT_NE(result.err, "");
    EXPECT_EQ(ReadAll(folder), m_before);
    EXPECT_TRUE(fs::is_empty(Temporary()));
    MakeWritable(folder, true);
}

INSTANTIATE_TEST_SUITE_P(Verbs, WriteFaults, testing::ValuesIn(kVerbs),
                         [](const auto& verb) { return std::string(verb.param.name); });

} // namespace
