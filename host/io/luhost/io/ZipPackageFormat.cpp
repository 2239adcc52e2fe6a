#include <luhost/AtomicFile.h>
#include <luhost/io/ZipPackageFormat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <unordered_set>
#include <utility>
#include <zip.h>

namespace luhost::io
{

namespace
{

struct Discard {
    void operator()(zip_t* archive) const noexcept { zip_discard(archive); }
};
struct CloseEntry {
    void operator()(zip_file_t* entry) const noexcept { zip_fclose(entry); }
};
struct FreeSource {
    void operator()(zip_source_t* source) const noexcept { zip_source_free(source); }
};
struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

using Archive = std::unique_ptr<zip_t, Discard>;
using Entry = std::unique_ptr<zip_file_t, CloseEntry>;
using Source = std::unique_ptr<zip_source_t, FreeSource>;
using File = std::unique_ptr<std::FILE, CloseFile>;

class ZipError
{
public:
    ZipError() noexcept { zip_error_init(&m_error); }
    ~ZipError() { zip_error_fini(&m_error); }
    ZipError(const ZipError&) = delete;
    ZipError& operator=(const ZipError&) = delete;

    zip_error_t* Get() noexcept { return &m_error; }
    std::string GetText() { return zip_error_strerror(&m_error); }

private:
    zip_error_t m_error;
};

bool Fail(std::string& error, std::string reason)
{
    error = std::move(reason);
    return false;
}

std::string SystemText() { return std::generic_category().message(errno); }

// Names

/// As much of a name as a message can show.
std::string Quoted(std::string_view name)
{
    constexpr std::size_t kMaxBytes = 200;
    std::string quoted(1, '"');
    quoted += name.substr(0, kMaxBytes);
    for (char& c : quoted) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    }
    return quoted + (name.size() > kMaxBytes ? "...\"" : "\"");
}

bool FailEntry(std::string& error, std::string_view name, std::string_view reason)
{
    return Fail(error, "the entry " + Quoted(name) + " " + std::string(reason));
}

/// Why a name could lead out of the package, or mean different things to different systems; empty when it cannot.
std::string_view FaultOfName(std::string_view name) noexcept
{
    constexpr std::size_t kMaxBytes = 65535;
    if (name.empty()) {
        return "has no name";
    }
    if (name.size() > kMaxBytes) {
        return "has too long a name";
    }
    if (name.find('\\') != std::string_view::npos) {
        return "has a backslash in its name";
    }
    if (name.find('\0') != std::string_view::npos) {
        return "has a NUL in its name";
    }
    if (name.front() == '/') {
        return "has an absolute name";
    }
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    if (name.size() > 1 && name[1] == ':' && isLetter(name[0])) {
        return "has a drive in its name";
    }
    for (std::string_view rest = name;;) {
        const std::size_t end = std::min(rest.find('/'), rest.size());
        const std::string_view component = rest.substr(0, end);
        if (component.empty() || component == "." || component == "..") {
            return "has a component in its name that names no file";
        }
        if (end == rest.size()) {
            return {};
        }
        rest.remove_prefix(end + 1);
    }
}

// What may be read

bool CheckEntrySize(const PackageLimits& limits, std::string_view name, std::uint64_t size, std::string& error)
{
    return size <= limits.maximumEntryBytes ||
           FailEntry(error, name, "is larger than " + std::to_string(limits.maximumEntryBytes) + " bytes");
}

/// @param total bytes of the entries before and of this one
bool CheckTotalSize(const PackageLimits& limits, std::string_view name, std::uint64_t total, std::string& error)
{
    return total <= limits.maximumTotalBytes ||
           FailEntry(error, name,
                     "makes the package larger than " + std::to_string(limits.maximumTotalBytes) + " bytes");
}

bool IsWithinRatio(const PackageLimits& limits, std::uint64_t size, std::uint64_t packedSize) noexcept
{
    constexpr std::uint64_t kFree = 1U << 20U;
    return size <= kFree || (size - kFree) / std::max<std::uint64_t>(limits.maximumRatio, 1) < packedSize;
}

bool CheckCount(const PackageLimits& limits, std::uint64_t count, std::string& error)
{
    return count <= limits.maximumEntries ||
           Fail(error, "the package has more than " + std::to_string(limits.maximumEntries) + " entries");
}

/// The records at the end of an archive, looked at before the library asks for memory by what they say.
class EndRecords
{
public:
    /// @return false when they promise more than the limits allow
    static bool Check(std::FILE* file, std::uint64_t fileSize, const PackageLimits& limits, std::string& error)
    {
        constexpr std::uint64_t kLocator = 20;
        constexpr std::uint64_t kEnd = 22;
        constexpr std::uint64_t kMaxTail = kLocator + kEnd + 65535;
        std::string tail(static_cast<std::size_t>(std::min(fileSize, kMaxTail)), '\0');
        const std::uint64_t tailStart = fileSize - tail.size();
        if (!ReadAt(file, tailStart, tail)) {
            return Fail(error, "the package cannot be read: " + SystemText());
        }
        // Any of them might be taken for the real one.
        for (std::size_t at = tail.find("PK\5\6"); at != std::string::npos; at = tail.find("PK\5\6", at + 1)) {
            if (tail.size() - at >= kEnd &&
                !CheckDirectory(Number(tail, at + 10, 2), Number(tail, at + 12, 4), limits, error)) {
                return false;
            }
        }
        for (std::size_t at = tail.find("PK\6\7"); at != std::string::npos; at = tail.find("PK\6\7", at + 1)) {
            if (tail.size() - at >= kLocator &&
                !CheckRecord64(file, Number(tail, at + 8, 8), fileSize, limits, error)) {
                return false;
            }
        }
        return true;
    }

private:
    static std::uint64_t Number(const std::string& bytes, std::size_t at, std::size_t size) noexcept
    {
        std::uint64_t number = 0;
        for (std::size_t i = size; i-- > 0;) {
            number = number << 8U | static_cast<unsigned char>(bytes[at + i]);
        }
        return number;
    }

