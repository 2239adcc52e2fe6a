#include "TextSearch.h"

#include <du/Utf8.h>

#include <algorithm>
#include <cwctype>
#include <utility>

namespace lusym
{

// Lower case of every script that the system knows, whatever the user's locale is.
TextSearch::TextSearch(std::string_view words) : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
{
    std::wstring word;
    for (const wchar_t letter : LowerCase(words) + L' ') {
        if (letter != L' ' && letter != L'\t') {
            word += letter;
        } else if (!word.empty()) {
            m_words.push_back(std::exchange(word, {}));
        }
    }
}

TextSearch::~TextSearch()
{
    if (m_locale) {
        freelocale(m_locale);
    }
}

bool TextSearch::Matches(std::string_view texts) const
{
    if (m_words.empty()) {
        return true;
    }
    const std::wstring lower = LowerCase(texts);
    return std::ranges::all_of(m_words, [&](const std::wstring& word) { return lower.find(word) != lower.npos; });
}

std::wstring TextSearch::LowerCase(std::string_view text) const
{
    std::wstring wide = du::Utf8ToWideStr(text);
    for (wchar_t& letter : wide) {
        const auto code = static_cast<std::wint_t>(letter);
        letter = static_cast<wchar_t>(m_locale ? towlower_l(code, m_locale) : std::towlower(code));
    }
    return wide;
}

} // namespace lusym
