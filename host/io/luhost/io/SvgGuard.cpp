#include <luhost/io/PictureParts.h>
#include <luhost/io/SvgGuard.h>

#include <algorithm>
#include <charconv>
#include <optional>

namespace luhost::io
{

namespace
{

constexpr std::string_view kSpaces = " \t\r\n";
constexpr std::string_view kQuotes = "\"'";
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
            text = From(text, hasSubset ? text.find("]", end) : end);
            text = From(From(text, text.find('>')), 1);
        } else {
            return text;
        }
    }
}

/// Bytes of an address such as "data:image/png;base64,...". Nothing for one that is written in another way.
std::optional<std::string> DecodeAddress(std::string_view address)
{
    const std::size_t comma = address.find(',');
    const std::string_view kind = address.substr(0, comma);
    if (comma == kNowhere || kind.find_first_of("\"'()<>&") != kNowhere || kind.find("base64") == kNowhere) {
        return std::nullopt;
    }
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (std::string_view rest = address.substr(comma + 1); !rest.empty(); rest.remove_prefix(1)) {
        if (rest.starts_with("&#10;") || rest.starts_with("&#13;")) {
            rest.remove_prefix(4);
            continue;
        }
        const std::size_t digit = kDigits.find(rest.front());
        if (digit == kNowhere && kSpaces.find(rest.front()) != kNowhere) {
            continue;
        }
        if (digit == kNowhere) {
            const bool isEnd = rest.find_first_of("=\"')") == 0 || rest.starts_with("&quot;");
            return isEnd ? std::optional(std::move(bytes)) : std::nullopt;
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

bool IsHarmless(std::string_view address, const SvgDecoder::Decoders& decoders, std::string& problem)
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
    if (!(*decoder)->Decode(*bytes, reason)) {
        problem = "a picture in it cannot be shown: " + reason;
        return false;
    }
    return true;
}

/// Work for each pixel, in units of a simple primitive.
std::uint64_t WeightOf(std::string_view primitive, std::uint64_t pixels)
{
    constexpr std::uint64_t kTurbulence = 8;
    constexpr std::uint64_t kMost = 1u << 20;
    if (primitive.starts_with("Morphology")) {
        return pixels >> 10;
    }
    if (!primitive.starts_with("Turbulence")) {
        return 1;
    }
    constexpr std::string_view kOctaves = "numOctaves";
    const std::string_view element = primitive.substr(0, primitive.find('>'));
    const std::size_t place = element.find(kOctaves);
    if (place == kNowhere) {
        return kTurbulence;
    }
    const std::string_view number = SkipSpaces(Quoted(element.substr(place)));
    std::uint32_t octaves = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), octaves);
    return result.ec == std::errc() && octaves < kMost ? kTurbulence * (octaves + 1) : kMost;
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

bool SvgGuard::HasHarmlessEntities(std::string& problem) const
{
    constexpr std::size_t kMostExpandedBytes = std::size_t{1} << 24;
    if (!HasKnownEncoding()) {
        problem = "its encoding is not read";
        return false;
    }
    std::size_t longest = 0;
    const bool arePlain = ForEach(m_text, "<!ENTITY", [&](std::size_t, std::string_view rest) {
        const std::string_view value = Quoted(rest);
        const std::string_view name = rest.substr(0, rest.find_first_of(kQuotes));
        longest = std::max(longest, value.size());
        return value.find_first_of("<&%") == kNowhere && value.find("data:") == kNowhere &&
               name.find('%') == kNowhere && name.find("SYSTEM") == kNowhere && name.find("PUBLIC") == kNowhere;
    });
    const auto references = static_cast<std::size_t>(std::count(m_text.begin(), m_text.end(), '&'));
    if (!arePlain || (longest > 0 && references > kMostExpandedBytes / longest)) {
        problem = "its entities stand for more than short texts";
        return false;
    }
    return true;
}

/// Whether an address is written so that its scheme cannot be seen.
bool SvgGuard::HidesAddress() const
{
    const bool isPlain = ForEach(m_text, "href", [](std::size_t, std::string_view rest) {
        const std::string_view address = SkipSpaces(rest).starts_with('=') ? Quoted(rest) : std::string_view();
        return address.substr(0, address.find_first_of(":#")).find('&') == kNowhere;
    });
    return !isPlain || !ForEach(m_text, "url(", [](std::size_t, std::string_view rest) {
        const std::string_view address = rest.substr(0, rest.find_first_of(":#)"));
        return address.find('\\') == kNowhere && address.find("&#") == kNowhere;
    });
}

bool SvgGuard::HasHarmlessData(const SvgDecoder::Decoders& decoders, std::string& problem) const
{
    if (HidesAddress()) {
        problem = "it has an address in a form that is not read";
        return false;
    }
    for (std::size_t place = m_text.find(':'); place != kNowhere; place = m_text.find(':', place + 1)) {
        constexpr std::string_view kScheme = "data";
        if (place <= kScheme.size() || !StartsWithIgnoringCase(m_text.substr(place - kScheme.size()), kScheme)) {
            continue;
        }
        const char before = m_text[place - kScheme.size() - 1];
        const std::string_view rest = m_text.substr(place + 1);
        const bool isWord = IsLetterOrDigit(before) || before == '<' || before == '/' || before == '-' || before == '_';
        if (isWord || rest.empty() || kSpaces.find(rest.front()) != kNowhere) {
            continue;
        }
        if (!IsHarmless(rest, decoders, problem)) {
            return false;
        }
    }
    return true;
}

bool SvgGuard::HasHarmlessFilters(std::uint64_t pixels, std::string& problem) const
{
    constexpr std::uint64_t kMostWork = std::uint64_t{1} << 30;
    std::uint64_t weight = 0;
    const bool isLight = ForEach(m_text, "fe", [&](std::size_t place, std::string_view rest) {
        const bool isElement = place > 0 && (m_text[place - 1] == '<' || m_text[place - 1] == ':');
        if (isElement && !rest.empty() && rest.front() >= 'A' && rest.front() <= 'Z') {
            weight += WeightOf(rest, pixels);
        }
        return weight == 0 || pixels <= kMostWork / weight;
    });
    if (!isLight) {
        problem = "its filters would take too long";
    }
    return isLight;
}

} // namespace luhost::io
