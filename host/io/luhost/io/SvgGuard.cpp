#include <luhost/io/PictureParts.h>
#include <luhost/io/SvgGuard.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace luhost::io
{

namespace
{

constexpr std::string_view kSpaces = " \t\r\n";
constexpr std::string_view kLineSpaces = "\t\r\n";
constexpr std::string_view kQuotes = "\"'";
constexpr std::string_view kAddressEnds = "=\"')";
constexpr std::size_t kNowhere = std::string_view::npos;

char Lower(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; }

bool IsLetterOrDigit(char letter)
{
    return (Lower(letter) >= 'a' && Lower(letter) <= 'z') || (letter >= '0' && letter <= '9');
}

bool StartsWithIgnoringCase(std::string_view text, std::string_view lower)
{
    return text.size() >= lower.size() &&
           std::equal(lower.begin(), lower.end(), text.begin(), [](char a, char b) { return a == Lower(b); });
}

/// What stands after the place: nothing before its end is passed over.
std::string_view From(std::string_view text, std::size_t place) { return text.substr(std::min(place, text.size())); }

std::string_view Trimmed(std::string_view text)
{
    text = From(text, text.find_first_not_of(kSpaces));
    return text.substr(0, text.find_last_not_of(kSpaces) + 1);
}

std::string_view SkipSpaces(std::string_view text) { return From(text, text.find_first_not_of(kSpaces)); }

/// The text between the first two quotes of a kind.
std::string_view Quoted(std::string_view text)
{
    const std::size_t begin = text.find_first_of(kQuotes);
    if (begin == kNowhere) {
        return {};
    }
    return text.substr(begin + 1, text.find(text[begin], begin + 1) - begin - 1);
}

/// Calls for the rest of the text behind each occurrence of the word, until the answer is false.
template <class Visit>
bool ForEach(std::string_view text, std::string_view word, const Visit& visit)
{
    for (std::size_t place = text.find(word); place != kNowhere; place = text.find(word, place + word.size())) {
        if (!visit(place, text.substr(place + word.size()))) {
            return false;
        }
    }
    return true;
}

/// What comes before the first element, apart from declarations, comments and the document type.
std::string_view SkipProlog(std::string_view text)
{
    if (text.starts_with("\xef\xbb\xbf")) {
        text.remove_prefix(3);
    }
    for (;;) {
        text = SkipSpaces(text);
        if (text.starts_with("<!--")) {
            text = From(From(text, text.find("-->")), 3);
        } else if (text.starts_with("<?")) {
            text = From(From(text, text.find("?>")), 2);
        } else if (text.starts_with("<!DOCTYPE")) {
            const std::size_t end = text.find_first_of("[>");
            const bool hasSubset = end != kNowhere && text[end] == '[';
            text = From(text, hasSubset ? text.find(']', end) : end);
            text = From(From(text, text.find('>')), 1);
        } else {
            return text;
        }
    }
}

/// Bytes of an address such as "data:image/png;base64,...". Nothing for one that is written in another way.
std::optional<std::string> DecodeAddress(std::string_view address)
{
    const std::size_t comma = address.find_first_of(",:\"'()<>&");
    const std::string_view kind = address.substr(0, comma);
    if (comma == kNowhere || address[comma] != ',' || kind.find("base64") == kNowhere) {
        return std::nullopt;
    }
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char letter : address.substr(comma + 1)) {
        const std::size_t digit = kDigits.find(letter);
        if (digit == kNowhere && kSpaces.find(letter) != kNowhere) {
            continue;
        }
        if (digit == kNowhere) {
            return kAddressEnds.find(letter) != kNowhere ? std::optional(std::move(bytes)) : std::nullopt;
        }
        bits = (bits << 6) | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> count) & 0xFF);
        }
    }
    return std::nullopt;
}

bool IsFont(std::string_view bytes)
{
    constexpr std::string_view kBeginnings[] = {"wOFF", "wOF2", "OTTO", {"\0\1\0\0", 4}};
    return std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                       [&](std::string_view beginning) { return bytes.starts_with(beginning); });
}