    static bool ReadAt(std::FILE* file, std::uint64_t offset, std::string& bytes)
    {
        return ::fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0 &&
               std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size();
    }

    static bool CheckRecord64(std::FILE* file, std::uint64_t offset, std::uint64_t fileSize,
                              const PackageLimits& limits, std::string& error)
    {
        std::string record(56, '\0');
        if (offset > fileSize || fileSize - offset < record.size() || !ReadAt(file, offset, record)) {
            return true; // no record, as the library will find as well
        }
        return !record.starts_with("PK\6\6") ||
               CheckDirectory(Number(record, 32, 8), Number(record, 40, 8), limits, error);
    }

    static bool CheckDirectory(std::uint64_t count, std::uint64_t bytes, const PackageLimits& limits,
                               std::string& error)
    {
        // The largest numbers stand for "in the record of 64 bits", which is looked at on its own.
        constexpr std::uint64_t kElsewhere16 = 0xFFFF;
        constexpr std::uint64_t kElsewhere32 = 0xFFFFFFFF;
        constexpr std::uint64_t kBytesForEach = 128;
        constexpr std::uint64_t kBytesForLongNames = 16U << 20U;
        if (count != kElsewhere16 && !CheckCount(limits, count, error)) {
            return false;
        }
        return bytes == kElsewhere32 || bytes <= kBytesForLongNames + limits.maximumEntries * kBytesForEach ||
               Fail(error, "the directory of the package is too large");
    }
};

/// A regular file, opened without waiting for the other end of a pipe.
File OpenToRead(const std::string& path, std::uint64_t& size, std::string& error)
{
    const int descriptor =
        path.find('\0') == std::string::npos ? ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC) : -1;
    if (descriptor < 0) {
        error = "the file cannot be opened: " + SystemText();
        return nullptr;
    }
    struct stat status {
    };
    File file(::fdopen(descriptor, "rb"));
    if (!file) {
        ::close(descriptor);
    } else if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        size = static_cast<std::uint64_t>(status.st_size);
        return file;
    }
    error = "it is no regular file";
    return nullptr;
}

/// One archive being read.
class Reading
{
public:
    Reading(const PackageLimits& limits, std::string& error) noexcept : m_limits(limits), m_error(error) {}

