#pragma once

#include <clocale>
#include <string>
#include <string_view>
#include <vector>

namespace lusym
{

/// Looks for several words at once, upper and lower case of every script being one.
class TextSearch
{
public:
    /// @param words separated by blanks; without any everything matches
    explicit TextSearch(std::string_view words);
    ~TextSearch();
    TextSearch(const TextSearch&) = delete;
    TextSearch& operator=(const TextSearch&) = delete;

    bool HasWords() const { return !m_words.empty(); }

    /// Whether every word occurs. A line feed between two texts keeps words from matching across them.
    bool Matches(std::string_view texts) const;

private:
    std::wstring LowerCase(std::string_view text) const;

    const locale_t m_locale;
    std::vector<std::wstring> m_words;
};

} // namespace lusym
