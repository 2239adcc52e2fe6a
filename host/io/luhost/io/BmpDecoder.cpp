#include <luhost/io/BmpDecoder.h>
#include <luhost/io/PictureParts.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace luhost::io
{

namespace
{

constexpr std::size_t kFileHeader = 14;
constexpr std::uint32_t kOldHeader = 12;

enum Compression : std::uint32_t { Plain = 0, RunLength8 = 1, RunLength4 = 2, BitFields = 3, AlphaBitFields = 6 };

using Pixel = std::array<std::uint8_t, 4>;

/// Where one colour is in the bits of a pixel.
struct Channel {
    std::uint32_t mask = 0;

    std::uint8_t Of(std::uint32_t pixel, std::uint8_t without) const
    {
        if (mask == 0) {
            return without;
        }
        const int shift = std::countr_zero(mask);
        const std::uint64_t most = mask >> shift;
        const std::uint64_t value = (pixel & mask) >> shift;
        return static_cast<std::uint8_t>(most == 255 ? value : (value * 255 + most / 2) / most);
    }
};

class Reading
{
public:
    explicit Reading(std::string_view bytes) : m_bytes(bytes), m_reader(bytes, false) {}

    du::SmartPtr<luk::ImageData> Read(const PictureLimits& limits, std::string& problem);

private:
    bool ReadHeader(std::string& problem);
    void ReadMasks();
    void ReadPalette();
    bool IsRunLength() const { return m_compression == RunLength8 || m_compression == RunLength4; }
    std::size_t RowBytes() const { return static_cast<std::size_t>((m_width * m_bits + 31) / 32 * 4); }

    void ReadRows();
    Pixel PixelAt(std::size_t row, std::size_t x) const;
    bool ReadRuns();
    bool ReadEscape(std::size_t& place, bool& isDone);
    bool ReadLiteral(std::size_t& place, std::size_t count);
    unsigned IndexIn(std::size_t place, std::size_t number) const;
    void PutIndex(unsigned index);
    std::uint8_t* PlaceOf(std::size_t x, std::size_t row);

    std::string_view m_bytes;
    ByteReader m_reader;
    std::uint32_t m_headerSize = 0;
    std::uint64_t m_width = 0;
    std::uint64_t m_height = 0;
    bool m_isTopDown = false;
    unsigned m_bits = 0;
    std::uint32_t m_compression = Plain;
    std::array<Channel, 4> m_channels{};
    std::array<Pixel, 256> m_palette{};
    std::size_t m_start = 0; ///< of the pixels
    Pixels m_pixels;
    std::size_t m_x = 0;   ///< where a run goes on
    std::size_t m_row = 0; ///< as stored, so mostly from the bottom
};

bool Reading::ReadHeader(std::string& problem)
{
    m_start = m_reader.At32(10);
    m_headerSize = m_reader.At32(kFileHeader);
    if (m_headerSize == kOldHeader) {
        m_width = m_reader.At16(18);
        m_height = m_reader.At16(20);
        m_bits = m_reader.At16(24);
    } else {
        const auto height = static_cast<std::int32_t>(m_reader.At32(22));
        const auto width = static_cast<std::int32_t>(m_reader.At32(18));
        m_width = static_cast<std::uint64_t>(std::max(width, 0));
        m_height = static_cast<std::uint64_t>(height < 0 ? -std::int64_t{height} : height);
        m_isTopDown = height < 0;
        m_bits = m_reader.At16(28);
        m_compression = m_reader.At32(30);
    }
    const bool hasKnownBits = m_bits == 1 || m_bits == 4 || m_bits == 8 || m_bits == 16 || m_bits == 24 || m_bits == 32;
    const bool hasFields = m_compression == BitFields || m_compression == AlphaBitFields;
    const bool fits = m_compression == Plain || (m_compression == RunLength8 && m_bits == 8) ||
                      (m_compression == RunLength4 && m_bits == 4) || (hasFields && (m_bits == 16 || m_bits == 32));
    if (m_bytes.size() < kFileHeader + m_headerSize) {
        problem = kCutOff;
    } else if (!hasKnownBits || !fits) {
        problem = "it has " + std::to_string(m_bits) + " bits a pixel in a code that is not known, " +
                  std::to_string(m_compression);
    }
    return problem.empty();
}

void Reading::ReadMasks()
{
    constexpr std::uint32_t kHeaderWithMasks = 52;
    constexpr std::uint32_t kHeaderWithAlphaMask = 56;
    constexpr std::size_t kMasks = kFileHeader + 40;
    if (m_compression == Plain) {
        constexpr std::array<Channel, 4> kOf16{{{0x7C00}, {0x03E0}, {0x001F}, {0}}};
        constexpr std::array<Channel, 4> kOf32{{{0xFF0000}, {0xFF00}, {0xFF}, {0}}};
        m_channels = m_bits == 16 ? kOf16 : kOf32;
        return;
    }
    const bool hasAlpha = m_compression == AlphaBitFields || m_headerSize >= kHeaderWithAlphaMask;
    for (std::size_t channel = 0; channel < (hasAlpha ? 4u : 3u); ++channel) {
        m_channels[channel].mask = m_reader.At32(kMasks + channel * 4);
    }
    if (m_headerSize < kHeaderWithMasks) {
        m_headerSize += hasAlpha ? 16 : 12;
    }
}

void Reading::ReadPalette()
{
    const bool isOld = m_headerSize == kOldHeader;
    const std::size_t entryBytes = isOld ? 3 : 4;
    const std::size_t first = kFileHeader + m_headerSize;
    const std::size_t most = std::size_t{1} << m_bits;
    const std::size_t said = isOld ? 0 : m_reader.At32(46);
    const std::size_t room = m_start > first ? (m_start - first) / entryBytes : 0;
    const std::size_t count = std::min({said == 0 ? most : said, most, room});
    m_palette.fill({0, 0, 0, 255});
    for (std::size_t index = 0; index < count; ++index) {
        const std::size_t entry = first + index * entryBytes;
        m_palette[index] = {m_reader.At8(entry + 2), m_reader.At8(entry + 1), m_reader.At8(entry), 255};
    }
}

du::SmartPtr<luk::ImageData> Reading::Read(const PictureLimits& limits, std::string& problem)
{
    if (!ReadHeader(problem) || !PictureBudget(limits).Take(m_width, m_height, problem)) {
        return nullptr;
    }
    if (m_bits == 16 || m_bits == 32) {
        ReadMasks();
    } else if (m_bits <= 8) {
        ReadPalette();
    }
    const std::uint64_t end = m_start + (IsRunLength() ? 2 : RowBytes() * m_height);
    if (end > m_bytes.size()) {
        problem = kCutOff;
        return nullptr;
    }
    m_pixels = MakePixels(m_width, m_height);
    if (!IsRunLength()) {
        ReadRows();
    } else if (!ReadRuns()) {
        problem = kCutOff;
        return nullptr;
    }
    return MakePicture({MakeFrame(m_width, m_height, std::move(m_pixels))});
}

std::uint8_t* Reading::PlaceOf(std::size_t x, std::size_t row)
{
    const std::size_t y = m_isTopDown ? row : static_cast<std::size_t>(m_height) - 1 - row;
    return m_pixels.data() + (y * static_cast<std::size_t>(m_width) + x) * 4;
}

void Reading::ReadRows()
{
    for (std::size_t row = 0; row < m_height; ++row) {
        for (std::size_t x = 0; x < m_width; ++x) {
            const Pixel pixel = PixelAt(m_start + row * RowBytes(), x);
            std::memcpy(PlaceOf(x, row), pixel.data(), pixel.size());
        }
    }
}

Pixel Reading::PixelAt(std::size_t row, std::size_t x) const
{
    if (m_bits <= 8) {
        const std::size_t bit = x * m_bits;
        const unsigned shift = 8 - m_bits - static_cast<unsigned>(bit % 8);
        const unsigned most = (1u << m_bits) - 1;
        return m_palette[(static_cast<unsigned>(m_reader.At8(row + bit / 8)) >> shift) & most];
    }
    if (m_bits == 24) {
        const std::size_t place = row + x * 3;
        return {m_reader.At8(place + 2), m_reader.At8(place + 1), m_reader.At8(place), 255};
    }
    const std::uint32_t pixel = m_bits == 16 ? m_reader.At16(row + x * 2) : m_reader.At32(row + x * 4);
    return {m_channels[0].Of(pixel, 0), m_channels[1].Of(pixel, 0), m_channels[2].Of(pixel, 0),
            m_channels[3].Of(pixel, 255)};
}

/// What the runs leave out stays transparent. @return false when they end before the picture does
bool Reading::ReadRuns()
{
    std::size_t place = m_start;
    bool isDone = false;
    while (!isDone && m_row < m_height) {
        if (place + 2 > m_bytes.size()) {
            return false;
        }
        const std::size_t count = m_reader.At8(place);
        if (count == 0) {
            if (!ReadEscape(place, isDone)) {
                return false;
            }
            continue;
        }
        for (std::size_t number = 0; number < count; ++number) {
            PutIndex(IndexIn(place + 1, number % 2));
        }
        place += 2;
    }
    return true;
}

bool Reading::ReadEscape(std::size_t& place, bool& isDone)
{
    enum : std::size_t { EndOfRow = 0, EndOfPicture = 1, Skip = 2 };
    const std::size_t kind = m_reader.At8(place + 1);
    place += 2;
    if (kind > Skip) {
        return ReadLiteral(place, kind);
    }
    if (kind == Skip) {
        m_x += m_reader.At8(place);
        m_row += m_reader.At8(place + 1);
        place += 2;
        return place <= m_bytes.size();
    }
    isDone = kind == EndOfPicture;
    m_x = 0;
    ++m_row;
    return true;
}

bool Reading::ReadLiteral(std::size_t& place, std::size_t count)
{
    const std::size_t bytes = m_compression == RunLength8 ? count : (count + 1) / 2;
    if (place + bytes > m_bytes.size()) {
        return false;
    }
    for (std::size_t number = 0; number < count; ++number) {
        PutIndex(m_compression == RunLength8 ? IndexIn(place + number, 0) : IndexIn(place + number / 2, number % 2));
    }
    place += (bytes + 1) / 2 * 2;
    return true;
}

/// @param number which of the indices in the byte, of which there is one with 8 bits and are two with 4
unsigned Reading::IndexIn(std::size_t place, std::size_t number) const
{
    const unsigned byte = m_reader.At8(place);
    if (m_compression == RunLength8) {
        return byte;
    }
    return number == 0 ? byte >> 4 : byte & 15u;
}

void Reading::PutIndex(unsigned index)
{
    if (m_x < m_width && m_row < m_height) {
        std::memcpy(PlaceOf(m_x, m_row), m_palette[index].data(), 4);
    }
    ++m_x;
}

} // namespace

bool BmpDecoder::Recognises(std::string_view bytes) const
{
    constexpr std::array<std::uint32_t, 7> kHeaderSizes{kOldHeader, 40, 52, 56, 64, 108, 124};
    const std::uint32_t size = ByteReader(bytes, false).At32(kFileHeader);
    return bytes.starts_with("BM") && std::find(kHeaderSizes.begin(), kHeaderSizes.end(), size) != kHeaderSizes.end();
}

du::SmartPtr<luk::ImageData> BmpDecoder::Decode(std::string_view bytes, std::string& problem) const
{
    return Reading(bytes).Read(m_limits, problem);
}

} // namespace luhost::io
