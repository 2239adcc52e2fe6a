#include <du/Utf8.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace du
{

namespace
{

constexpr char32_t kReplacement = 0xFFFD;
constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

/// What the byte after a lead byte may be, and how many bytes follow in all. The narrowed bounds keep out long forms of
/// short characters, surrogates, and everything beyond U+10FFFF.
struct Lead {
    unsigned following;
    unsigned char low;
    unsigned char high;
};

constexpr Lead LeadOf(unsigned char byte) noexcept
{
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {1, 0x80, 0xBF};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {2, static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(byte == 0xED ? 0x9F : 0xBF)};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {3, static_cast<unsigned char>(byte == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0, 0, 0};
}

/// Decodes one character that is not ASCII, or skips the longest beginning of one that breaks off.
char32_t DecodeBeyondAscii(const char*& position, const char* end) noexcept
{
    const auto first = static_cast<unsigned char>(*position++);
    Lead lead = LeadOf(first);
    if (lead.following == 0) {
        return kReplacement;
    }
    char32_t character = first & (0x3FU >> lead.following);
    for (; lead.following > 0; --lead.following) {
        const unsigned char next = position == end ? 0 : static_cast<unsigned char>(*position);
        if (next < lead.low || next > lead.high) {
            return kReplacement;
        }
        character = (character << 6) | (next & 0x3FU);
        lead.low = 0x80;
        lead.high = 0xBF;
        ++position;
    }
    return character;
}

/// Bytes before the first one that is not ASCII; the mask has the upper bit of each such byte.
std::ptrdiff_t CountAsciiBefore(std::uint64_t mask) noexcept
{
    return (std::endian::native == std::endian::little ? std::countr_zero(mask) : std::countl_zero(mask)) / 8;
}

/// A fixed number of bytes at once, for which the compiler has instructions.
template <std::ptrdiff_t Count>
void Widen(const char* __restrict bytes, wchar_t* __restrict out) noexcept
{
    for (std::ptrdiff_t i = 0; i < Count; ++i) {
        out[i] = static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]));
    }
}

/// Always writes whole strides, also what it does not keep: there is room, since out is never ahead of position.
void CopyAscii(const char*& position, const char* end, wchar_t*& out) noexcept
{
    constexpr std::uint64_t kUpperBits = 0x8080808080808080U;
    constexpr std::ptrdiff_t kStride = 8;
    while (end - position >= 2 * kStride) {
        std::uint64_t words[2];
        std::memcpy(words, position, sizeof(words));
        if (((words[0] | words[1]) & kUpperBits) != 0) {
            break;
        }
        Widen<2 * kStride>(position, out);
        position += 2 * kStride;
        out += 2 * kStride;
    }
    while (end - position >= kStride) {
        std::uint64_t word;
        std::memcpy(&word, position, sizeof(word));
        Widen<kStride>(position, out);
        const std::uint64_t mask = word & kUpperBits;
        const std::ptrdiff_t count = mask == 0 ? kStride : CountAsciiBefore(mask);
        position += count;
        out += count;
        if (mask != 0) {
            return;
        }
    }
    while (position != end && static_cast<unsigned char>(*position) < 0x80) {
        *out++ = static_cast<wchar_t>(*position++);
    }
}

void PutWide(char32_t character, wchar_t*& out) noexcept
{
    if (kWideIsUtf16 && character > 0xFFFF) {
        *out++ = static_cast<wchar_t>(0xD7C0 + (character >> 10));
        *out++ = static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
    } else {
        *out++ = static_cast<wchar_t>(character);
    }
}

constexpr bool IsSurrogate(char32_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDFFF; }

/// Reads one character; a lone surrogate or a number beyond Unicode gives the replacement.
char32_t TakeWide(std::wstring_view text, std::size_t& i) noexcept
{
    const auto unit = static_cast<char32_t>(text[i++]);
    if (kWideIsUtf16 && unit >= 0xD800 && unit <= 0xDBFF && i < text.size()) {
        const auto next = static_cast<char32_t>(text[i]);
        if (next >= 0xDC00 && next <= 0xDFFF) {
            ++i;
            return 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00);
        }
    }
    return IsSurrogate(unit) || unit > 0x10FFFF ? kReplacement : unit;
}

void AppendUtf8(std::string& out, char32_t character)
{
    if (character < 0x80) {
        out += static_cast<char>(character);
        return;
    }
    const auto append = [&out](char32_t byte) { out += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (character < 0x800) {
        append(0xC0 | (character >> 6));
    } else {
        if (character < 0x10000) {
            append(0xE0 | (character >> 12));
        } else {
            append(0xF0 | (character >> 18));
            append(0x80 | ((character >> 12) & 0x3F));
        }
        append(0x80 | ((character >> 6) & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

} // namespace

void AppendUtf8AsWide(std::wstring& out, std::string_view text)
{
    // No character has more wide units than bytes, so one resize makes room for all.
    const std::size_t oldSize = out.size();
    out.resize(oldSize + text.size());
    wchar_t* target = out.data() + oldSize;
    const char* position = text.data();
    const char* const end = position + text.size();
    for (CopyAscii(position, end, target); position != end; CopyAscii(position, end, target)) {
        PutWide(DecodeBeyondAscii(position, end), target);
    }
    out.resize(static_cast<std::size_t>(target - out.data()));
}

std::wstring Utf8ToWideStr(std::string_view text)
{
    std::wstring wide;
    AppendUtf8AsWide(wide, text);
    return wide;
}

std::string WideStrToUtf8(std::wstring_view text)
{
    std::string utf8;
    utf8.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        AppendUtf8(utf8, TakeWide(text, i));
    }
    return utf8;
}

} // namespace du
