#include <du/MessageTable.h>

#include <algorithm>
#include <functional>
#include <unordered_map>

namespace du
{

namespace
{

struct KeyHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const noexcept { return std::hash<std::string_view>()(key); }
};

struct Text {
    std::size_t language;
    std::string text;
};

/// The texts of one key; there are as many as languages, hence few.
const std::string* FindText(const std::vector<Text>& texts, std::size_t language) noexcept
{
    const auto position =
        std::find_if(texts.begin(), texts.end(), [&](const Text& t) { return t.language == language; });
    return position == texts.end() ? nullptr : &position->text;
}

} // namespace

struct MessageTable::Content {
    std::string name;
    std::vector<std::string> languages;
    std::unordered_map<std::string, std::vector<Text>, KeyHash, std::equal_to<>> textsByKey;

    /// The number of languages for one that no message has.
    std::size_t LanguageIndex(std::string_view language) const noexcept
    {
        return static_cast<std::size_t>(std::find(languages.begin(), languages.end(), language) - languages.begin());
    }
};

MessageTable::MessageTable(std::string_view name, std::string_view defaultLanguage)
    : m_content(new Content{std::string(name), {std::string(defaultLanguage)}, {}})
{
}

MessageTable::~MessageTable() = default;

const std::string& MessageTable::GetName() const noexcept { return m_content->name; }

const std::string& MessageTable::GetDefaultLanguage() const noexcept { return m_content->languages.front(); }

std::size_t MessageTable::GetKeyCount() const noexcept { return m_content->textsByKey.size(); }

const std::vector<std::string>& MessageTable::GetLanguages() const noexcept { return m_content->languages; }

void MessageTable::Add(std::string_view key, std::string_view language, std::string_view text)
{
    const std::size_t index = m_content->LanguageIndex(language);
    if (index == m_content->languages.size()) {
        m_content->languages.emplace_back(language);
    }
    std::vector<Text>& texts = m_content->textsByKey[std::string(key)];
    const auto same = std::find_if(texts.begin(), texts.end(), [&](const Text& t) { return t.language == index; });
    if (same != texts.end()) {
        same->text = text;
    } else {
        texts.push_back({index, std::string(text)});
    }
}

const std::string* MessageTable::Find(std::string_view key, std::string_view language) const noexcept
{
    const auto position = m_content->textsByKey.find(key);
    if (position == m_content->textsByKey.end()) {
        return nullptr;
    }
    const std::string* const text = FindText(position->second, m_content->LanguageIndex(language));
    return text ? text : FindText(position->second, 0);
}

std::vector<std::string> MessageTable::GetMissingKeys(std::string_view language) const
{
    const std::size_t index = m_content->LanguageIndex(language);
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
