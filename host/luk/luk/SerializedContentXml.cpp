#include <dg/FormatNumber.h>
#include <dg/XmlElem.h>
#include <luk/KnownSymbols.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <system_error>

namespace luk
{

namespace
{

using Property = SerializedContentElement::Property;
using Tell = SerializedContentXml::Tell;

constexpr std::string_view kElement = "element";
constexpr std::string_view kName = "name";
constexpr std::string_view kKey = "key";
constexpr std::string_view kValue = "value";
constexpr std::string_view kBase64Suffix = "Base64";

/// Names of the types, in the order of the alternatives of Value.
constexpr std::array<std::string_view, std::variant_size_v<SerializedContentElement::Value>> kTypes = {
    "symbol", "bool", "int32", "float", "uint64", "point", "vector", "quaternion", "color", "location"};

/// Without a call where lengths differ, as they mostly do.
bool EqualTexts(std::string_view a, std::string_view b) noexcept
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size()) == 0);
}

/// The types by the first letter of their names, which all differ.
constexpr std::array<std::uint8_t, 128> MakeTypesByLetter() noexcept
{
    std::array<std::uint8_t, 128> types{};
    types.fill(kTypes.size());
    for (std::size_t type = 0; type < kTypes.size(); ++type) {
        types[static_cast<unsigned char>(kTypes[type][0])] = static_cast<std::uint8_t>(type);
    }
    return types;
}

/// The number of a type by its name; the number of types when it is none.
std::size_t TypeOf(std::string_view name) noexcept
{
    static constexpr std::array<std::uint8_t, 128> s_types = MakeTypesByLetter();
    const auto letter = static_cast<unsigned char>(name.empty() ? '\0' : name[0]);
    const std::size_t type = letter < s_types.size() ? s_types[letter] : kTypes.size();
    return type < kTypes.size() && EqualTexts(kTypes[type], name) ? type : kTypes.size();
}

/// Comparison with a word whose length the compiler knows.
template <const std::string_view& Word>
bool Is(std::string_view text) noexcept
{
    return text.size() == Word.size() && std::memcmp(text.data(), Word.data(), Word.size()) == 0;
}

// Texts

/// Bytes of the character at the front of a text that XML can hold; 0 when it is none.
std::size_t LengthOfXmlCharacter(std::string_view text) noexcept
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    if (first < 0x80) {
        const bool isControl = first < 0x20 && first != '\t' && first != '\n' && first != '\r';
        return isControl || first == 0x7F ? 0 : 1;
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) {
        return 0;
    }
    std::uint32_t code = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) {
            return 0;
        }
        code = code << 6U | (byte(i) & 0x3FU);
    }
    constexpr std::array<std::uint32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kSmallest[length] || code > 0x10FFFF || isSurrogate || (code & 0xFFFEU) == 0xFFFE ? 0 : length;
}

