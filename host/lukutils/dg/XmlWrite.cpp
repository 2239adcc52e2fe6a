#include <dg/XmlElem.h>

#include <cstdint>
#include <cstring>

namespace dg
{

namespace
{

/// The entity of a character, or empty when it stands for itself.
std::string_view EntityOf(char c) noexcept
{
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    default:
        return {};
    }
}

bool IsSpecial(char c) noexcept { return c == '&' || c == '<' || c == '>' || c == '"' || c == '\''; }

using Word = std::uint64_t;

constexpr Word Repeated(char c) noexcept { return Word{0x0101010101010101} * static_cast<unsigned char>(c); }

/// Not 0 when any of the eight bytes is 0.
constexpr Word AnyZero(Word word) noexcept { return (word - Repeated('\x01')) & ~word & Repeated('\x80'); }

/// Whether any of eight characters is special. '&' and '\'' differ in one bit only, and so do '<' and '>'.
bool AnySpecial(const char* eight) noexcept
{
    Word word = 0;
    std::memcpy(&word, eight, sizeof word);
    const Word ampersandOrApostrophe = AnyZero((word | Repeated('&' ^ '\'')) ^ Repeated('\''));
    const Word lessOrGreater = AnyZero((word | Repeated('<' ^ '>')) ^ Repeated('>'));
    return (ampersandOrApostrophe | lessOrGreater | AnyZero(word ^ Repeated('"'))) != 0;
}

/// Characters at the front of a text that stand for themselves.
std::size_t PlainLength(std::string_view text) noexcept
{
    std::size_t length = 0;
    while (length + sizeof(Word) <= text.size() && !AnySpecial(text.data() + length)) {
        length += sizeof(Word);
    }
    while (length < text.size() && !IsSpecial(text[length])) {
        ++length;
    }
    return length;
}

} // namespace

void AppendXmlEncoded(std::string& out, std::string_view text)
{
    while (!text.empty()) {
        const std::size_t plain = PlainLength(text);
        out.append(text.data(), plain);
        if (plain == text.size()) {
            return;
        }
        out.append(EntityOf(text[plain]));
        text.remove_prefix(plain + 1);
    }
}

std::string EncodeXmlStr(std::string_view text)
{
    std::string encoded;
    encoded.reserve(text.size());
    AppendXmlEncoded(encoded, text);
    return encoded;
}

void WriteXmlCloseTags(const XmlElem* element, std::string& text, unsigned int depth)
{
    if (!element || !*element) {
        return;
    }
    text.append(std::size_t{2} * depth, ' ');
    text.push_back('<');
    text.append(element->GetName());
    for (XmlAttribute attribute = element->FirstAttribute(); attribute; attribute = attribute.Next()) {
        text.push_back(' ');
        text.append(attribute.GetName());
        text.append("=\"");
        AppendXmlEncoded(text, attribute.GetValue());
        text.push_back('"');
    }
    text.append("/> \n");
}

} // namespace dg
