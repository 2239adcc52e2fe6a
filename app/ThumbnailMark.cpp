#include "ThumbnailMark.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lusym
{

namespace
{

constexpr std::string_view kSignature("\x89PNG\r\n\x1a\n", 8);
/// The signature and the first chunk, whose size is fixed.
constexpr std::size_t kHeaderSize = 33;
/// Type and sum of the last chunk, which has no content.
constexpr std::string_view kEnd("IEND\xAE\x42\x60\x82", 8);
/// Type, keyword, and version of what is hashed.
constexpr std::string_view kMarkStart("tEXtlusym-thumbnail\0001 ", 22);
constexpr std::size_t kHashDigits = 16;
constexpr std::size_t kLengthSize = 4;

void AppendNumber(std::string& out, std::uint32_t number)
{
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        out.push_back(static_cast<char>((number >> shift) & 0xFFU));
    }
}

/// The sum that ends a chunk of a PNG file.
std::uint32_t SumOf(std::string_view bytes) noexcept
{
    std::uint32_t sum = ~std::uint32_t{0};
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~sum;
}

std::string HexOf(std::uint64_t number)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text(kHashDigits, '0');
    for (std::size_t i = kHashDigits; i-- > 0; number >>= 4U) {
        text[i] = kDigits[number & 0xFU];
    }
    return text;
}

/// A file that is open for reading, or not.
class OpenFile
{
public:
    explicit OpenFile(const std::string& path) : m_descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~OpenFile()
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int Get() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// As many bytes as there are, at most those of the buffer.
template <std::size_t size>
std::string_view ReadAt(int descriptor, off_t place, std::array<char, size>& buffer)
{
    const ssize_t count = pread(descriptor, buffer.data(), buffer.size(), place);
    return {buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

/// The hash in the first bytes of a whole PNG file.
std::optional<std::uint64_t> ReadMark(std::string_view start)
{
    start.remove_prefix(kHeaderSize + kLengthSize);
    if (!start.starts_with(kMarkStart)) {
        return std::nullopt;
    }
    start = start.substr(kMarkStart.size(), kHashDigits);
    std::uint64_t shown = 0;
    const auto [end, status] = std::from_chars(start.data(), start.data() + start.size(), shown, 16);
    return status == std::errc() && end == start.data() + kHashDigits ? std::optional(shown) : std::nullopt;
}

} // namespace

void ContentHash::Add(std::string_view bytes) noexcept
{
    constexpr std::uint64_t kPrime = 0x100000001B3U;
    for (const char byte : bytes) {
        m_hash = (m_hash ^ static_cast<unsigned char>(byte)) * kPrime;
    }
}

std::string AddThumbnailMark(std::string png, std::uint64_t shown)
{
    const std::string text = std::string(kMarkStart).append(HexOf(shown));
    std::string chunk;
    AppendNumber(chunk, static_cast<std::uint32_t>(text.size() - kLengthSize));
    chunk += text;
    AppendNumber(chunk, SumOf(text));
    return png.insert(kHeaderSize, chunk);
}

FoundThumbnail FindThumbnail(const std::string& path)
{
    using Kind = FoundThumbnail::Kind;
    struct stat status {
    };
    if (path.find('\0') != path.npos || stat(path.c_str(), &status) != 0) {
        return {};
    }
    const OpenFile file(path);
    if (!S_ISREG(status.st_mode) || file.Get() < 0) {
        return {Kind::Foreign, 0};
    }
    std::array<char, kHeaderSize + kLengthSize + kMarkStart.size() + kHashDigits> startBuffer{};
    std::array<char, kEnd.size()> endBuffer{};
    const std::string_view start = ReadAt(file.Get(), 0, startBuffer);
    const std::string_view end = ReadAt(file.Get(), status.st_size - static_cast<off_t>(kEnd.size()), endBuffer);
    const bool isPng = start.starts_with(kSignature);
    if (start.empty() || (isPng && (start.size() < startBuffer.size() || end != kEnd))) {
        return {};
    }
    const std::optional<std::uint64_t> shown = isPng ? ReadMark(start) : std::nullopt;
    return shown ? FoundThumbnail{Kind::Marked, *shown} : FoundThumbnail{Kind::Foreign, 0};
}

} // namespace lusym