bool IsXmlText(std::string_view text) noexcept
{
    while (!text.empty()) {
        const std::size_t length = LengthOfXmlCharacter(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

/// In one go, since most of them are short.
void AppendAll(std::string& out, std::initializer_list<std::string_view> texts)
{
    std::size_t size = 0;
    for (const std::string_view text : texts) {
        size += text.size();
    }
    const std::size_t before = out.size();
    out.append(size, '\0');
    char* at = out.data() + before;
    for (const std::string_view text : texts) {
        at = std::copy(text.begin(), text.end(), at);
    }
}

constexpr std::array<bool, 256> MakePlainCharacters() noexcept
{
    std::array<bool, 256> plain{};
    for (std::size_t c = 0x20; c < 0x7F; ++c) {
        plain[c] = std::string_view("&<>\"'").find(static_cast<char>(c)) == std::string_view::npos;
    }
    return plain;
}

/// Whether a text stands in XML as it is.
bool IsPlain(std::string_view text) noexcept
{
    static constexpr std::array<bool, 256> s_plain = MakePlainCharacters();
    return std::ranges::all_of(text, [](char c) { return s_plain[static_cast<unsigned char>(c)]; });
}

/// As the value of an attribute, where parsers turn line ends and tabs into blanks unless they are references.
void AppendAttributeText(std::string& out, std::string_view text)
{
    while (!text.empty()) {
        const std::size_t plain = std::min(text.find_first_of("\t\n\r"), text.size());
        dg::AppendXmlEncoded(out, text.substr(0, plain));
        if (plain == text.size()) {
            return;
        }
        out += text[plain] == '\t' ? "&#9;" : text[plain] == '\n' ? "&#10;" : "&#13;";
        text.remove_prefix(plain + 1);
    }
}

constexpr std::string_view kBase64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void AppendBase64(std::string& out, std::string_view bytes)
{
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(bytes.size() - i, 3);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8U | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            out.push_back(k <= count ? kBase64Digits[group >> (18 - 6 * k) & 63U] : '=');
        }
    }
}

constexpr std::array<std::uint8_t, 256> MakeBase64Values() noexcept
{
    std::array<std::uint8_t, 256> values{};
    values.fill(0xFF);
    for (std::size_t i = 0; i < kBase64Digits.size(); ++i) {
        values[static_cast<unsigned char>(kBase64Digits[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}

bool DecodeBase64(std::string_view text, std::string& bytes)
{
    static constexpr std::array<std::uint8_t, 256> s_values = MakeBase64Values();
    if (text.size() % 4 != 0) {
        return false;
    }
    text.remove_suffix(text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0);
    bytes.clear();
    std::uint32_t group = 0;
    unsigned bits = 0;
    for (const char digit : text) {
        const std::uint32_t value = s_values[static_cast<unsigned char>(digit)];
        if (value == 0xFF) {
            return false;
        }
        group = (group << 6U | value) & 0xFFFFU;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push_back(static_cast<char>(group >> bits & 0xFFU));
        }
    }
    return true;
}

// Numbers

template <class Real>
struct BitsOf;
template <>
struct BitsOf<float> {
    using Type = std::uint32_t;
};
template <>
struct BitsOf<double> {
    using Type = std::uint64_t;
};

constexpr std::string_view kNan = "nan";
constexpr std::string_view kNanBits = "nan:";

template <class Integer>
void AppendWhole(std::string& out, Integer value, int base = 10)
{
    std::array<char, 24> digits;
    out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value, base).ptr);
}

template <class Real>
void AppendAnyReal(std::string& out, Real value)
{
    using Bits = typename BitsOf<Real>::Type;
    const Bits bits = std::bit_cast<Bits>(value);
    // Those that no exponent makes shorter; most values are among them.
    constexpr Real kFirstWithExponent = 100000;
    const int whole = std::fabs(value) < kFirstWithExponent ? static_cast<int>(value) : 0;
    if (whole != 0 && static_cast<Real>(whole) == value) {
        AppendWhole(out, whole);
    } else if (bits == 0) {
        out.push_back('0');
    } else if (!std::isnan(value)) {
        dg::AppendShortest(out, value);
    } else if (bits == std::bit_cast<Bits>(std::numeric_limits<Real>::quiet_NaN())) {
        out += kNan;
    } else {
        out.append(kNanBits);
        AppendWhole(out, bits, 16);
    }
}

template <class Number, class... Format>
bool ParseWhole(std::string_view text, Number& value, Format... format) noexcept
{
    Number parsed{};
    const char* const end = text.data() + text.size();
    const auto [stop, status] = std::from_chars(text.data(), end, parsed, format...);
    if (status != std::errc() || stop != end) {
        return false;
    }
    value = parsed;
    return true;
}

template <class Real>
bool ParseAnyReal(std::string_view text, Real& value) noexcept
{
    if (text.starts_with(kNanBits)) {
        typename BitsOf<Real>::Type bits{};
        const bool isNan = ParseWhole(text.substr(kNanBits.size()), bits, 16) && std::isnan(std::bit_cast<Real>(bits));
        value = isNan ? std::bit_cast<Real>(bits) : value;
        return isNan;
    }
    const std::string_view digits = text.starts_with('-') ? text.substr(1) : text;
    if (text == kNan) {
        value = std::numeric_limits<Real>::quiet_NaN();
        return true;
    }
    if (digits == "inf") {
        value = text.starts_with('-') ? -std::numeric_limits<Real>::infinity() : std::numeric_limits<Real>::infinity();
        return true;
    }
    // The library reads further spellings of infinity and NaN.
    const bool isNumber = !digits.empty() && ((digits[0] >= '0' && digits[0] <= '9') || digits[0] == '.');
    return isNumber && ParseWhole(text, value);
}

/// The usual number, such as "-12.5", at the front of a text up to a blank or the end.
/// @return its length; 0 when it is another, which may be a number still
///
/// *Rationale:* digits and power of ten are exact, and a division of exact numbers rounds as reading them does.
template <class Real>
std::size_t ParseShortReal(std::string_view text, Real& value) noexcept
{
    constexpr int kMaxDigits = std::numeric_limits<Real>::digits10 + (sizeof(Real) == sizeof(float) ? 1 : 0);
    constexpr std::array<Real, 16> kPowers = {Real(1e0),  Real(1e1),  Real(1e2),  Real(1e3), Real(1e4),  Real(1e5),
                                              Real(1e6),  Real(1e7),  Real(1e8),  Real(1e9), Real(1e10), Real(1e11),
                                              Real(1e12), Real(1e13), Real(1e14), Real(1e15)};
    const bool isNegative = text.starts_with('-');
    std::size_t at = isNegative ? 1 : 0;
    std::int64_t number = 0;
    const auto takeDigits = [&]() noexcept {
        int count = 0;
        for (; at < text.size() && text[at] >= '0' && text[at] <= '9' && count <= kMaxDigits; ++at, ++count) {
            number = 10 * number + (text[at] - '0');
        }
        return count;
    };
    const int whole = takeDigits();
    int fraction = 0;
    if (at < text.size() && text[at] == '.') {
        ++at;
        fraction = takeDigits();
        if (fraction == 0) {
            return 0;
        }
    }
    if (whole == 0 || whole + fraction > kMaxDigits || (at < text.size() && text[at] != ' ')) {
        return 0;
    }
    const Real size = static_cast<Real>(number) / kPowers[static_cast<std::size_t>(fraction)];
    value = isNegative ? -size : size;
    return at;
}

/// Numbers separated by single blanks, as many as there are places for them.
template <class... Real>
bool ParseReals(std::string_view text, Real&... values) noexcept
{
    bool isRead = true;
    std::size_t left = sizeof...(values);
    const auto takeOne = [&](auto& value) {
        std::size_t end = isRead ? ParseShortReal(text, value) : 0;
        if (isRead && end == 0) {
            end = std::min(text.find(' '), text.size());
            isRead = ParseAnyReal(text.substr(0, end), value);
        }
        isRead = isRead && (end < text.size()) == (--left > 0);
        text.remove_prefix(std::min(end + 1, text.size()));
    };
    (takeOne(values), ...);
    return isRead;
}

template <class First, class... Real>
void AppendReals(std::string& out, First first, Real... values)
{
    AppendAnyReal(out, first);
    ((out.push_back(' '), AppendAnyReal(out, values)), ...);
}

// Values

void AppendValueText(std::string&, const du::Symbol&) {}
void AppendValueText(std::string& out, bool value) { out += value ? "true" : "false"; }
void AppendValueText(std::string& out, float value) { AppendReals(out, value); }
void AppendValueText(std::string& out, const dg::DPoint3D& value) { AppendReals(out, value.x, value.y, value.z); }
void AppendValueText(std::string& out, const dg::DVec3& value) { AppendReals(out, value.x, value.y, value.z); }

void AppendValueText(std::string& out, const dg::Quaternion<float>& value)
{
    AppendReals(out, value.w, value.x, value.y, value.z);
}

void AppendValueText(std::string& out, const dg::Color& value)
{
    AppendReals(out, value.red, value.green, value.blue, value.alpha);
}

void AppendValueText(std::string& out, const dg::Location& value)
{
    for (const float entry : value.GetMat().GetEntries()) {
        AppendAnyReal(out, entry);
        out.push_back(' ');
    }
    AppendValueText(out, value.GetPosition());
}

/// The integers.
template <class Integer>
void AppendValueText(std::string& out, Integer value)
{
    AppendWhole(out, value);
}

bool ParseValueText(std::string_view, du::Symbol&) noexcept { return false; }

bool ParseValueText(std::string_view text, bool& value) noexcept
{
    value = text == "true" || text == "1";
    return value || text == "false" || text == "0";
}

bool ParseValueText(std::string_view text, std::int32_t& value) noexcept { return ParseWhole(text, value); }
bool ParseValueText(std::string_view text, std::uint64_t& value) noexcept { return ParseWhole(text, value); }
bool ParseValueText(std::string_view text, float& value) noexcept { return ParseReals(text, value); }

bool ParseValueText(std::string_view text, dg::DPoint3D& value) noexcept
{
    return ParseReals(text, value.x, value.y, value.z);
}

bool ParseValueText(std::string_view text, dg::DVec3& value) noexcept
{
    return ParseReals(text, value.x, value.y, value.z);
}

bool ParseValueText(std::string_view text, dg::Quaternion<float>& value) noexcept
{
    return ParseReals(text, value.w, value.x, value.y, value.z);
}

bool ParseValueText(std::string_view text, dg::Color& value) noexcept
{
    return ParseReals(text, value.red, value.green, value.blue, value.alpha);
}

bool ParseValueText(std::string_view text, dg::Location& value) noexcept
{
    std::array<float, 9> m{};
    dg::DPoint3D position;
    if (!ParseReals(text, m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], position.x, position.y, position.z)) {
        return false;
    }
    value = {dg::FMat33(m), position};
    return true;
}

template <std::size_t Type>
bool ParseAs(std::string_view text, SerializedContentElement::Value& value) noexcept
{
    return ParseValueText(text, value.emplace<Type>());
}

template <std::size_t... Type>
constexpr auto MakeParsers(std::index_sequence<Type...>) noexcept
{
    return std::array{&ParseAs<Type>...};
}

/// Reads a text as the type with this number.
bool ParseType(std::size_t type, std::string_view text, SerializedContentElement::Value& value) noexcept
{
    static constexpr auto s_parsers = MakeParsers(std::make_index_sequence<kTypes.size()>());
    return s_parsers[type](text, value);
}

/// What the attributes of an element say that are spoken for, and the others as they stand.
class Attributes
{
public:
    struct Text {
        std::string_view text;
        bool isGiven = false;
        bool isBase64 = false;
    };

    /// A property has a key and a value, an element a name.
    Attributes(const dg::XmlElem& element, bool isProperty)
    {
        for (dg::XmlAttribute attribute = element.FirstAttribute(); attribute; attribute = attribute.Next()) {
            const std::string_view name = attribute.GetName();
            const std::string_view value = attribute.GetValue();
            const bool isTaken = isProperty ? Take<kKey>(label, name, value) || Take<kValue>(content, name, value)
                                            : Take<kName>(label, name, value);
            if (!isTaken) {
                SerializedContentXml::AppendForeignAttribute(foreign, name, value);
            }
        }
    }

    bool HasValue() const noexcept { return content.isGiven && !content.isBase64; }

    Text label;
    Text content;
    std::string foreign;

private:
    /// Of several the first counts.
    template <const std::string_view& Word>
    static bool Take(Text& text, std::string_view name, std::string_view value) noexcept
    {
        const bool isPlain = Is<Word>(name);
        if (!isPlain && !(name.starts_with(Word) && name.substr(Word.size()) == kBase64Suffix)) {
            return false;
        }
        if (!text.isGiven) {
            text = {value, true, !isPlain};
        }
        return true;
    }
};

/// Short enough for a message, whatever a document holds.
std::string Quoted(std::string_view text)
{
    constexpr std::size_t kMaxBytes = 60;
    std::string quoted = "\"";
    quoted.append(text.substr(0, kMaxBytes)).append(text.size() > kMaxBytes ? "...\"" : "\"");
    return quoted;
}

class ReadingOfMany
{
public:
    explicit ReadingOfMany(Tell tell) : m_tell(std::move(tell)) {}

    SerializedContentElement Read(const dg::XmlElem& top)
    {
        SerializedContentElement content;
        Start(top, content);
        content.GetProperties().reserve(m_expected);
        std::vector<std::pair<dg::XmlElem, SerializedContentElement*>> levels = {{top.FirstChild(), &content}};
        while (!levels.empty()) {
            auto& [next, element] = levels.back();
            const dg::XmlElem child = next;
            if (!child) {
                levels.pop_back();
                continue;
            }
            next = child.NextSibling();
            const std::string_view name = child.GetName();
            if (Is<kElement>(name)) {
                SerializedContentElement& inner = element->StartChild(du::Symbol());
                Start(child, inner);
                levels.emplace_back(child.FirstChild(), &inner);
            } else {
                ReadProperty(child, TypeOf(name), *element);
            }
        }
        m_expected = std::min(content.GetProperties().size(), kMaxExpected);
        return content;
    }

private:
    /// Contents that follow one another are mostly of one kind.
    static constexpr std::size_t kMaxExpected = 64;

    void Start(const dg::XmlElem& xml, SerializedContentElement& element)
    {
        const Attributes attributes(xml, false);
        du::Symbol name;
        if (!ReadSymbol(attributes.label, name)) {
            Problem("an element has a name that is no Base64");
        }
        element = SerializedContentElement(name);
        element.SetForeign(attributes.foreign);
    }

    void ReadProperty(const dg::XmlElem& xml, std::size_t type, SerializedContentElement& element)
    {
        if (type == kTypes.size() || xml.FirstChild()) {
            KeepForeign(xml, element);
            return;
        }
        Property& property = element.GetProperties().emplace_back();
        const Attributes attributes(xml, true);
        if (!ReadProperty(type, attributes, property)) {
            element.GetProperties().pop_back();
        }
    }

    bool ReadProperty(std::size_t type, const Attributes& attributes, Property& property)
    {
        if (!ReadSymbol(attributes.label, property.key)) {
            Problem("a property has a key that is no Base64");
            return false;
        }
        if (!ReadValue(type, attributes, property.value)) {
            Problem(std::string(kTypes[type]).append(" ").append(Quoted(property.key.GetText())) +
                    (attributes.HasValue() ? " has the wrong value " + Quoted(attributes.content.text)
                                           : std::string(" has no value")));
            return false;
        }
        if (!attributes.foreign.empty()) {
            property.foreign = std::make_shared<const std::string>(attributes.foreign);
        }
        return true;
    }

    /// Among the properties as long as there is no child yet, then among the children.
    static void KeepForeign(const dg::XmlElem& xml, SerializedContentElement& element)
    {
        std::string text;
        SerializedContentXml::AppendForeign(text, xml);
        if (element.GetChildCount() > 0) {
            element.StartChild(du::Symbol()).SetForeign(std::move(text));
            return;
        }
        Property property;
        property.foreign = std::make_shared<const std::string>(std::move(text));
        element.AddProperty(std::move(property));
    }

    bool ReadValue(std::size_t type, const Attributes& attributes, SerializedContentElement::Value& value)
    {
        if (auto* const symbol = type == 0 ? std::get_if<du::Symbol>(&value) : nullptr) {
            return ReadSymbol(attributes.content, *symbol);
        }
        return attributes.HasValue() && ParseType(type, attributes.content.text, value);
    }

    bool ReadSymbol(const Attributes::Text& text, du::Symbol& symbol)
    {
        std::string bytes;
        if (!text.isGiven) {
            symbol = du::Symbol();
        } else if (!text.isBase64) {
            symbol = m_symbols.Get(text.text);
        } else if (DecodeBase64(text.text, bytes)) {
            symbol = du::Symbol(bytes);
        } else {
            return false;
        }
        return true;
    }

    void Problem(const std::string& problem) const
    {
        if (m_tell) {
            m_tell(problem);
        }
    }

    const Tell m_tell;
    KnownSymbols m_symbols;
    std::size_t m_expected = 0; ///< properties
};

void AppendIndent(std::string& out, int depth) { out.append(2 * static_cast<std::size_t>(depth), ' '); }

void AppendSymbolAttribute(std::string& out, std::string_view name, const du::Symbol& symbol)
{
    if (!symbol.IsNull()) {
        SerializedContentXml::AppendAttribute(out, name, symbol.GetText());
    }
}

void AppendForeignLine(std::string& out, const std::string& xml, int depth)
{
    AppendIndent(out, depth);
    out.append(xml).push_back('\n');
}

void AppendProperty(std::string& out, const Property& property, int depth)
{
    if (property.IsForeign()) {
        AppendForeignLine(out, *property.foreign, depth);
        return;
    }
    AppendIndent(out, depth);
    const std::string_view type = kTypes[property.value.index()];
    if (const std::string_view key = property.key.GetText(); !property.key.IsNull() && IsPlain(key)) {
        AppendAll(out, {"<", type, " key=\"", key, "\""});
    } else {
        out.append("<").append(type);
        AppendSymbolAttribute(out, kKey, property.key);
    }
    if (const auto* const symbol = std::get_if<du::Symbol>(&property.value)) {
        AppendSymbolAttribute(out, kValue, *symbol);
    } else {
        out.append(" value=\"");
        SerializedContentXml::AppendValue(out, property.value);
        out.push_back('"');
    }
    if (property.foreign) {
        out.append(*property.foreign);
    }
    out.append("/>\n");
}

/// The start tag and the properties.
void AppendStart(std::string& out, const SerializedContentElement& element, int depth)
{
    AppendIndent(out, depth);
    out.append("<").append(kElement);
    AppendSymbolAttribute(out, kName, element.GetName());
    out.append(element.GetForeign()).append(">\n");
    for (const Property& property : element.GetProperties()) {
        AppendProperty(out, property, depth + 1);
    }
}

/// Whether an element at this depth, with the properties in it, lies within what a parser takes.
bool FitsDepth(const SerializedContentElement& element, int depth) noexcept
{
    return depth + (element.GetProperties().empty() ? 1 : 2) <= dg::kXmlMaxDepth;
}

} // namespace