    bool Read(const std::string& path, std::vector<PackageEntry>& entries)
    {
        File file = OpenToRead(path, m_fileSize, m_error);
        if (!file || !Open(std::move(file))) {
            return false;
        }
        const auto count =
            static_cast<std::uint64_t>(std::max<zip_int64_t>(zip_get_num_entries(m_archive.get(), 0), 0));
        if (!CheckCount(m_limits, count, m_error)) {
            return false;
        }
        std::vector<Listed> listed;
        for (std::uint64_t index = 0; index < count; ++index) {
            if (!List(index, listed)) {
                return false;
            }
        }
        std::sort(listed.begin(), listed.end(), [](const Listed& a, const Listed& b) { return a.name < b.name; });
        std::vector<PackageEntry> read;
        read.reserve(listed.size());
        for (Listed& entry : listed) {
            if (!Unpack(entry, read.emplace_back())) {
                return false;
            }
        }
        entries = std::move(read);
        return true;
    }

private:
    struct Listed {
        std::uint64_t index;
        std::uint64_t size;
        std::string name;
    };

    bool Open(File file)
    {
        // The library takes an empty file for an empty archive.
        if (m_fileSize == 0) {
            return Fail(m_error, "the file is empty");
        }
        if (!EndRecords::Check(file.get(), m_fileSize, m_limits, m_error)) {
            return false;
        }
        ZipError error;
        Source source(zip_source_filep_create(file.get(), 0, -1, error.Get()));
        if (source) {
            static_cast<void>(file.release()); // goes with the source
            m_archive.reset(zip_open_from_source(source.get(), ZIP_RDONLY, error.Get()));
        }
        if (!m_archive) {
            return Fail(m_error, zip_error_code_zip(error.Get()) == ZIP_ER_NOZIP
                                     ? "it is no zip archive, or its end is missing"
                                     : "it is no sound zip archive: " + error.GetText());
        }
        static_cast<void>(source.release()); // goes with the archive
        return true;
    }

    /// Folders without content say nothing and are passed over.
    bool List(std::uint64_t index, std::vector<Listed>& listed)
    {
        zip_stat_t status{};
        const char* const text = zip_get_name(m_archive.get(), index, ZIP_FL_ENC_RAW);
        if (!text || zip_stat_index(m_archive.get(), index, 0, &status) != 0) {
            return Fail(m_error, "the entry number " + std::to_string(index) + " cannot be read");
        }
        std::string name(text);
        const bool isFolder = name.ends_with('/');
        if (const std::string_view fault = FaultOfName(isFolder ? name.substr(0, name.size() - 1) : name);
            !fault.empty()) {
            return FailEntry(m_error, name, fault);
        }
        constexpr zip_uint64_t kNeeded = ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD;
        if ((status.valid & kNeeded) != kNeeded || !CheckForm(name, status) || !CheckSize(name, status)) {
            return m_error.empty() ? FailEntry(m_error, name, "is incomplete") : false;
        }
        if (isFolder) {
            return status.size == 0 || FailEntry(m_error, name, "is a folder with content");
        }
        if (!m_names.insert(name).second) {
            return FailEntry(m_error, name, "is there twice");
        }
        listed.push_back({index, status.size, std::move(name)});
        return true;
    }

