#include <du/Utf8.h>
#include <luhost/render/XmlText.h>

#include <cstdint>

namespace luhost::render
{

namespace
{

bool IsDropped(wchar_t character) noexcept
{
    const auto code = static_cast<std::uint32_t>(character);
    return (code < 0x20 && code != '\t' && code != '\n') || (code >= 0x7F && code < 0xA0) || code == 0xFFFE ||
           code == 0xFFFF;
}

} // namespace

std::string ToXmlCharacters(std::string_view text)
{
    std::wstring wide = du::Utf8ToWideStr(text);
    std::erase_if(wide, IsDropped);
    return du::WideStrToUtf8(wide);
}

void AppendXmlText(std::string& out, std::string_view text)
{
    for (const char character : ToXmlCharacters(text)) {
        switch (character) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\t':
            out += "&#9;";
            break;
        case '\n':
            out += "&#10;";
            break;
        default:
            out += character;
        }
    }
}

} // namespace luhost::render