bool SerializedContentXml::Append(std::string& out, const SerializedContentElement& top, int depth)
{
    const std::size_t sizeBefore = out.size();
    std::vector<std::pair<const SerializedContentElement*, std::size_t>> levels = {{&top, 0}};
    const auto depthHere = [&] { return depth + static_cast<int>(levels.size()) - 1; };
    bool fits = FitsDepth(top, depth);
    AppendStart(out, top, depth);
    while (fits && !levels.empty()) {
        auto& [element, next] = levels.back();
        if (next == element->GetChildCount()) {
            AppendIndent(out, depthHere());
            out.append("</").append(kElement).append(">\n");
            levels.pop_back();
            continue;
        }
        const SerializedContentElement& child = element->GetChild(next++);
        if (child.IsForeign()) {
            AppendForeignLine(out, child.GetForeign(), depthHere() + 1);
            continue;
        }
        levels.emplace_back(&child, 0);
        fits = FitsDepth(child, depthHere());
        AppendStart(out, child, depthHere());
    }
    if (!fits) {
        out.resize(sizeBefore);
    }
    return fits;
}

class SerializedContentXml::Reader::Content : public ReadingOfMany
{
public:
    using ReadingOfMany::ReadingOfMany;
};

SerializedContentXml::Reader::Reader(Tell tell) : m_content(std::make_unique<Content>(std::move(tell))) {}

