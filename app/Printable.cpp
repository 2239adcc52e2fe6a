#include "Printable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace lusym
{

namespace
{

/// Length of the well-formed character at the front of a text, and its code; length 0 where there is none.
struct Character {
    std::size_t length = 0;
    std::uint32_t code = 0;
};

Character FirstCharacter(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[at])); };
    const std::uint32_t first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || length > text.size()) {
        return {};
    }
    std::uint32_t code = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0U) != 0x80U) {
            return {};
        }
        code = code << 6 | (byte(at) & 0x3FU);
    }
    constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kSmallest[length] || isSurrogate || code > 0x10FFFF ? Character{} : Character{length, code};
}

bool IsControl(std::uint32_t code) { return code < 0x20 || (code >= 0x7F && code <= 0x9F); }

bool TurnsDirection(std::uint32_t code)
{
    return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

void AppendEscaped(std::string& out, std::uint32_t code)
{
    if (code == '\n' || code == '\r' || code == '\t') {
        out.append(code == '\n' ? "\\n" : code == '\r' ? "\\r" : "\\t");
        return;
    }
    char escape[16];
    std::snprintf(escape, sizeof escape, code < 0x100 ? "\\x%02x" : "\\u%04x", code);
    out.append(escape);
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const Character character = FirstCharacter(text);
        if (character.length == 0) {
            out.append("\xEF\xBF\xBD");
        } else if (IsControl(character.code) || TurnsDirection(character.code)) {
            AppendEscaped(out, character.code);
        } else {
            out.append(text.substr(0, character.length));
        }
        text.remove_prefix(character.length == 0 ? 1 : character.length);
    }
    return out;
}

std::string PrintableJson(std::string_view json)
{
    std::string out;
    out.reserve(json.size());
    while (!json.empty()) {
        const Character character = FirstCharacter(json);
        // Below these JSON escapes by itself, but for the line feeds of its layout.
        if (character.code >= 0x7F && (IsControl(character.code) || TurnsDirection(character.code))) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", character.code & 0xFFFFU);
            out.append(escape);
        } else {
            out.append(json.substr(0, std::max<std::size_t>(character.length, 1)));
        }
        json.remove_prefix(std::max<std::size_t>(character.length, 1));
    }
    return out;
}

std::string Quote(std::string_view text)
{
    constexpr std::size_t kLongest = 120;
    std::size_t length = text.size();
    if (length > kLongest) {
        length = kLongest;
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
            --length;
        }
    }
    std::string out = "\"";
    out.append(Printable(text.substr(0, length)));
    return out.append(length < text.size() ? "...\"" : "\"");
}

} // namespace lusym
