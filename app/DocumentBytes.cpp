#include "DocumentBytes.h"

#include "Printable.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>

namespace lusym
{

namespace
{

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsWide(std::string_view bytes)
{
    using namespace std::string_view_literals;
    return bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("\xFE\xFF"sv) || bytes.starts_with("<\0"sv) ||
           bytes.starts_with("\0<"sv);
}

/// Length of the character at this place: 0 where the bytes are none of UTF-8.
std::size_t CharacterLength(std::string_view bytes, std::size_t at)
{
    const auto byte = [&](std::size_t index) {
        return index < bytes.size() ? static_cast<unsigned>(static_cast<unsigned char>(bytes[index])) : 0U;
    };
    const unsigned first = byte(at);
    const unsigned second = byte(at + 1);
    const auto isTail = [&](std::size_t index) { return (byte(index) & 0xC0U) == 0x80U; };
    if (first >= 0xC2 && first <= 0xDF) {
        return isTail(at + 1) ? 2 : 0;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        const bool isSecond = isTail(at + 1) && !(first == 0xE0 && second < 0xA0) && !(first == 0xED && second > 0x9F);
        return isSecond && isTail(at + 2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool isSecond = isTail(at + 1) && !(first == 0xF0 && second < 0x90) && !(first == 0xF4 && second > 0x8F);
        return isSecond && isTail(at + 2) && isTail(at + 3) ? 4 : 0;
    }
    return first < 0x80 ? 1 : 0;
}

/// First place that is no UTF-8, or npos.
std::size_t FindNoUtf8(std::string_view bytes)
{
    std::size_t at = 0;
    while (at < bytes.size()) {
        std::uint64_t eight = 0;
        if (at + sizeof eight <= bytes.size()) {
            std::memcpy(&eight, bytes.data() + at, sizeof eight);
            if ((eight & 0x8080808080808080U) == 0) {
                at += sizeof eight;
                continue;
            }
        }
        const std::size_t length = CharacterLength(bytes, at);
        if (length == 0) {
            return at;
        }
        at += length;
    }
    return std::string_view::npos;
}

/// The value of a pseudo attribute of the declaration.
std::string_view DeclaredEncoding(std::string_view text)
{
    if (!text.starts_with("<?xml")) {
        return {};
    }
    const std::string_view declaration = text.substr(0, text.find("?>"));
    std::size_t at = declaration.find("encoding");
    if (at == std::string_view::npos) {
        return {};
    }
    at = declaration.find_first_of("\"'", at);
    if (at == std::string_view::npos) {
        return {};
    }
    const std::size_t end = declaration.find(declaration[at], at + 1);
    return end == std::string_view::npos ? std::string_view() : declaration.substr(at + 1, end - at - 1);
}

/// Encodings of which UTF-8 text, or every text that is meant, reads the same.
bool ReadsAsUtf8(std::string_view encoding)
{
    std::string lower(encoding);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower.empty() || lower == "utf-8" || lower == "utf8" || lower == "us-ascii" || lower == "ascii";
}

void ExamineEncoding(std::string_view bytes, std::string_view text, std::vector<Finding>& findings)
{
    const std::string_view encoding = DeclaredEncoding(text);
    if (!ReadsAsUtf8(encoding)) {
        findings.push_back({FindingCode::OtherEncoding, 1, 0,
                            "the declaration names the encoding " + Quote(encoding) + ", and the loader reads UTF-8",
                            "Convert the file to UTF-8 and name that."});
    }
    const std::size_t fault = FindNoUtf8(bytes);
    if (fault != std::string_view::npos) {
        findings.push_back({FindingCode::OtherEncoding, LineCounter(bytes).LineAt(fault), 0,
                            "the bytes are not UTF-8 from here on, so that texts show the wrong characters",
                            "Convert the file to UTF-8."});
    }
}

/// Walks over everything that begins with "<!" or "<?".
class PassedOver
{
public:
    PassedOver(std::string_view text, std::vector<Finding>& findings)
        : m_text(text), m_lines(text), m_findings(findings)
    {
    }

    void Walk(std::size_t start)
    {
        std::size_t at = start;
        while ((at = NextMarkup(at)) != std::string_view::npos) {
            const std::string_view rest = m_text.substr(at);
            if (rest.starts_with("<![CDATA[")) {
                at = EndOf("]]>", at);
            } else if (rest.starts_with("<!--")) {
                Tell(at, "a comment stands here, and the writer does not write it back");
                at = EndOf("-->", at + 4);
            } else if (rest.starts_with("<?")) {
                Tell(at, "an instruction stands here, and the writer does not write it back");
                at = EndOf("?>", at);
            } else {
                Tell(at, "a document type stands here, which is skipped and not written back");
                at = EndOf(">", at);
            }
        }
    }

private:
    std::size_t NextMarkup(std::size_t from)
    {
        m_nextBang = NextOf("<!", m_nextBang, from);
        m_nextQuestion = NextOf("<?", m_nextQuestion, from);
        return std::min(m_nextBang, m_nextQuestion);
    }

    /// Searches for the second character, which is rarer than the first by far.
    std::size_t NextOf(std::string_view mark, std::size_t known, std::size_t from) const
    {
        if (known != 0 && known >= from) {
            return known;
        }
        for (std::size_t at = from; (at = m_text.find(mark[1], at)) != std::string_view::npos; ++at) {
            if (at > from && m_text[at - 1] == mark[0]) {
                return at - 1;
            }
        }
        return std::string_view::npos;
    }

    std::size_t EndOf(std::string_view mark, std::size_t at) const
    {
        const std::size_t end = m_text.find(mark, at);
        return end == std::string_view::npos ? m_text.size() : end + mark.size();
    }

    void Tell(std::size_t at, std::string text)
    {
        m_findings.push_back(
            {FindingCode::Comment, m_lines.LineAt(at), 0, std::move(text), "Keep a copy if it matters."});
    }

    std::string_view m_text;
    LineCounter m_lines;
    std::vector<Finding>& m_findings;
    std::size_t m_nextBang = 0;
    std::size_t m_nextQuestion = 0;
};

} // namespace

std::size_t LineCounter::LineAt(std::size_t offset)
{
    const std::string_view passed = m_text.substr(m_scanned, offset - m_scanned);
    m_line += static_cast<std::size_t>(std::ranges::count(passed, '\n'));
    m_scanned = offset;
    return m_line;
}

bool ExamineBytes(std::string_view bytes, std::vector<Finding>& findings)
{
    if (IsWide(bytes)) {
        findings.push_back({FindingCode::OtherEncoding, 1, 0, "the text is UTF-16, and the loader reads UTF-8",
                            "Convert the file to UTF-8."});
        return false;
    }
    const bool hasMark = bytes.starts_with(kByteOrderMark);
    if (hasMark) {
        findings.push_back({FindingCode::ByteOrderMark, 1, 0, "the file begins with a byte order mark",
                            "Save it as UTF-8 without one."});
    }
    const std::string_view text = bytes.substr(hasMark ? kByteOrderMark.size() : 0);
    ExamineEncoding(bytes, text, findings);
    const std::size_t nul = bytes.find('\0');
    if (nul != std::string_view::npos) {
        findings.push_back({FindingCode::NulByte, LineCounter(bytes).LineAt(nul), 0,
                            "a NUL byte stands in the document, so that the loader reads nothing of it",
                            "Remove it; the file may be damaged."});
        return false;
    }
    return true;
}

void ExaminePassedOver(std::string_view text, std::vector<Finding>& findings)
{
    const std::size_t start = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    const bool isDeclared = text.substr(start).starts_with("<?xml");
    const std::size_t end = isDeclared ? text.find("?>", start) : start;
    if (end != std::string_view::npos) {
        PassedOver(text, findings).Walk(end);
    }
}

void CutCarriageReturns(std::string& text)
{
    std::size_t from = text.find("\r\n");
    if (from == std::string::npos) {
        return;
    }
    std::size_t to = from;
    while (from < text.size()) {
        const std::size_t next = std::min(text.find("\r\n", from + 1), text.size());
        // What is moved begins with the line feed whose carriage return is dropped.
        const std::size_t count = next - from - 1;
        std::memmove(text.data() + to, text.data() + from + 1, count);
        to += count;
        from = next;
    }
    text.resize(to);
}

} // namespace lusym