SerializedContentXml::Reader::~Reader() = default;

SerializedContentElement SerializedContentXml::Reader::Read(const dg::XmlElem& element)
{
    return m_content->Read(element);
}

SerializedContentElement SerializedContentXml::Read(const dg::XmlElem& element, const Tell& tell)
{
    return Reader(tell).Read(element);
}

void SerializedContentXml::AppendForeign(std::string& out, const dg::XmlElem& top)
{
    const auto start = [&out](const dg::XmlElem& element) {
        out.append("<").append(element.GetName());
        for (dg::XmlAttribute attribute = element.FirstAttribute(); attribute; attribute = attribute.Next()) {
            AppendForeignAttribute(out, attribute.GetName(), attribute.GetValue());
        }
        out.push_back('>');
        std::string spare;
        dg::AppendXmlEncoded(out, element.GetTextView(spare));
        return std::pair(element, element.FirstChild());
    };
    std::vector<std::pair<dg::XmlElem, dg::XmlElem>> levels = {start(top)};
    while (!levels.empty()) {
        auto& [element, next] = levels.back();
        const dg::XmlElem child = next;
        if (child) {
            next = child.NextSibling();
            levels.push_back(start(child));
            continue;
        }
        out.append("</").append(element.GetName()).push_back('>');
        levels.pop_back();
    }
}

