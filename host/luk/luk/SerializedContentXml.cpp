#include <dg/FormatNumber.h>
#include <dg/XmlElem.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
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

template <class Real>
void AppendAnyReal(std::string& out, Real value)
{
    using Bits = typename BitsOf<Real>::Type;
    const Bits bits = std::bit_cast<Bits>(value);
    if (!std::isnan(value)) {
        dg::AppendShortest(out, value);
    } else if (bits == std::bit_cast<Bits>(std::numeric_limits<Real>::quiet_NaN())) {
        out += kNan;
    } else {
        std::array<char, 2 * sizeof(Bits)> digits;
        out.append(kNanBits);
        out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), bits, 16).ptr);
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

/// Numbers separated by single blanks, as many as there are places for them.
template <class... Real>
bool ParseReals(std::string_view text, Real&... values) noexcept
{
    bool isRead = true;
    const auto takeOne = [&](auto& value) {
        const std::size_t end = std::min(text.find(' '), text.size());
        isRead = isRead && ParseAnyReal(text.substr(0, end), value);
        text.remove_prefix(std::min(end + 1, text.size()));
    };
    const auto blanks = static_cast<std::size_t>(std::count(text.begin(), text.end(), ' '));
    (takeOne(values), ...);
    return isRead && blanks == sizeof...(values) - 1;
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
    std::array<char, 24> digits;
    out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
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

/// A value of the type with this number.
SerializedContentElement::Value ValueOfType(std::size_t type)
{
    using Value = SerializedContentElement::Value;
    static const std::array<Value, std::variant_size_v<Value>> s_values = {
        du::Symbol(),   false,       std::int32_t{},          0.0F,        std::uint64_t{},
        dg::DPoint3D(), dg::DVec3(), dg::Quaternion<float>(), dg::Color(), dg::Location()};
    return s_values[type];
}

/// What the attributes of an element say that are spoken for, and the others as they stand.
class Attributes
{
public:
    /// A property has a key and a value, an element a name.
    Attributes(const dg::XmlElem& element, bool isProperty)
    {
        for (dg::XmlAttribute attribute = element.FirstAttribute(); attribute; attribute = attribute.Next()) {
            const std::string_view name = attribute.GetName();
            if (!m_label.Take(name, isProperty ? kKey : kName, attribute.GetValue()) &&
                !(isProperty && m_value.Take(name, kValue, attribute.GetValue()))) {
                SerializedContentXml::AppendForeignAttribute(foreign, name, attribute.GetValue());
            }
        }
    }

    bool HasValue() const noexcept { return m_value.isGiven && !m_value.isBase64; }
    std::string_view GetValue() const noexcept { return m_value.text; }

    bool GetLabel(du::Symbol& label) const { return m_label.ToSymbol(label); }
    bool GetSymbol(du::Symbol& value) const { return m_value.ToSymbol(value); }

    std::string foreign;

private:
    struct Text {
        std::string_view text;
        bool isGiven = false;
        bool isBase64 = false;

        /// Of several the first counts.
        bool Take(std::string_view name, std::string_view expected, std::string_view value) noexcept
        {
            if (!name.starts_with(expected)) {
                return false;
            }
            const std::string_view suffix = name.substr(expected.size());
            if (!suffix.empty() && suffix != kBase64Suffix) {
                return false;
            }
            if (!isGiven) {
                *this = {value, true, !suffix.empty()};
            }
            return true;
        }

        bool ToSymbol(du::Symbol& symbol) const
        {
            std::string bytes;
            if (!isGiven) {
                symbol = du::Symbol();
            } else if (!isBase64) {
                symbol = du::Symbol(text);
            } else if (DecodeBase64(text, bytes)) {
                symbol = du::Symbol(bytes);
            } else {
                return false;
            }
            return true;
        }
    };

    Text m_label;
    Text m_value;
};

/// Short enough for a message, whatever a document holds.
std::string Quoted(std::string_view text)
{
    constexpr std::size_t kMaxBytes = 60;
    std::string quoted = "\"";
    quoted.append(text.substr(0, kMaxBytes)).append(text.size() > kMaxBytes ? "...\"" : "\"");
    return quoted;
}

class Reader
{
public:
    explicit Reader(const Tell& tell) noexcept : m_tell(tell) {}

    SerializedContentElement Read(const dg::XmlElem& top)
    {
        SerializedContentElement content;
        Start(top, content);
        std::vector<std::pair<dg::XmlElem, SerializedContentElement*>> levels = {{top.FirstChild(), &content}};
        while (!levels.empty()) {
            auto& [next, element] = levels.back();
            const dg::XmlElem child = next;
            if (!child) {
                levels.pop_back();
                continue;
            }
            next = child.NextSibling();
            if (child.GetName() == kElement) {
                SerializedContentElement& inner = element->StartChild(du::Symbol());
                Start(child, inner);
                levels.emplace_back(child.FirstChild(), &inner);
            } else {
                ReadProperty(child, *element);
            }
        }
        return content;
    }

private:
    void Start(const dg::XmlElem& xml, SerializedContentElement& element)
    {
        const Attributes attributes(xml, false);
        du::Symbol name;
        if (!attributes.GetLabel(name)) {
            Problem("an element has a name that is no Base64");
        }
        element = SerializedContentElement(name);
        element.SetForeign(attributes.foreign);
    }

    void ReadProperty(const dg::XmlElem& xml, SerializedContentElement& element)
    {
        const auto type = std::find(kTypes.begin(), kTypes.end(), xml.GetName());
        if (type == kTypes.end() || xml.FirstChild()) {
            KeepForeign(xml, element);
            return;
        }
        const Attributes attributes(xml, true);
        Property property;
        if (!attributes.GetLabel(property.key)) {
            Problem("a property has a key that is no Base64");
            return;
        }
        property.value = ValueOfType(static_cast<std::size_t>(type - kTypes.begin()));
        if (!ReadValue(attributes, property.value)) {
            Problem((std::string(*type) + " ").append(Quoted(property.key.GetText())) +
                    (attributes.HasValue() ? " has the wrong value " + Quoted(attributes.GetValue())
                                           : std::string(" has no value")));
            return;
        }
        if (!attributes.foreign.empty()) {
            property.foreign = std::make_shared<const std::string>(attributes.foreign);
        }
        element.AddProperty(std::move(property));
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

    static bool ReadValue(const Attributes& attributes, SerializedContentElement::Value& value)
    {
        if (auto* const symbol = std::get_if<du::Symbol>(&value)) {
            return attributes.GetSymbol(*symbol);
        }
        return attributes.HasValue() && SerializedContentXml::ParseValue(attributes.GetValue(), value);
    }

    void Problem(const std::string& problem) const
    {
        if (m_tell) {
            m_tell(problem);
        }
    }

    const Tell& m_tell;
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
    out.append("<").append(kTypes[property.value.index()]);
    AppendSymbolAttribute(out, kKey, property.key);
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
