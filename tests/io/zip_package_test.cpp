#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <luhost/io/ZipPackageFormat.h>

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{

using luhost::PackageEntry;
using luhost::io::PackageLimits;
using luhost::io::ZipPackageFormat;
using test::Contains;

std::string Number(std::uint64_t value, int bytes)
{
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        text.push_back(i < 8 ? static_cast<char>(value >> (8 * i)) : '\0');
    }
    return text;
}

std::uint32_t Crc(const std::string& bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1U ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

/// An archive of stored entries, with faults on demand.
struct Forged {
    std::string name;
    std::string bytes = "content";
    unsigned flags = 0;
    unsigned method = 0;
    std::uint32_t crcFault = 0;
    std::int64_t sizeFault = 0;
    std::int64_t packedFault = 0;
};

std::string Forge(const std::vector<Forged>& entries, std::size_t countFault = 0)
{
    std::string archive;
    std::string directory;
    for (const Forged& entry : entries) {
        const std::string common = Number(20, 2) + Number(entry.flags, 2) + Number(entry.method, 2) +
                                   Number(0x00210000, 4) + Number(Crc(entry.bytes) ^ entry.crcFault, 4) +
                                   Number(entry.bytes.size() + static_cast<std::uint64_t>(entry.packedFault), 4) +
                                   Number(entry.bytes.size() + static_cast<std::uint64_t>(entry.sizeFault), 4) +
                                   Number(entry.name.size(), 2) + Number(0, 2);
        directory += "PK\1\2" + Number(20, 2) + common + Number(0, 10) + Number(archive.size(), 4) + entry.name;
        archive += "PK\3\4" + common + entry.name + entry.bytes;
    }
    const std::uint64_t count = entries.size() + countFault;
    return archive + directory + "PK\5\6" + Number(0, 4) + Number(count, 2) + Number(count, 2) +
           Number(directory.size(), 4) + Number(archive.size(), 4) + Number(0, 2);
}

class ZipPackage : public testing::Test
{
protected:
    std::string WriteAndRead(const std::vector<PackageEntry>& entries, const PackageLimits& limits = {})
    {
        std::string error;
        const ZipPackageFormat format(limits);
        EXPECT_TRUE(format.Write(m_folder.Path("a.luz"), entries, error)) << error;
        EXPECT_TRUE(format.Read(m_folder.Path("a.luz"), m_read, error)) << error;
        return m_folder.Read("a.luz");
    }

    /// Why a file is refused; empty when it is not.
    std::string Refusal(const std::string& path, const PackageLimits& limits = {})
    {
        std::string error;
        m_read.assign(1, {"untouched", ""});
        const bool isRead = ZipPackageFormat(limits).Read(path, m_read, error);
        EXPECT_EQ(isRead, error.empty());
        EXPECT_TRUE(isRead || m_read.at(0).name == "untouched");
        return error;
    }
    std::string RefusalOf(const std::string& archive, const PackageLimits& limits = {})
    {
        return Refusal(m_folder.Write("forged.luz", archive), limits);
    }

    test::TemporaryFolder m_folder;
    std::vector<PackageEntry> m_read;
};

TEST_F(ZipPackage, TheSameEntriesGiveTheSameBytes)
{
    const std::string uniform(3 << 20, 'x');
    const std::vector<PackageEntry> entries = {{"document.xml", uniform.substr(0, 100000)},
                                               {"Symbols/b.PNG", uniform.substr(0, 99)},
                                               {"Symbols/\xFF.svg", "<svg/>"},
                                               {"Symbols/\xC3\xA4.png", std::string("\0\1", 2)},
                                               {"empty", ""},
                                               {"uniform", uniform}};
    PackageLimits limits;
    limits.maximumRatio = 100;
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    const std::string first = WriteAndRead(entries, limits);
    ASSERT_EQ(m_read.size(), entries.size());
    EXPECT_TRUE(
        std::is_sorted(m_read.begin(), m_read.end(), [](const auto& a, const auto& b) { return a.name < b.name; }));
    for (const PackageEntry& entry : entries) {
        EXPECT_TRUE(std::any_of(m_read.begin(), m_read.end(), [&](const PackageEntry& read) {
            return read.name == entry.name && read.bytes == entry.bytes;
        })) << entry.name;
    }
    // Deflated, stored where that gains nothing, stored where the ratio would look like a bomb's.
    EXPECT_GT(first.size(), uniform.size());
    EXPECT_LT(first.size(), uniform.size() + 3000);
    EXPECT_TRUE(Contains(first, uniform.substr(0, 99)));

    ::setenv("TZ", "Pacific/Kiritimati", 1);
    ::tzset();
    EXPECT_EQ(WriteAndRead({entries.rbegin(), entries.rend()}, limits), first);
    ::unsetenv("TZ");
    EXPECT_EQ(WriteAndRead(m_read, limits), first);
}

TEST_F(ZipPackage, TakesNamesThatStayInsideAndNoOther)
{
    const std::pair<std::string, const char*> names[] = {
        {"a", ""},
        {"a/.b..c", ""},
        {"", "has no name"},
        {"/etc/passwd", "absolute"},
        {"..", "names no file"},
        {"a/../../b", "names no file"},
        {"./a", "names no file"},
        {"a//b", "names no file"},
        {"a\\..\\b", "backslash"},
        {"C:a", "drive"},
        {"../", "names no file"},
    };
    for (const auto& [name, reason] : names) {
        const std::string refusal = RefusalOf(Forge({{"first"}, {name, name.ends_with('/') ? "" : "x"}}));
        EXPECT_EQ(refusal.empty(), *reason == '\0') << name << ": " << refusal;
        EXPECT_TRUE(Contains(refusal, reason));
        EXPECT_TRUE(*reason == '\0' || Contains(refusal, "\"" + name + "\""));
        std::string error;
        EXPECT_EQ(ZipPackageFormat().Write(m_folder.Path("w.luz"), {{"first", ""}, {name, "x"}}, error),
                  *reason == '\0')
            << name;
    }
    // An empty folder says nothing and is passed over.
    EXPECT_EQ(RefusalOf(Forge({{"a/", ""}, {"a/b"}})), "");
    EXPECT_EQ(m_read.size(), 1u);
    EXPECT_TRUE(Contains(RefusalOf(Forge({{"a/", "x"}})), "folder with content"));
    EXPECT_TRUE(Contains(RefusalOf(Forge({{"a"}, {"b"}, {"a"}})), "\"a\" is there twice"));
}

TEST_F(ZipPackage, RefusesWhatIsDamagedOrLies)
{
    PackageLimits tight;
    tight.maximumEntries = 3;
    tight.maximumEntryBytes = 100;
    tight.maximumTotalBytes = 150;
    const std::string sound = Forge({{"a"}});
    const std::string big(90, 'x');
    const std::string record64 = "PK\6\6" + Number(44, 8) + Number(0, 12) + Number(std::uint64_t{1} << 40U, 8) +
                                 Number(std::uint64_t{1} << 40U, 8) + Number(46, 8) + Number(0, 8);
    const struct {
        std::string archive;
        const char* reason;
    } cases[] = {
        {sound, ""},
        {"", "empty"},
        {"no archive at all", "no zip archive"},
        {sound.substr(0, sound.size() - 1), "no zip archive"},
        {sound.substr(5), "sound zip archive"},
        {Forge({{"a"}}, 2), "sound zip archive"},
        {Forge({{"a", "x", 0, 0, 1}}), "\"a\" cannot be read: CRC"},
        {Forge({{"a", "x", 1}}), "\"a\" is encrypted"},
        {Forge({{"a", "x", 0, 12}}), "\"a\" is packed by a method"},
        {Forge({{"a", "x", 0, 8}}), "\"a\" cannot be read"},
        {Forge({{"a", "x", 0, 0, 0, 5}}), "\"a\" "},
        {Forge({{"a", "xyz", 0, 0, 0, -1}}), "\"a\" "},
        {Forge({{"a", "x", 0, 0, 0, 500}}), "\"a\" is larger than 100"},
        {Forge({{"a", "x", 0, 0, 0, 0, 5000}}), "\"a\" reaches beyond"},
        {Forge({{"a"}, {"b"}, {"c"}, {"d"}}), "more than 3 entries"},
        {Forge({{"a", big}, {"b", big}}), "\"b\" makes the package larger than 150"},
        {record64 + "PK\6\7" + Number(0, 4) + Number(0, 8) + Number(1, 4) + "PK\5\6" + Number(0, 4) +
             Number(0xFFFFFFFF, 4) + Number(0xFFFFFFFFFFFFFFFF, 8) + Number(0, 2),
         "more than 3 entries"},
    };
    for (const auto& [archive, reason] : cases) {
        const std::string refusal = RefusalOf(archive, tight);
        EXPECT_EQ(refusal.empty(), *reason == '\0') << refusal;
        EXPECT_TRUE(Contains(refusal, reason));
    }
}

TEST_F(ZipPackage, StopsUnpackingWhereTheDirectoryLiedAboutTheSize)
{
    // A real entry of two megabytes of which the directory owns up to less, or which is packed too tightly.
    const std::string honest = WriteAndRead({{"a", std::string(2 << 20, 'x')}});
    std::string lying = honest;
    const std::size_t directory = lying.rfind("PK\1\2");
    lying.replace(directory + 24, 4, Number(1000, 4));
    EXPECT_TRUE(Contains(RefusalOf(lying), "\"a\" "));
    PackageLimits limits;
    limits.maximumRatio = 100;
    EXPECT_EQ(RefusalOf(honest), "");
    EXPECT_TRUE(Contains(RefusalOf(honest, limits), "\"a\" is packed more tightly than 100"));
    for (std::size_t at = 0; at < honest.size(); at += 61) {
        std::string damaged = honest;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        RefusalOf(damaged); // whatever it says, it comes back
    }
}

TEST_F(ZipPackage, ReadsRegularFilesOnly)
{
    ASSERT_EQ(::mkfifo(m_folder.Path("pipe").c_str(), 0600), 0);
    EXPECT_TRUE(Contains(Refusal(m_folder.Path("pipe")), "no regular file"));
    EXPECT_TRUE(Contains(Refusal(m_folder.Path()), "no regular file"));
    EXPECT_TRUE(Contains(Refusal("/dev/zero"), "no regular file"));
    EXPECT_TRUE(Contains(Refusal(m_folder.Path("none")), "No such file"));
    EXPECT_TRUE(Contains(Refusal(std::string("a\0b", 3)), "cannot be opened"));
}

TEST_F(ZipPackage, WritesWhollyOrNotAtAll)
{
    const std::string path = m_folder.Write("a.luz", "old");
    PackageLimits tight;
    tight.maximumEntries = 1;
    tight.maximumEntryBytes = 10;
    std::string error;
    const std::pair<std::vector<PackageEntry>, const char*> cases[] = {
        {{}, "no entry"},
        {{{"a", ""}, {"a", ""}}, "\"a\" is there twice"},
        {{{"a", ""}, {"b", ""}}, "more than 1"},
        {{{"a", "12345678901"}}, "\"a\" is larger than 10"},
    };
    for (const auto& [entries, reason] : cases) {
        EXPECT_FALSE(ZipPackageFormat(tight).Write(path, entries, error));
        EXPECT_TRUE(Contains(error, reason));
    }
    EXPECT_FALSE(ZipPackageFormat().Write(m_folder.Path("none/a.luz"), {{"a", ""}}, error));
    EXPECT_EQ(error, "the file cannot be written: No such file or directory");

    struct rlimit before {
    };
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct rlimit full {
        4096, before.rlim_max
    };
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    const bool isWritten = ZipPackageFormat().Write(path, {{"a.png", std::string(100000, 'x')}}, error);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(error, "the file cannot be written: File too large");
    EXPECT_EQ(m_folder.Read("a.luz"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder.Path()), {}), 1);
}

} // namespace