void SerializedContentXml::AppendAttribute(std::string& out, std::string_view name, std::string_view value)
{
    if (IsPlain(value)) {
        AppendAll(out, {" ", name, "=\"", value, "\""});
        return;
    }
    out.append(" ").append(name);
    if (IsXmlText(value)) {
        out.append("=\"");
        AppendAttributeText(out, value);
    } else {
        out.append(kBase64Suffix).append("=\"");
        AppendBase64(out, value);
    }
    out.push_back('"');
}

void SerializedContentXml::AppendForeignAttribute(std::string& out, std::string_view name, std::string_view value)
{
    out.append(" ").append(name).append("=\"");
    AppendAttributeText(out, value);
    out.push_back('"');
}

bool SerializedContentXml::ReadAttribute(const dg::XmlElem& element, std::string_view name, std::string& value)
{
    if (element.HasAttribute(name)) {
        value = element.GetAttribute(name);
        return true;
    }
    const std::string base64Name = std::string(name).append(kBase64Suffix);
    return element.HasAttribute(base64Name) && DecodeBase64(element.GetAttribute(base64Name), value);
}

std::string_view SerializedContentXml::GetTypeName(const SerializedContentElement::Value& value) noexcept
{
    return kTypes[value.index()];
}

void SerializedContentXml::AppendValue(std::string& out, const SerializedContentElement::Value& value)
{
    std::visit([&out](const auto& typed) { AppendValueText(out, typed); }, value);
}

bool SerializedContentXml::ParseValue(std::string_view text, SerializedContentElement::Value& value) noexcept
{
    return std::visit([text](auto& typed) { return ParseValueText(text, typed); }, value);
}

void SerializedContentXml::AppendReal(std::string& out, double value) { AppendAnyReal(out, value); }

bool SerializedContentXml::ParseReal(std::string_view text, double& value) noexcept
{
    return ParseAnyReal(text, value);
}

} // namespace luk
