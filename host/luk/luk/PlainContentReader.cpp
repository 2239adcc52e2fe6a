#include <luk/KnownSymbols.h>
#include <luk/PlainContentReader.h>
#include <luk/SerializedContentElement.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace luk
{

namespace
{

using Property = SerializedContentElement::Property;
using Value = SerializedContentElement::Value;

/// A property that has been read, or the start or end of an element, with the white space before it.
struct Line {
    enum class Kind { element, property, end };

    std::string_view text;   ///< empty before it has been read, and after it could not
    std::size_t toValue = 0; ///< bytes before the value of a property; 0 when there is none
    Kind kind = Kind::end;
    Property property;
    du::Symbol name;               ///< of an element
    std::size_t propertyCount = 0; ///< of an element, and no more than are worth to be expected again
};

constexpr bool IsWhiteSpace(char c) noexcept { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

/// How Append writes what cannot stand in a value.
struct Reference {
    std::string_view text;
    char meaning;
};
constexpr std::array<Reference, 8> kReferences = {{{"&amp;", '&'},
                                                   {"&lt;", '<'},
                                                   {"&gt;", '>'},
                                                   {"&quot;", '"'},
                                                   {"&apos;", '\''},
                                                   {"&#9;", '\t'},
                                                   {"&#10;", '\n'},
                                                   {"&#13;", '\r'}}};

/// The bytes that end a value, or do not stand for themselves in one.
constexpr std::array<bool, 256> MakeSpecialBytes() noexcept
{
    std::array<bool, 256> special{};
    for (const char c : {'\0', '"', '&', '<'}) {
        special[static_cast<unsigned char>(c)] = true;
    }
    return special;
}

template <std::size_t... Type>
std::array<Value, sizeof...(Type)> MakeDefaults(std::index_sequence<Type...>)
{
    return {Value(std::in_place_index<Type>)...};
}

/// A value of the type with this name; null when there is none.
const Value* DefaultOf(std::string_view typeName)
{
    static const auto s_defaults = MakeDefaults(std::make_index_sequence<std::variant_size_v<Value>>());
    const auto* const found = std::find_if(s_defaults.begin(), s_defaults.end(), [typeName](const Value& value) {
        return SerializedContentXml::GetTypeName(value) == typeName;
    });
    return found == s_defaults.end() ? nullptr : found;
}

} // namespace

class PlainContentReader::Lines
{
public:
    std::size_t Read(std::string_view text, SerializedContentElement& content)
    {
        m_rest = text;
        std::array<Level, kMaxLevels> levels;
        std::size_t depth = 0;
        std::size_t number = 0;
        do {
            Line& line = m_lines[number++ % kLines];
            if (!Take(line) || depth == (line.kind == Line::Kind::element ? kMaxLevels : 0)) {
                return 0;
            }
            if (line.kind == Line::Kind::element) {
                SerializedContentElement& element = depth == 0 ? content = SerializedContentElement(line.name)
                                                               : levels[depth - 1].element->StartChild(line.name);
                element.GetProperties().reserve(line.propertyCount);
                levels[depth++] = {&element, &line};
            } else if (line.kind == Line::Kind::property) {
                levels[depth - 1].element->GetProperties().push_back(line.property);
            } else {
                const Level& level = levels[--depth];
                level.start->propertyCount = std::min(level.element->GetProperties().size(), kMaxExpected);
            }
        } while (depth > 0);
        return text.size() - m_rest.size();
    }

private:
    /// More than any annotation has; what goes deeper is left to the parser, which knows how deep a document may be.
    static constexpr std::size_t kMaxLevels = 8;
    /// Longer content meets its own lines again, which does no harm.
    static constexpr std::size_t kLines = 256;
    static constexpr std::size_t kMaxExpected = 64;

    struct Level {
        SerializedContentElement* element = nullptr;
        Line* start = nullptr;
    };

    bool Take(Line& line)
    {
        if (line.text.empty() || !m_rest.starts_with(line.text)) {
            return ReadLine(line);
        }
        m_rest.remove_prefix(line.text.size());
        return true;
    }

    bool ReadLine(Line& line)
    {
        const std::string_view before = std::exchange(line.text, {});
        const std::string_view text = m_rest;
        const bool isOfSameKey = !before.empty() && line.toValue > 0 && Skip(before.substr(0, line.toValue));
        if (isOfSameKey ? !ReadValue(line) || !Skip("/>") : !ReadOther(line)) {
            return false;
        }
        line.text = text.substr(0, text.size() - m_rest.size());
        return true;
    }

    bool ReadOther(Line& line)
    {
        const std::size_t sizeBefore = m_rest.size();
        while (!m_rest.empty() && IsWhiteSpace(m_rest.front())) {
            m_rest.remove_prefix(1);
        }
        line.toValue = 0;
        if (Skip("</element>")) {
            line.kind = Line::Kind::end;
            return true;
        }
        if (Skip("<element")) {
            line.kind = Line::Kind::element;
            return ReadSymbol(" name=\"", line.name) && Skip(">");
        }
        line.kind = Line::Kind::property;
        if (!ReadType(line.property) || !ReadSymbol(" key=\"", line.property.key)) {
            return false;
        }
        if (Skip(" value=\"")) {
            line.toValue = sizeBefore - m_rest.size();
            return ReadValue(line) && Skip("/>");
        }
        return std::holds_alternative<du::Symbol>(line.property.value) && Skip("/>");
    }

    bool ReadType(Property& property)
    {
        constexpr std::size_t kMaxSize = 16; // of a type's name, with what is around it
        const std::size_t end = m_rest.substr(0, kMaxSize).find_first_of(" /");
        if (!Skip("<") || end == std::string_view::npos) {
            return false;
        }
        const Value* const value = DefaultOf(m_rest.substr(0, end - 1));
        if (value) {
            property.value = *value;
            m_rest.remove_prefix(end - 1);
        }
        return value != nullptr;
    }

    bool ReadValue(Line& line)
    {
        std::string_view text;
        if (!ReadQuoted(text)) {
            return false;
        }
        if (auto* const symbol = std::get_if<du::Symbol>(&line.property.value)) {
            *symbol = m_symbols.Get(text);
            return true;
        }
        return SerializedContentXml::ParseValue(text, line.property.value);
    }

    /// Null where there is no such attribute.
    bool ReadSymbol(std::string_view start, du::Symbol& symbol)
    {
        std::string_view text;
        if (!Skip(start)) {
            symbol = {};
            return true;
        }
        if (!ReadQuoted(text)) {
            return false;
        }
        symbol = m_symbols.Get(text);
        return true;
    }

    /// Up to the closing quote, which is passed over. @param text looks into the text or into m_decoded
    bool ReadQuoted(std::string_view& text)
    {
        text = TakePlain();
        if (!m_rest.starts_with('&')) {
            return Skip("\"");
        }
        m_decoded = text;
        while (m_rest.starts_with('&')) {
            const auto* const reference = std::find_if(kReferences.begin(), kReferences.end(),
                                                       [this](const Reference& known) { return Skip(known.text); });
            if (reference == kReferences.end()) {
                return false;
            }
            m_decoded.append(1, reference->meaning).append(TakePlain());
        }
        text = m_decoded;
        return Skip("\"");
    }

    std::string_view TakePlain() noexcept
    {
        static constexpr std::array<bool, 256> s_special = MakeSpecialBytes();
        const auto* const end =
            std::find_if(m_rest.begin(), m_rest.end(), [](char c) { return s_special[static_cast<unsigned char>(c)]; });
        const std::string_view plain(m_rest.begin(), end);
        m_rest.remove_prefix(plain.size());
        return plain;
    }

    bool Skip(std::string_view word) noexcept
    {
        const bool isThere = m_rest.starts_with(word);
        m_rest.remove_prefix(isThere ? word.size() : 0);
        return isThere;
    }

    std::string_view m_rest; ///< of the text
    std::string m_decoded;
    std::vector<Line> m_lines = std::vector<Line>(kLines); ///< of the content before, in part those of the present one
    KnownSymbols m_symbols;
};

PlainContentReader::PlainContentReader() : m_lines(std::make_unique<Lines>()) {}

PlainContentReader::~PlainContentReader() = default;

std::size_t PlainContentReader::Read(std::string_view text, SerializedContentElement& content)
{
    return m_lines->Read(text, content);
}

} // namespace luk
