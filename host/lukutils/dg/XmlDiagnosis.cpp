#include "XmlDiagnosis.h"

#include <dg/XmlElem.h>

#include <algorithm>
#include <string>
#include <vector>

namespace dg
{

namespace
{

/// Finds which elements are open at a place of a text whose tags are known to be well-formed up to there.
class OpenElements
{
public:
    OpenElements(std::string_view text, std::size_t limit) noexcept : m_text(text.substr(0, limit)) {}

    /// Offsets of the names in their start tags, outermost first.
    std::vector<std::size_t> Find()
    {
        std::size_t at = m_text.find('<');
        while (at != std::string_view::npos) {
            at = m_text.find('<', Pass(at));
        }
        return m_open;
    }

private:
    /// Takes in what begins with the '<' at this place, and returns where it ends.
    std::size_t Pass(std::size_t at)
    {
        const std::string_view rest = m_text.substr(at);
        if (rest.starts_with("<!--")) {
            return Behind("-->", at + 4);
        }
        if (rest.starts_with("<![CDATA[")) {
            return Behind("]]>", at + 9);
        }
        if (rest.starts_with("<?")) {
            return Behind("?>", at + 2);
        }
        if (rest.starts_with("<!")) {
            return Behind(">", at + 2);
        }
        if (rest.starts_with("</")) {
            // The end tag at which the parser stopped is cut off by the limit and closes nothing.
            const std::size_t end = Behind(">", at + 2);
            if (!m_open.empty() && end != m_text.size() + 1) {
                m_open.pop_back();
            }
            return end;
        }
        return PassStartTag(at + 1);
    }

    std::size_t PassStartTag(std::size_t name)
    {
        char quote = '\0';
        for (std::size_t at = name; at < m_text.size(); ++at) {
            const char c = m_text[at];
            if (quote != '\0') {
                quote = c == quote ? '\0' : quote;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '>') {
                if (m_text[at - 1] != '/') {
                    m_open.push_back(name);
                }
                return at + 1;
            }
        }
        return m_text.size() + 1;
    }

    /// Behind the next occurrence; one past the end of the text when there is none.
    std::size_t Behind(std::string_view mark, std::size_t from) const noexcept
    {
        const std::size_t found = m_text.find(mark, from);
        return found == std::string_view::npos ? m_text.size() + 1 : found + mark.size();
    }

    std::string_view m_text;
    std::vector<std::size_t> m_open;
};

std::string NameAt(std::string_view text, std::size_t offset)
{
    constexpr std::size_t kMostTold = 120;
    const std::string_view name = text.substr(offset, text.substr(offset).find_first_of(" \t\r\n/><"));
    return name.size() <= kMostTold ? std::string(name) : std::string(name.substr(0, kMostTold)).append("...");
}

} // namespace

std::size_t XmlDiagnosis::LineOf(std::size_t offset) const noexcept
{
    const std::string_view before = m_text.substr(0, offset);
    return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}

XmlParseError XmlDiagnosis::At(std::size_t offset, std::string_view reason) const
{
    offset = std::min(offset, m_text.size());
    const std::size_t lineEnd = offset == 0 ? std::string_view::npos : m_text.rfind('\n', offset - 1);
    const std::size_t lineStart = lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
    return {std::string(reason), LineOf(offset), offset - lineStart + 1};
}

XmlParseError XmlDiagnosis::ForTagMismatch(std::size_t offset) const
{
    offset = std::min(offset, m_text.size());
    const bool atEndTag = offset >= 2 && m_text.substr(offset - 2, 2) == "</";
    const std::vector<std::size_t> open = OpenElements(m_text, offset).Find();
    if (open.empty()) {
        return At(offset, "the end tag </" + NameAt(m_text, offset) + "> has no start tag");
    }
    const std::string name = NameAt(m_text, open.back());
    const std::string line = std::to_string(LineOf(open.back()));
    if (atEndTag) {
        return At(offset,
                  "the end tag </" + NameAt(m_text, offset) + "> does not close <" + name + "> of line " + line);
    }
    return At(open.back(), "the element <" + name + "> at line " + line + " is not closed");
}

} // namespace dg