    bool CheckForm(const std::string& name, const zip_stat_t& status)
    {
        if ((status.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && status.encryption_method != ZIP_EM_NONE) {
            return FailEntry(m_error, name, "is encrypted");
        }
        return status.comp_method == ZIP_CM_STORE || status.comp_method == ZIP_CM_DEFLATE ||
               FailEntry(m_error, name, "is packed by a method other than deflate");
    }

    bool CheckSize(const std::string& name, const zip_stat_t& status)
    {
        if (!CheckEntrySize(m_limits, name, status.size, m_error)) {
            return false;
        }
        m_totalBytes += status.size;
        if (!CheckTotalSize(m_limits, name, m_totalBytes, m_error)) {
            return false;
        }
        // Entries that share packed bytes would unpack them again and again.
        if (status.comp_size > m_fileSize - m_packedBytes) {
            return FailEntry(m_error, name, "reaches beyond the end of the file or into another entry");
        }
        m_packedBytes += status.comp_size;
        return IsWithinRatio(m_limits, status.size, status.comp_size) ||
               FailEntry(m_error, name,
                         "is packed more tightly than " + std::to_string(m_limits.maximumRatio) + " to 1");
    }

    bool Unpack(Listed& listed, PackageEntry& entry)
    {
        const Entry file(zip_fopen_index(m_archive.get(), listed.index, 0));
        if (!file) {
            return FailEntry(m_error, listed.name, std::string("cannot be read: ") + zip_strerror(m_archive.get()));
        }
        // Memory is asked for as bytes come, at most twice as much, whatever size the directory tells.
        std::array<char, std::size_t{1} << 16> block;
        for (;;) {
            const zip_int64_t got = zip_fread(file.get(), block.data(), block.size());
            if (got < 0) {
                return FailEntry(m_error, listed.name, std::string("cannot be read: ") + zip_file_strerror(file.get()));
            }
            if (static_cast<std::uint64_t>(got) > listed.size - entry.bytes.size()) {
                return FailEntry(m_error, listed.name, "is larger than the directory tells");
            }
            if (got == 0) {
                break;
            }
            entry.bytes.append(block.data(), static_cast<std::size_t>(got));
        }
        if (entry.bytes.size() != listed.size) {
            return FailEntry(m_error, listed.name, "is smaller than the directory tells");
        }
        entry.name = std::move(listed.name);
        return true;
    }

    const PackageLimits& m_limits;
    std::string& m_error;
    Archive m_archive;
    std::uint64_t m_fileSize = 0;
    std::uint64_t m_packedBytes = 0;
    std::uint64_t m_totalBytes = 0;
    std::unordered_set<std::string> m_names;
};

// Writing

/// Higher levels take three times as long, for a tenth less.
constexpr zip_uint32_t kDeflateLevel = 3;
/// The first day that an archive can tell, at midnight: 1980-01-01.
constexpr zip_uint16_t kFixedDate = 0x0021;
constexpr zip_uint32_t kRegularFileForAll = 0100644U << 16U;

/// Pictures whose format is packed already.
bool IsPacked(std::string_view name) noexcept
{
    constexpr std::array<std::string_view, 5> kPacked = {"png", "jpg", "jpeg", "gif", "webp"};
    std::string extension(name.substr(std::min(name.rfind('.'), name.size() - 1) + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::find(kPacked.begin(), kPacked.end(), extension) != kPacked.end();
}

/// What Read would not take is not written either.
bool CheckEntries(const PackageLimits& limits, const std::vector<PackageEntry>& sorted, std::string& error)
{
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        const std::string& name = sorted[i].name;
        if (const std::string_view fault = FaultOfName(name); !fault.empty()) {
            return FailEntry(error, name, fault);
        }
        if (i > 0 && sorted[i - 1].name == name) {
            return FailEntry(error, name, "is there twice");
        }
        total += sorted[i].bytes.size();
        if (!CheckEntrySize(limits, name, sorted[i].bytes.size(), error) ||
            !CheckTotalSize(limits, name, total, error)) {
            return false;
        }
    }
    return CheckCount(limits, sorted.size(), error) && (!sorted.empty() || Fail(error, "the package has no entry"));
}

/// One archive being made in memory.
class Writing
{
public:
    explicit Writing(std::string& error) : m_error(error)
    {
        ZipError zipError;
        m_target.reset(zip_source_buffer_create(nullptr, 0, 0, zipError.Get()));
        if (m_target) {
            zip_source_keep(m_target.get());
            m_archive.reset(zip_open_from_source(m_target.get(), ZIP_CREATE | ZIP_TRUNCATE, zipError.Get()));
            if (!m_archive) {
                zip_source_free(m_target.get());
            }
        }
    }

    /// @param entry outlives Finish
    bool Add(const PackageEntry& entry, bool isStored)
    {
        zip_t* const archive = m_archive.get();
        zip_source_t* const source =
            archive ? zip_source_buffer(archive, entry.bytes.data(), entry.bytes.size(), 0) : nullptr;
        if (!source) {
            return FailPacking();
        }
        // A name that is no UTF-8 is written byte by byte.
        zip_int64_t index = zip_file_add(archive, entry.name.c_str(), source, ZIP_FL_ENC_UTF_8);
        if (index < 0) {
            index = zip_file_add(archive, entry.name.c_str(), source, ZIP_FL_ENC_CP437);
        }
        if (index < 0) {
            zip_source_free(source);
            return FailPacking();
        }
        const auto place = static_cast<zip_uint64_t>(index);
        const bool isDone =
            (isStored ? zip_set_file_compression(archive, place, ZIP_CM_STORE, 0)
                      : zip_set_file_compression(archive, place, ZIP_CM_DEFLATE, kDeflateLevel)) == 0 &&
            zip_file_set_dostime(archive, place, 0, kFixedDate, 0) == 0 &&
            zip_file_set_external_attributes(archive, place, 0, ZIP_OPSYS_UNIX, kRegularFileForAll) == 0;
        return isDone || FailPacking();
    }

    bool Finish()
    {
        if (!m_archive || zip_close(m_archive.get()) != 0) {
            return FailPacking();
        }
        static_cast<void>(m_archive.release());
        return true;
    }

    /// The entries that came out packed more tightly than would be read again.
    bool FindTooTight(const PackageLimits& limits, std::unordered_set<std::string>& names)
    {
        ZipError error;
        zip_source_keep(m_target.get());
        const Archive archive(zip_open_from_source(m_target.get(), ZIP_RDONLY, error.Get()));
        if (!archive) {
            zip_source_free(m_target.get());
            return Fail(m_error, "the package cannot be packed: " + error.GetText());
        }
        const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
        for (zip_int64_t i = 0; i < count; ++i) {
            zip_stat_t status{};
            if (zip_stat_index(archive.get(), static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW, &status) == 0 &&
                !IsWithinRatio(limits, status.size, status.comp_size)) {
                names.insert(status.name);
            }
        }
        return true;
    }

    bool CopyTo(AtomicFile& file)
    {
        if (zip_source_open(m_target.get()) != 0) {
            return FailPacking();
        }
        std::array<char, std::size_t{1} << 16> block;
        zip_int64_t got = 0;
        while ((got = zip_source_read(m_target.get(), block.data(), block.size())) > 0) {
            if (!file.Write({block.data(), static_cast<std::size_t>(got)})) {
                break;
            }
        }
        zip_source_close(m_target.get());
        if (got < 0) {
            return FailPacking();
        }
        if (file.Commit()) {
            return true;
        }
        // The name of the file is for the caller to tell.
        const std::string& reason = file.GetError();
        const std::size_t start = reason.rfind(": ");
        return Fail(m_error, "the file cannot be written" + (start == std::string::npos ? "" : reason.substr(start)));
    }

private:
    bool FailPacking()
    {
        return Fail(m_error, std::string("the package cannot be packed: ") +
                                 (m_archive ? zip_strerror(m_archive.get()) : "out of memory"));
    }

    std::string& m_error;
    Source m_target;
    Archive m_archive;
};

} // namespace

bool ZipPackageFormat::Read(const std::string& path, std::vector<PackageEntry>& entries, std::string& error) const
{
    error.clear();
    return Reading(m_limits, error).Read(path, entries);
}

bool ZipPackageFormat::Write(const std::string& path, std::vector<PackageEntry> entries, std::string& error) const
{
    error.clear();
    std::sort(entries.begin(), entries.end(),
              [](const PackageEntry& a, const PackageEntry& b) { return a.name < b.name; });
    if (!CheckEntries(m_limits, entries, error)) {
        return false;
    }
    // Packed a second time only where something is so uniform that Read would take it for a bomb.
    std::unordered_set<std::string> stored;
    for (;;) {
        Writing writing(error);
        for (const PackageEntry& entry : entries) {
            const bool isStored = entry.bytes.empty() || IsPacked(entry.name) || stored.count(entry.name) != 0;
            if (!writing.Add(entry, isStored)) {
                return false;
            }
        }
        const std::size_t storedBefore = stored.size();
        if (!writing.Finish() || !writing.FindTooTight(m_limits, stored)) {
            return false;
        }
        if (stored.size() == storedBefore) {
            AtomicFile file(path);
            return writing.CopyTo(file);
        }
    }
}

} // namespace luhost::io