/// @param pixels counts those of the picture
bool IsHarmless(std::string_view address, const SvgDecoder::Decoders& decoders, std::uint64_t& pixels,
                std::string& problem)
{
    const std::optional<std::string> bytes = DecodeAddress(address);
    const auto decoder = std::find_if(decoders.begin(), decoders.end(),
                                      [&](const auto& candidate) { return bytes && candidate->Recognises(*bytes); });
    if (decoder == decoders.end()) {
        const bool isFont = bytes && IsFont(*bytes) && !StartsWithIgnoringCase(address, "image");
        problem = isFont ? "" : "it embeds what is neither a picture nor a font";
        return isFont;
    }
    std::string reason;
    const du::SmartPtr<luk::ImageData> picture = (*decoder)->Decode(*bytes, reason);
    if (!picture) {
        problem = "a picture in it cannot be shown: " + reason;
        return false;
    }
    const luk::ImageData::Frame& frame = picture->GetFrame(0);
    pixels += static_cast<std::uint64_t>(frame.width) * static_cast<std::uint64_t>(frame.height);
    return true;
}

int HexDigit(char letter)
{
    const std::size_t digit = std::string_view("0123456789abcdef").find(Lower(letter));
    return digit == kNowhere ? -1 : static_cast<int>(digit);
}

/// The letter of a code; '?' for any that no address of an own kind of data is spelled with.
char LetterOf(std::uint32_t code) { return code > 0 && code < 0x80 ? static_cast<char>(code) : '?'; }

/// The text as it is understood: with what references stand for, and without the escapes of style sheets.
class Understood
{
public:
    using Entities = std::unordered_map<std::string_view, std::string_view>;

    static std::string Of(std::string_view text, const Entities& entities)
    {
        return WithoutEscapes(WithoutReferences(text, entities));
    }

private:
    static std::string WithoutReferences(std::string_view text, const Entities& entities)
    {
        constexpr std::size_t kLongestName = 256;
        std::string plain;
        plain.reserve(text.size());
        while (!text.empty()) {
            const std::size_t place = std::min(text.find('&'), text.size());
            plain.append(text.substr(0, place));
            text.remove_prefix(place);
            const std::size_t end = text.substr(0, kLongestName).find(';');
            if (end == kNowhere || !AppendReferred(plain, text.substr(1, end - 1), entities)) {
                plain.append(text.substr(0, 1));
                text = From(text, 1);
            } else {
                text.remove_prefix(end + 1);
            }
        }
        return plain;
    }

