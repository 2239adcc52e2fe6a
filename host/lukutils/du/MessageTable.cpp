#include <du/MessageTable.h>
#include <du/TextHash.h>

#include <algorithm>
#include <functional>
#include <unordered_map>

namespace du
{

namespace
{

/// The texts of one key, by the number of their language.
using Texts = std::unordered_map<std::size_t, std::string>;

template <class Value>
using ByText = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

const std::string* FindText(const Texts& texts, std::size_t language) noexcept
{
    const auto position = texts.find(language);
    return position == texts.end() ? nullptr : &position->second;
}

} // namespace

struct MessageTable::Content {
    std::string name;
    std::vector<std::string> languages;
    ByText<std::size_t> languageNumbers;
    ByText<Texts> textsByKey;

    /// The count of languages for one that no message has.
    std::size_t NumberOf(std::string_view language) const noexcept
    {
        const auto position = languageNumbers.find(language);
        return position == languageNumbers.end() ? languages.size() : position->second;
    }

    std::size_t AddLanguage(std::string_view language)
    {
        const auto [position, isNew] = languageNumbers.try_emplace(std::string(language), languages.size());
        if (isNew) {
            languages.emplace_back(language);
        }
        return position->second;
    }
};

MessageTable::MessageTable(std::string_view name, std::string_view defaultLanguage) : m_content(new Content)
{
    m_content->name = name;
    m_content->AddLanguage(defaultLanguage);
}

MessageTable::~MessageTable() = default;

const std::string& MessageTable::GetName() const noexcept { return m_content->name; }

const std::string& MessageTable::GetDefaultLanguage() const noexcept { return m_content->languages.front(); }

std::size_t MessageTable::GetKeyCount() const noexcept { return m_content->textsByKey.size(); }

const std::vector<std::string>& MessageTable::GetLanguages() const noexcept { return m_content->languages; }

void MessageTable::Add(std::string_view key, std::string_view language, std::string_view text)
{
    m_content->textsByKey[std::string(key)].insert_or_assign(m_content->AddLanguage(language), std::string(text));
}

const std::string* MessageTable::Find(std::string_view key, std::string_view language) const noexcept
{
    const auto position = m_content->textsByKey.find(key);
    if (position == m_content->textsByKey.end()) {
        return nullptr;
    }
    const std::string* const text = FindText(position->second, m_content->NumberOf(language));
    return text ? text : FindText(position->second, 0);
}

std::vector<std::string> MessageTable::GetMissingKeys(std::string_view language) const
{
    const std::size_t index = m_content->NumberOf(language);
    std::vector<std::string> missing;
    for (const auto& [key, texts] : m_content->textsByKey) {
        if (!FindText(texts, index)) {
            missing.push_back(key);
        }
    }
    std::sort(missing.begin(), missing.end());
    return missing;
}

} // namespace du
