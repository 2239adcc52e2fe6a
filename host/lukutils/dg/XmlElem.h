#pragma once

#include <dg/Location.h>
#include <du/Export.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace dg
{

/// Attribute of an XmlElem: a handle that may be copied freely. Tests false past the last attribute.
class LUHOST_API XmlAttribute
{
public:
    XmlAttribute() noexcept = default;

    explicit operator bool() const noexcept { return m_attribute != nullptr; }

    std::string_view GetName() const noexcept;
    /// Entities are already replaced. The text is followed by a NUL.
    std::string_view GetValue() const noexcept;
    XmlAttribute Next() const noexcept;

private:
    friend class XmlElem;
    explicit XmlAttribute(void* attribute) noexcept : m_attribute(attribute) {}

    void* m_attribute = nullptr;
};

/// Element of an XML document: a light handle that may be copied freely. Tests false past the last child.
///
/// Use: children are visited forward, by sibling; there is no access by number.
/// @code
///     for (dg::XmlElem child = elem.FirstChild(); child; child = child.NextSibling()) { ... }
/// @endcode
/// Text and attribute values have the five predefined entities and character references replaced; every other entity
/// stays as it is written. Of attributes with one name the first counts.
///
/// Ownership: the elements belong to the document, and the document to the pointer that ParseXml or NewXmlElem returned;
/// copies of the element behind that pointer are handles like all others. Handles and views end with FreeXml. A null
/// handle answers every question with nothing.
///
/// Threads: a document may be read on several threads at once; setters want it alone.
///
/// Cost: a step to a sibling or a child is a few nanoseconds; an attribute is found by looking at those before it.
class LUHOST_API XmlElem
{
public:
    XmlElem() noexcept = default;

    explicit operator bool() const noexcept { return m_node != nullptr; }
    friend bool operator==(const XmlElem& a, const XmlElem& b) noexcept { return a.m_node == b.m_node; }

    std::string_view GetName() const noexcept;

    /// First child that is an element.
    XmlElem FirstChild() const noexcept;
    /// Next sibling that is an element.
    XmlElem NextSibling() const noexcept;
    /// Number of children that are elements, in one pass over them.
    std::size_t CountChildren() const noexcept;

    /// The element's own text as it stands: pieces split by comments, instructions or CDATA are joined and no blank is
    /// trimmed. Where the element has child elements, pieces of nothing but white space are layout and left out.
    std::string GetText() const;
    void AppendText(std::string& out) const;

    /// The same text without a copy where it is in one piece, as nearly always.
    /// @param spare receives the text when it has to be joined; the view then looks into it
    std::string_view GetTextView(std::string& spare) const;

    /// The whole text is "true", "1", "false" or "0"; anything else gives the fallback.
    bool GetTextAsBool(bool fallback) const;

    XmlAttribute FirstAttribute() const noexcept;
    bool HasAttribute(std::string_view name) const noexcept;

    /// Empty when there is none. Followed by a NUL.
    std::string_view GetAttribute(std::string_view name) const noexcept;

    /// Typed values. The fallback stands for a missing attribute and, for booleans and locations, for a text that is
    /// none; a number is read as dg/ParseNumber.h says, so a text without one gives 0.
    bool GetAttributeAsBool(std::string_view name, bool fallback = false) const noexcept;
    int GetAttributeAsInt(std::string_view name, int fallback = 0) const noexcept;
    float GetAttributeAsFloat(std::string_view name, float fallback = 0.0F) const noexcept;
    double GetAttributeAsDouble(std::string_view name, double fallback = 0.0) const noexcept;

    /// Twelve numbers separated by blanks: the matrix row by row, then the position.
    Location GetAttributeAsLocation(std::string_view name,
                                    const Location& fallback = Location::IDENTITY) const noexcept;

    /// Sets the first attribute of that name, or appends one. Numbers are written in the shortest form that reads back
    /// to the same value.
    ///
    /// Rationale: a number that is not finite is written as 0, since that is what it would be read as.
    void SetAttribute(std::string_view name, std::string_view value);
    void SetAttributeAsBool(std::string_view name, bool value);
    void SetAttributeAsDouble(std::string_view name, double value);
    void SetAttributeAsLocation(std::string_view name, const Location& value);

    /// Line of the element's name, from 1; 0 unless the document was parsed with positions.
    std::size_t GetLine() const noexcept;

private:
    friend class XmlDocument;
    class LineIndex;

    XmlElem(void* node, const LineIndex* lines) noexcept : m_node(node), m_lines(lines) {}

    void* m_node = nullptr;
    const LineIndex* m_lines = nullptr;
};

/// Why and where a text is no XML document, in plain words for people.
struct XmlParseError {
    std::string reason;
    std::size_t line = 0;   ///< from 1; 0 when the reason has no place
    std::size_t column = 0; ///< in bytes, from 1; 0 when the reason has no place
};

/// Levels of elements that a document may have, the top one included.
inline constexpr int kXmlMaxDepth = 256;

/// Parses a document and returns its top-level element, to be given to FreeXml; null when the text is none.
///
/// A document has exactly one top-level element and no text outside it, at most kXmlMaxDepth levels and no NUL byte. It
/// is read as UTF-8 whatever its declaration says; a byte order mark is skipped, and bytes that are no UTF-8 are kept.
/// Document types are skipped: nothing is expanded, nothing is fetched.
///
/// @param withPositions the elements know their lines
/// @param error told why there is no document; may be null. Asking for it costs a copy of the text
///
/// Errors: throws nothing but std::bad_alloc, since a text that finds no memory is not for that reason no document.
///
/// Cost: linear. The second form parses inside the given text, which the document keeps.
[[nodiscard]] LUHOST_API XmlElem* ParseXml(const std::string& text, bool withPositions, XmlParseError* error);
[[nodiscard]] LUHOST_API XmlElem* ParseXml(std::string&& text, bool withPositions, XmlParseError* error);

/// A new document with this one element, to be given to FreeXml; never null.
[[nodiscard]] LUHOST_API XmlElem* NewXmlElem(std::string_view name);

/// Ends a document. Takes what ParseXml or NewXmlElem returned, or null; never the address of a copy.
LUHOST_API void FreeXml(XmlElem* root) noexcept;

/// Deleter for handles that own a document: `std::unique_ptr<dg::XmlElem, dg::XmlFreer>`.
struct XmlFreer {
    void operator()(XmlElem* root) const noexcept { FreeXml(root); }
};

/// Appends an element that has attributes only, on a line of its own: two blanks for each level of depth, the element,
/// `/> ` with that blank, a line feed. Appends nothing for null.
LUHOST_API void WriteXmlCloseTags(const XmlElem* element, std::string& text, unsigned int depth);

/// Replaces & < > " ' by their entities; every other byte stays.
LUHOST_API std::string EncodeXmlStr(std::string_view text);

/// The same, appended to a text.
LUHOST_API void AppendXmlEncoded(std::string& out, std::string_view text);

} // namespace dg
