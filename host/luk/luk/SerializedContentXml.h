#pragma once

#include <luk/SerializedContentElement.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace dg
{
class XmlElem;
}

namespace luk
{

/// Saved content as XML: an `element` with its `name`; in it each property as an element that is named by the type of the
/// value and has `key` and `value`, then the children.
///
///     <element name="note">
///       <symbol key="text" value="Tighten"/>
///       <float key="width" value="0.1"/>
///       <element name="tag">
///       </element>
///     </element>
///
/// Numbers are written in the shortest form that reads back to the same bits; a NaN other than the usual one as "nan:" and
/// its bits in hexadecimal. A null symbol has no attribute where the empty one has an empty attribute. A text that XML
/// cannot hold (control characters, invalid UTF-8) is written as Base64, in an attribute of the same name with "Base64"
/// behind it.
///
/// What is not understood is kept: elements of another name in their place among the properties or the children, further
/// attributes with their property or element. See SerializedContentElement::Property::foreign.
///
/// Cost: linear; no recursion.
class LUHOST_API SerializedContentXml
{
public:
    /// Is told, in words, what could not be read. May be empty.
    using Tell = std::function<void(const std::string& problem)>;

    /// Appends an element and all that it holds, each on a line of its own.
    /// @param depth levels of elements around it, by each of which it is indented
    /// @return false, with the text as it was, when the content is nested too deep to be parsed again
    static bool Append(std::string& out, const SerializedContentElement& element, int depth);

    /// A property whose value is missing or wrong is left out and told.
    static SerializedContentElement Read(const dg::XmlElem& element, const Tell& tell);

    /// Reads one element after the other like Read, and quicker where keys, names and texts come again.
    class LUHOST_API Reader
    {
    public:
        explicit Reader(Tell tell);
        ~Reader();
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;

        SerializedContentElement Read(const dg::XmlElem& element);

    private:
        class Content;
        std::unique_ptr<Content> m_content;
    };

    /// Appends an element that is not understood as it is, without layout. Comments are gone, and a text between child
    /// elements moves before them.
    static void AppendForeign(std::string& out, const dg::XmlElem& element);

    /// Appends ` name="value"`, or the form of Base64 where the value needs it.
    static void AppendAttribute(std::string& out, std::string_view name, std::string_view value);
    /// The same for a value that is written as it stands, from an attribute that is not understood.
    static void AppendForeignAttribute(std::string& out, std::string_view name, std::string_view value);
    /// Reads either form of an attribute. @return false when there is neither, or no Base64 in it
    static bool ReadAttribute(const dg::XmlElem& element, std::string_view name, std::string& value);

    /// The name of the element for a value of this type, such as "float".
    static std::string_view GetTypeName(const SerializedContentElement::Value& value) noexcept;

    /// What stands in `value` for every type but the symbol, for which nothing is appended.
    static void AppendValue(std::string& out, const SerializedContentElement::Value& value);
    /// Reads a text as the type that the value has now. @return false, with the value undefined, when it is none; false
    /// for a symbol
    static bool ParseValue(std::string_view text, SerializedContentElement::Value& value) noexcept;

    /// The same for single numbers of double precision.
    static void AppendReal(std::string& out, double value);
    static bool ParseReal(std::string_view text, double& value) noexcept;

    SerializedContentXml() = delete;
};

} // namespace luk
