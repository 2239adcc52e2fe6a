#include <du/RandomBits.h>
#include <du/TextHash.h>

#include <cstdint>
#include <cstring>
#include <utility>

namespace du
{

namespace
{

struct Keys {
    std::uint64_t first = RandomBits();
    std::uint64_t second = RandomBits();
};

std::uint64_t Mix(std::uint64_t a, std::uint64_t b) noexcept
{
    __extension__ using Product = unsigned __int128;
    const Product product = Product{a} * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

std::uint64_t Read8(const char* bytes) noexcept
{
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

std::uint64_t Read4(const char* bytes) noexcept
{
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

/// The two words overlap unless there are 8 or 16 bytes; the length is in the hash already.
std::pair<std::uint64_t, std::uint64_t> ReadUpTo16(const char* bytes, std::size_t size) noexcept
{
    if (size >= 8) {
        return {Read8(bytes), Read8(bytes + size - 8)};
    }
    if (size >= 4) {
        return {Read4(bytes), Read4(bytes + size - 4)};
    }
    if (size == 0) {
        return {0, 0};
    }
    const auto byte = [bytes](std::size_t i) { return std::uint64_t{static_cast<unsigned char>(bytes[i])}; };
    return {byte(0) | (byte(size / 2) << 8), byte(size - 1)};
}

} // namespace

std::size_t TextHash::operator()(std::string_view text) const noexcept
{
    static const Keys keys;
    const char* position = text.data();
    std::size_t left = text.size();
    std::uint64_t hash = keys.second ^ left;
    while (left > 16) {
        hash = Mix(Read8(position) ^ keys.first, Read8(position + 8) ^ hash);
        position += 16;
        left -= 16;
    }
    const auto [first, second] = ReadUpTo16(position, left);
    hash = Mix(first ^ keys.first, second ^ hash);
    return static_cast<std::size_t>(Mix(hash ^ keys.first, keys.second));
}

} // namespace du