    static bool AppendReferred(std::string& plain, std::string_view name, const Entities& entities)
    {
        if (const auto entity = entities.find(name); entity != entities.end()) {
            plain.append(entity->second);
            return true;
        }
        constexpr std::pair<std::string_view, char> kKnown[] = {
            {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
        const auto* const known = std::find_if(std::begin(kKnown), std::end(kKnown),
                                               [&](const auto& candidate) { return candidate.first == name; });
        if (known != std::end(kKnown)) {
            plain += known->second;
            return true;
        }
        const bool isHex = name.starts_with("#x");
        const std::string_view digits = From(name, isHex ? 2 : 1);
        std::uint32_t code = 0;
        const auto [end, status] = std::from_chars(digits.data(), digits.data() + digits.size(), code, isHex ? 16 : 10);
        if (!name.starts_with('#') || status != std::errc() || end != digits.data() + digits.size()) {
            return false;
        }
        plain += LetterOf(code);
        return true;
    }

    static std::string WithoutEscapes(std::string_view text)
    {
        constexpr std::size_t kMostDigits = 6;
        std::string plain;
        plain.reserve(text.size());
        for (std::size_t place = 0; place < text.size(); ++place) {
            if (text[place] != '\\' || place + 1 == text.size()) {
                plain += text[place];
                continue;
            }
            std::uint32_t code = 0;
            std::size_t digits = 0;
            while (digits < kMostDigits && place + 1 < text.size() && HexDigit(text[place + 1]) >= 0) {
                code = code * 16 + static_cast<std::uint32_t>(HexDigit(text[++place]));
                ++digits;
            }
            if (digits == 0) {
                plain += text[++place];
                continue;
            }
            plain += LetterOf(code);
            if (place + 1 < text.size() && kSpaces.find(text[place + 1]) != kNowhere) {
                ++place;
            }
        }
        return plain;
    }
};

/// Behind a comment, a section of letters or an instruction at the front of a text; the text itself where there is none.
std::string_view SkipUnread(std::string_view text)
{
    constexpr std::pair<std::string_view, std::string_view> kKinds[] = {
        {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
    for (const auto& [begin, end] : kKinds) {
        if (text.starts_with(begin)) {
            return From(text, text.find(end, begin.size()));
        }
    }
    return text;
}

/// Whether a tag, without its '<', ends with its element.
bool IsEmptyTag(std::string_view tag)
{
    std::size_t end = tag.find_first_of("\"'>");
    while (end != kNowhere && tag[end] != '>') {
        end = tag.find(tag[end], end + 1);
        end = end == kNowhere ? end : tag.find_first_of("\"'>", end + 1);
    }
    return end != kNowhere && end > 0 && tag[end - 1] == '/';
}

/// @param tag without its '<' or "</"
bool IsTextTag(std::string_view tag)
{
    constexpr std::size_t kLongest = 256;
    const std::string_view start = tag.substr(0, kLongest);
    const std::string_view name = start.substr(0, start.find_first_of(" \t\r\n/>"));
    return name == "text" || name.ends_with(":text");
}

/// Where a scheme that ends at this colon begins; line ends and tabs inside do not count. @return kNowhere for another
std::size_t BeginningOfData(std::string_view text, std::size_t colon)
{
    constexpr std::string_view kBackwards = "atad";
    std::size_t place = colon;
    for (const char letter : kBackwards) {
        do {
            if (place == 0) {
                return kNowhere;
            }
            --place;
        } while (kLineSpaces.find(text[place]) != kNowhere);
        if (Lower(text[place]) != letter) {
            return kNowhere;
        }
    }
    return place;
}

constexpr std::uint64_t kMostFilterWork = std::uint64_t{1} << 30;

/// The library breaks down over more than 400 numbers, of which each takes two letters.
std::uint64_t WeightOfMatrix(std::string_view element)
{
    constexpr std::size_t kMostLetters = 800;
    constexpr std::size_t kLettersForEach = 8;
    const bool isKnown = element.size() <= kMostLetters && element.find('&') == kNowhere;
    return isKnown ? 1 + element.size() / kLettersForEach : kMostFilterWork + 1;
}

std::uint64_t WeightOfTurbulence(std::string_view element)
{
    constexpr std::uint64_t kWeight = 8;
    constexpr std::uint64_t kMost = 1u << 20;
    constexpr std::string_view kOctaves = "numOctaves";
    const std::size_t place = element.find(kOctaves);
    if (place == kNowhere) {
        return kWeight;
    }
    const std::string_view number = SkipSpaces(Quoted(element.substr(place)));
    std::uint32_t octaves = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), octaves);
    return result.ec == std::errc() && octaves < kMost ? kWeight * (octaves + 1) : kMost;
}

/// Work for each pixel, in units of a simple primitive.
std::uint64_t WeightOf(std::string_view primitive, std::uint64_t pixels)
{
    const std::string_view element = primitive.substr(0, primitive.find('<'));
    if (element.starts_with("Morphology")) {
        return pixels >> 10;
    }
    if (element.starts_with("ConvolveMatrix")) {
        return WeightOfMatrix(element);
    }
    return element.starts_with("Turbulence") ? WeightOfTurbulence(element) : 1;
}

} // namespace

bool SvgGuard::IsSvg() const
{
    std::string_view element = SkipProlog(m_text);
    if (!element.starts_with('<')) {
        return false;
    }
    const std::string_view name = element.substr(1, element.find_first_of(" \t\r\n/>") - 1);
    return name == "svg" || name.ends_with(":svg");
}

bool SvgGuard::HasKnownEncoding() const
{
    const std::string_view text = m_text.substr(m_text.starts_with("\xef\xbb\xbf") ? 3 : 0);
    const std::string_view declaration = text.starts_with("<?xml") ? text.substr(0, text.find("?>")) : "";
    const std::size_t place = declaration.find("encoding");
    const std::string_view name = place == kNowhere ? "utf-8" : Quoted(declaration.substr(place));
    constexpr std::string_view kKnown[] = {"utf-8", "us-ascii", "ascii", "iso-8859-", "windows-125"};
    return std::any_of(std::begin(kKnown), std::end(kKnown),
                       [&](std::string_view known) { return StartsWithIgnoringCase(name, known); });
}

bool SvgGuard::HasHarmlessEntities(std::string& problem)
{
    constexpr std::size_t kMostExpandedBytes = std::size_t{1} << 24;
    if (!HasKnownEncoding()) {
        problem = "its encoding is not read";
        return false;
    }
    const bool arePlain = ForEach(m_text, "<!ENTITY", [&](std::size_t, std::string_view rest) {
        // Either ends before the next declaration begins, so that the text is passed over once.
        const std::string_view name = rest.substr(0, rest.find_first_of("\"'<"));
        const std::string_view quoted = From(rest, name.size());
        const std::size_t end =
            quoted.empty() ? kNowhere : quoted.find_first_of(std::string{quoted[0], '<', '&', '%'}, 1);
        if (end == kNowhere || quoted[0] == '<' || quoted[end] != quoted[0]) {
            return false;
        }
        const std::string_view value = quoted.substr(1, end - 1);
        m_longestEntity = std::max(m_longestEntity, value.size());
        const auto [known, isNew] = m_entities.try_emplace(Trimmed(name), value);
        return (isNew || known->second == value) && value.find("data:") == kNowhere && name.find('%') == kNowhere &&
               name.find("SYSTEM") == kNowhere && name.find("PUBLIC") == kNowhere;
    });
    const auto references = static_cast<std::size_t>(std::count(m_text.begin(), m_text.end(), '&'));
    if (!arePlain || (m_longestEntity > 0 && references > kMostExpandedBytes / m_longestEntity)) {
        problem = "its entities stand for more than short texts";
        return false;
    }
    return true;
}

bool SvgGuard::HasHarmlessTexts(std::string& problem) const
{
    constexpr std::size_t kMostBytes = std::size_t{1} << 16;
    bool isInside = false;
    std::size_t length = 0;
    for (std::string_view rest = m_text; !rest.empty() && length <= kMostBytes;) {
        const std::string_view behind = SkipUnread(rest);
        const std::size_t step = behind.size() < rest.size() ? rest.size() - behind.size() : 1;
        const std::string_view piece = rest.substr(0, std::min(rest.find('<', step), rest.size()));
        const bool isClosing = rest.starts_with("</");
        if (rest.starts_with('<') && IsTextTag(rest.substr(isClosing ? 2 : 1))) {
            isInside = !isClosing && (isInside || !IsEmptyTag(rest.substr(1)));
        }
        const auto references = static_cast<std::size_t>(std::count(piece.begin(), piece.end(), '&'));
        length = isInside ? length + piece.size() + references * m_longestEntity : 0;
        rest.remove_prefix(piece.size());
    }
    if (length > kMostBytes) {
        problem = "a text in it is longer than " + std::to_string(kMostBytes) + " bytes";
    }
    return length <= kMostBytes;
}

bool SvgGuard::HasHarmlessData(const SvgDecoder::Decoders& decoders, std::uint64_t maximumPixels,
                               std::string& problem) const
{
    const bool isPlain = m_text.find_first_of("&\\") == kNowhere;
    const std::string understood = isPlain ? std::string() : Understood::Of(m_text, m_entities);
    const std::string_view text = isPlain ? m_text : understood;
    std::uint64_t pixels = 0;
    for (std::size_t place = text.find(':'); place != kNowhere; place = text.find(':', place + 1)) {
        const std::size_t beginning = BeginningOfData(text, place);
        if (beginning == kNowhere || beginning == 0) {
            continue;
        }
        const char before = text[beginning - 1];
        const std::string_view rest = text.substr(place + 1);
        const bool isWord = IsLetterOrDigit(before) || before == '<' || before == '/' || before == '-' || before == '_';
        if (isWord || rest.empty() || kSpaces.find(rest.front()) != kNowhere) {
            continue;
        }
        if (!IsHarmless(rest, decoders, pixels, problem)) {
            return false;
        }
        if (pixels > maximumPixels) {
            problem = "the pictures in it have more than " + std::to_string(maximumPixels) + " pixels in all";
            return false;
        }
    }
    return true;
}

bool SvgGuard::HasHarmlessFilters(std::uint64_t pixels, std::string& problem) const
{
    std::uint64_t weight = 0;
    const bool isLight = ForEach(m_text, "fe", [&](std::size_t place, std::string_view rest) {
        const bool isElement = place > 0 && (m_text[place - 1] == '<' || m_text[place - 1] == ':');
        if (isElement && !rest.empty() && rest.front() >= 'A' && rest.front() <= 'Z') {
            weight += WeightOf(rest, pixels);
        }
        return weight == 0 || pixels <= kMostFilterWork / weight;
    });
    if (!isLight) {
        problem = "its filters would take too long";
    }
    return isLight;
}

} // namespace luhost::io
