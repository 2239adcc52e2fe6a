#include "XmlDiagnosis.h"

#include <dg/FormatNumber.h>
#include <dg/ParseNumber.h>
#include <dg/XmlElem.h>

#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace dg
{

namespace
{

// A handle keeps the bits of the parser's own handle, so that using it costs no call into the library.
pugi::xml_node AsNode(void* handle) noexcept { return std::bit_cast<pugi::xml_node>(handle); }

/// Whether a text that ends with NUL is this one. Mostly the first character tells, sooner than a length is counted.
bool IsText(const char* text, std::string_view wanted) noexcept
{
    for (const char c : wanted) {
        if (*text++ != c) {
            return false;
        }
    }
    return *text == '\0';
}

/// The first attribute of that name; empty when there is none.
pugi::xml_attribute FindAttribute(void* handle, std::string_view name) noexcept
{
    pugi::xml_attribute attribute = AsNode(handle).first_attribute();
    while (std::bit_cast<void*>(attribute) && !IsText(attribute.name(), name)) {
        attribute = attribute.next_attribute();
    }
    return attribute;
}
pugi::xml_attribute AsAttribute(void* handle) noexcept { return std::bit_cast<pugi::xml_attribute>(handle); }
void* AsHandle(pugi::xml_node node) noexcept { return std::bit_cast<void*>(node); }
void* AsHandle(pugi::xml_attribute attribute) noexcept { return std::bit_cast<void*>(attribute); }

/// Fetches what a walk through the document is going to need soon.
///
/// Rationale: the parser lays nodes and attributes one behind the other in document order, in a memory far larger than
/// any cache, and a walk waits for each of them; this halves the time. Where the guess is wrong nothing is lost.
void FetchAhead(void* handle) noexcept
{
    constexpr std::uintptr_t kAheadBytes = 2048;
    __builtin_prefetch(std::bit_cast<const void*>(std::bit_cast<std::uintptr_t>(handle) + kAheadBytes));
}

/// This node or its next sibling that is an element.
void* ElementFrom(pugi::xml_node node) noexcept
{
    FetchAhead(AsHandle(node));
    while (AsHandle(node) && node.type() != pugi::node_element) {
        node = node.next_sibling();
    }
    return AsHandle(node);
}

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::string_view kXmlBlanks = " \t\n\r";

bool IsLayout(std::string_view text) noexcept { return text.find_first_not_of(kXmlBlanks) == std::string_view::npos; }

bool IsOwnText(pugi::xml_node node) noexcept
{
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

/// Next run of characters that are no blanks, taken off the front of a text.
std::string_view TakeWord(std::string_view& text) noexcept
{
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    return word;
}

template <class Real>
Real FiniteOrZero(Real value) noexcept
{
    return std::isfinite(value) ? value : Real(0);
}

} // namespace

class XmlElem::LineIndex
{
public:
    explicit LineIndex(std::string_view text)
    {
        std::size_t start = 0;
        do {
            m_starts.push_back(start);
            start = text.find('\n', start) + 1;
        } while (start != 0);
    }

    std::size_t LineOf(std::size_t offset) const noexcept
    {
        const auto next = std::upper_bound(m_starts.begin(), m_starts.end(), offset);
        return static_cast<std::size_t>(next - m_starts.begin());
    }

private:
    std::vector<std::size_t> m_starts;
};

std::string_view XmlAttribute::GetName() const noexcept { return AsAttribute(m_attribute).name(); }

std::string_view XmlAttribute::GetValue() const noexcept { return AsAttribute(m_attribute).value(); }

XmlAttribute XmlAttribute::Next() const noexcept
{
    return XmlAttribute(AsHandle(AsAttribute(m_attribute).next_attribute()));
}

std::string_view XmlElem::GetName() const noexcept { return AsNode(m_node).name(); }

XmlElem XmlElem::FirstChild() const noexcept { return {ElementFrom(AsNode(m_node).first_child()), m_lines}; }

XmlElem XmlElem::NextSibling() const noexcept { return {ElementFrom(AsNode(m_node).next_sibling()), m_lines}; }

std::size_t XmlElem::CountChildren() const noexcept
{
    std::size_t count = 0;
    for (XmlElem child = FirstChild(); child; child = child.NextSibling()) {
        ++count;
    }
    return count;
}

std::string XmlElem::GetText() const
{
    std::string text;
    AppendText(text);
    return text;
}

void XmlElem::AppendText(std::string& out) const
{
    // The first piece of text lies in the element itself, the others in nodes of their own.
    const pugi::xml_node node = AsNode(m_node);
    const bool dropLayout = static_cast<bool>(FirstChild());
    const std::string_view first = node.value();
    if (!dropLayout || !IsLayout(first)) {
        out.append(first);
    }
    for (pugi::xml_node piece = node.first_child(); piece; piece = piece.next_sibling()) {
        const std::string_view text = piece.value();
        if (IsOwnText(piece) && !(dropLayout && piece.type() == pugi::node_pcdata && IsLayout(text))) {
            out.append(text);
        }
    }
}

std::string_view XmlElem::GetTextView(std::string& spare) const
{
    const pugi::xml_node node = AsNode(m_node);
    if (!AsHandle(node.first_child())) {
        return node.value();
    }
    spare.clear();
    AppendText(spare);
    return spare;
}

bool XmlElem::GetTextAsBool(bool fallback) const
{
    std::string spare;
    return ParseBool(GetTextView(spare), fallback);
}

XmlAttribute XmlElem::FirstAttribute() const noexcept
{
    return XmlAttribute(AsHandle(AsNode(m_node).first_attribute()));
}

bool XmlElem::HasAttribute(std::string_view name) const noexcept { return !FindAttribute(m_node, name).empty(); }

std::string_view XmlElem::GetAttribute(std::string_view name) const noexcept
{
    return FindAttribute(m_node, name).value();
}

bool XmlElem::GetAttributeAsBool(std::string_view name, bool fallback) const noexcept
{
    return ParseBool(GetAttribute(name), fallback);
}

int XmlElem::GetAttributeAsInt(std::string_view name, int fallback) const noexcept
{
    const pugi::xml_attribute attribute = FindAttribute(m_node, name);
    return attribute.empty() ? fallback : ParseInt(attribute.value());
}

float XmlElem::GetAttributeAsFloat(std::string_view name, float fallback) const noexcept
{
    const pugi::xml_attribute attribute = FindAttribute(m_node, name);
    return attribute.empty() ? fallback : ParseFloat(attribute.value());
}

double XmlElem::GetAttributeAsDouble(std::string_view name, double fallback) const noexcept
{
    const pugi::xml_attribute attribute = FindAttribute(m_node, name);
    return attribute.empty() ? fallback : ParseDouble(attribute.value());
}

Location XmlElem::GetAttributeAsLocation(std::string_view name, const Location& fallback) const noexcept
{
    std::string_view rest = GetAttribute(name);
    std::array<std::string_view, 12> words;
    for (std::string_view& word : words) {
        word = TakeWord(rest);
    }
    if (words.back().empty() || !TakeWord(rest).empty()) {
        return fallback;
    }
    std::array<float, 9> matrix{};
    std::transform(words.begin(), words.begin() + 9, matrix.begin(), ParseFloat);
    return {FMat33(matrix), DPoint3D(ParseDouble(words[9]), ParseDouble(words[10]), ParseDouble(words[11]))};
}

void XmlElem::SetAttribute(std::string_view name, std::string_view value)
{
    pugi::xml_attribute attribute = FindAttribute(m_node, name);
    if (attribute.empty()) {
        attribute = AsNode(m_node).append_attribute(std::string(name).c_str());
    }
    if (!attribute.set_value(std::string(value).c_str())) {
        throw std::bad_alloc();
    }
}

void XmlElem::SetAttributeAsBool(std::string_view name, bool value) { SetAttribute(name, value ? "true" : "false"); }

void XmlElem::SetAttributeAsDouble(std::string_view name, double value)
{
    std::string text;
    AppendShortest(text, FiniteOrZero(value));
    SetAttribute(name, text);
}

void XmlElem::SetAttributeAsLocation(std::string_view name, const Location& value)
{
    std::string text;
    for (const float entry : value.GetMat().GetEntries()) {
        AppendShortest(text, FiniteOrZero(entry));
        text.push_back(' ');
    }
    const DPoint3D& position = value.GetPosition();
    AppendShortest(text, FiniteOrZero(position.x));
    text.push_back(' ');
    AppendShortest(text, FiniteOrZero(position.y));
    text.push_back(' ');
    AppendShortest(text, FiniteOrZero(position.z));
    SetAttribute(name, text);
}

std::size_t XmlElem::GetLine() const noexcept
{
    const std::ptrdiff_t offset = AsNode(m_node).offset_debug();
    return m_lines && offset >= 0 ? m_lines->LineOf(static_cast<std::size_t>(offset)) : 0;
}

namespace
{

/// What has to be known of a text before it is parsed.
class TextScan
{
public:
    explicit TextScan(std::string_view text) noexcept : m_text(text)
    {
        // In blocks, so that each byte comes from memory once and the searches run in the cache.
        constexpr std::size_t kBlock = std::size_t{1} << 15;
        for (std::size_t start = 0; start < text.size(); start += kBlock) {
            const std::size_t end = std::min(start + kBlock, text.size());
            if (const void* const nul = std::memchr(text.data() + start, '\0', end - start)) {
                m_nul = static_cast<std::size_t>(static_cast<const char*>(nul) - text.data());
                return;
            }
            m_textMayBeSplit = m_textMayBeSplit || FindSplit('!', start, end) || FindSplit('?', start, end);
        }
    }

    /// Offset of the first NUL byte, or npos.
    std::size_t GetNul() const noexcept { return m_nul; }

    /// Whether a comment, an instruction or CDATA may stand inside the text of an element without child elements.
    ///
    /// Rationale: white space that is a piece of such a text must be kept, and keeping all white space of a document
    /// costs as many nodes as it has elements. Almost no document needs it.
    bool TextMayBeSplit() const noexcept { return m_textMayBeSplit; }

private:
    /// Looks at every "<!" or "<?" of a block.
    bool FindSplit(char second, std::size_t start, std::size_t end) noexcept
    {
        while (start < end) {
            const void* const found = std::memchr(m_text.data() + start, second, end - start);
            if (!found) {
                return false;
            }
            const auto at = static_cast<std::size_t>(static_cast<const char*>(found) - m_text.data());
            if (at > 0 && m_text[at - 1] == '<' && SplitsText(at)) {
                return true;
            }
            start = at + 1;
        }
        return false;
    }

    bool SplitsText(std::size_t at) noexcept
    {
        const std::string_view rest = m_text.substr(at);
        if (rest.starts_with('?')) {
            return m_instruction.SplitsText(m_text, at);
        }
        if (rest.starts_with("!--")) {
            return m_comment.SplitsText(m_text, at);
        }
        return rest.starts_with("![CDATA[") && m_cdata.SplitsText(m_text, at);
    }

    /// One kind of markup that may split a text.
    struct Markup {
        std::size_t startSize; ///< of the mark that begins it, which may look like its end: "<!-->"
        std::string_view endMark;
        std::size_t end = 0;

        /// Whether what follows the markup at this place, blanks aside, is neither an element, nor more such markup,
        /// nor the end. The end of the markup is remembered, so that no text is searched twice.
        bool SplitsText(std::string_view text, std::size_t at) noexcept
        {
            // One within another: which of them is real is for the parser to tell, so nothing is risked.
            if (at < end) {
                return true;
            }
            end = text.find(endMark, at + startSize);
            if (end == std::string_view::npos) {
                return true;
            }
            end += endMark.size();
            const std::size_t next = text.find_first_not_of(kXmlBlanks, end);
            return next != std::string_view::npos && (text[next] != '<' || text.substr(next).starts_with("</"));
        }
    };

    std::string_view m_text;
    std::size_t m_nul = std::string_view::npos;
    bool m_textMayBeSplit = false;
    Markup m_comment{3, "-->"};
    Markup m_cdata{8, "]]>"};
    Markup m_instruction{1, "?>"};
};

/// The next node in document order below the top, and its depth, which is changed along the way; empty at the end.
pugi::xml_node NextInDocument(pugi::xml_node node, int& depth) noexcept
{
    if (const pugi::xml_node child = node.first_child(); AsHandle(child)) {
        ++depth;
        return child;
    }
    pugi::xml_node next = node.next_sibling();
    while (!AsHandle(next) && depth > 0) {
        node = node.parent();
        --depth;
        next = depth > 0 ? node.next_sibling() : pugi::xml_node();
    }
    return next;
}

/// The first element that lies too deep; empty when none does. Without recursion, since what it is for would overflow it.
pugi::xml_node FindTooDeep(pugi::xml_node root) noexcept
{
    int depth = 0;
    for (pugi::xml_node node = root; AsHandle(node); node = NextInDocument(node, depth)) {
        FetchAhead(AsHandle(node));
        if (depth >= kXmlMaxDepth && node.type() == pugi::node_element) {
            return node;
        }
    }
    return {};
}

const char* WordsFor(pugi::xml_parse_status status) noexcept
{
    switch (status) {
    case pugi::status_bad_pi:
        return "a processing instruction is malformed or not closed";
    case pugi::status_bad_comment:
        return "a comment is not closed";
    case pugi::status_bad_cdata:
        return "a CDATA section is not closed";
    case pugi::status_bad_doctype:
        return "a document type is malformed or in the wrong place";
    case pugi::status_bad_start_element:
        return "a start tag is malformed or not closed";
    case pugi::status_bad_attribute:
        return "an attribute is malformed or its value not closed";
    case pugi::status_bad_end_element:
        return "an end tag is malformed or not closed";
    default:
        return "a tag is malformed";
    }
}

} // namespace

/// The document behind the pointer that ParseXml and NewXmlElem return.
class XmlDocument final : public XmlElem
{
public:
    explicit XmlDocument(std::string&& text) noexcept : m_text(std::move(text)) {}

    /// @param original the same text for the words of the error; used only when there is an error to fill
    bool Parse(bool withPositions, std::string_view original, XmlParseError* error)
    {
        const TextScan scan(m_text);
        if (scan.GetNul() != std::string_view::npos) {
            return Refuse(error, original, scan.GetNul(), "contains a NUL byte");
        }
        if (withPositions) {
            m_lineIndex = std::make_unique<LineIndex>(m_text);
        }
        const unsigned int blanks = scan.TextMayBeSplit() ? pugi::parse_ws_pcdata : pugi::parse_ws_pcdata_single;
        // As a fragment text outside the top-level element is not skipped, and can be told. The terminator is handed
        // over as part of the text, since the parser puts its own in place of the last character.
        const pugi::xml_parse_result result = m_document.load_buffer_inplace(
            m_text.data(), m_text.size() + 1,
            pugi::parse_escapes | pugi::parse_cdata | pugi::parse_embed_pcdata | pugi::parse_fragment | blanks,
            pugi::encoding_utf8);
        if (!result) {
            return RefuseStatus(error, original, result);
        }
        return FindRoot(original, error) && CheckDepth(original, error);
    }

    void Make(std::string_view name)
    {
        SetRoot(m_document.append_child(std::string(name).c_str()));
        if (!*this) {
            throw std::bad_alloc();
        }
    }

private:
    void SetRoot(pugi::xml_node root) noexcept
    {
        static_cast<XmlElem&>(*this) = XmlElem(AsHandle(root), m_lineIndex.get());
    }

    bool FindRoot(std::string_view original, XmlParseError* error)
    {
        pugi::xml_node root;
        for (pugi::xml_node node = m_document.first_child(); node; node = node.next_sibling()) {
            if (node.type() == pugi::node_element && root) {
                return Refuse(error, original, OffsetOf(node), "more than one top-level element");
            }
            if (node.type() == pugi::node_element) {
                root = node;
            } else if (node.type() == pugi::node_cdata || !IsLayout(node.value())) {
                const std::size_t start = original.find_first_not_of(kXmlBlanks, OffsetOf(node));
                return Refuse(error, original, start, "text outside the top-level element");
            }
        }
        if (!root) {
            return Refuse(error, original, original.size(), "no top-level element");
        }
        SetRoot(root);
        return true;
    }

    bool CheckDepth(std::string_view original, XmlParseError* error)
    {
        const pugi::xml_node tooDeep = FindTooDeep(AsNode(m_node));
        if (!AsHandle(tooDeep)) {
            return true;
        }
        return Refuse(error, original, OffsetOf(tooDeep),
                      "nested deeper than " + std::to_string(kXmlMaxDepth) + " levels");
    }

    static std::size_t OffsetOf(pugi::xml_node node) noexcept
    {
        return static_cast<std::size_t>(std::max<std::ptrdiff_t>(node.offset_debug(), 0));
    }

    static bool Refuse(XmlParseError* error, std::string_view original, std::size_t offset, std::string_view reason)
    {
        if (error) {
            *error = XmlDiagnosis(original).At(offset, reason);
        }
        return false;
    }

    static bool RefuseStatus(XmlParseError* error, std::string_view original, const pugi::xml_parse_result& result)
    {
        if (result.status == pugi::status_out_of_memory) {
            throw std::bad_alloc();
        }
        const auto offset = static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0));
        if (result.status != pugi::status_end_element_mismatch) {
            return Refuse(error, original, offset, WordsFor(result.status));
        }
        if (error) {
            *error = XmlDiagnosis(original).ForTagMismatch(offset);
        }
        return false;
    }

    std::string m_text;
    pugi::xml_document m_document;
    std::unique_ptr<LineIndex> m_lineIndex;
};

namespace
{

XmlElem* Parse(std::string&& text, bool withPositions, std::string_view original, XmlParseError* error)
{
    auto document = std::make_unique<XmlDocument>(std::move(text));
    return document->Parse(withPositions, original, error) ? document.release() : nullptr;
}

} // namespace

XmlElem* ParseXml(const std::string& text, bool withPositions, XmlParseError* error)
{
    return Parse(std::string(text), withPositions, text, error);
}

XmlElem* ParseXml(std::string&& text, bool withPositions, XmlParseError* error)
{
    const std::string original = error ? text : std::string();
    return Parse(std::move(text), withPositions, original, error);
}

XmlElem* NewXmlElem(std::string_view name)
{
    auto document = std::make_unique<XmlDocument>(std::string());
    document->Make(name);
    return document.release();
}

void FreeXml(XmlElem* root) noexcept { delete static_cast<XmlDocument*>(root); }

} // namespace dg
