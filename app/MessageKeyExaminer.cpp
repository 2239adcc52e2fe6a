#include "MessageKeyExaminer.h"

#include "Printable.h"

#include <du/MessageTable.h>

#include <utility>

namespace lusym
{

MessageKeyExaminer::MessageKeyExaminer(std::shared_ptr<const du::MessageTable> table) : m_table(std::move(table)) {}

void MessageKeyExaminer::Examine(std::string_view key, std::size_t line, std::vector<Finding>& findings)
{
    if (m_uses++ == 0) {
        m_firstLine = line;
    }
    if (!m_table || !m_seen.insert(key).second) {
        return;
    }
    const std::string languages = MissingLanguages(key);
    if (!languages.empty()) {
        findings.push_back({FindingCode::MissingMessage, line, 0,
                            "the message table has no text for " + Quote(key) + " in " + languages,
                            "Add the text to the message table."});
    }
}

void MessageKeyExaminer::Finish(std::vector<Finding>& findings) const
{
    if (!m_table && m_uses != 0) {
        findings.push_back({FindingCode::MissingMessage, m_firstLine, 0,
                            CountOf(m_uses, "text is", "texts are") +
                                " named by key from here on and there is no message table, so that keys are shown",
                            "Put messages.xml into the library's root, or name one with --messages."});
    }
}

std::string MessageKeyExaminer::MissingLanguages(std::string_view key) const
{
    constexpr std::size_t kMostNamed = 5;
    const std::string& defaultLanguage = m_table->GetDefaultLanguage();
    const std::string* const fallback = m_table->Find(key, defaultLanguage);
    std::string missing;
    std::size_t count = 0;
    for (const std::string& language : m_table->GetLanguages()) {
        // A language without a text of its own answers with the very text of the default language.
        const bool isMissing = language == defaultLanguage ? !fallback : m_table->Find(key, language) == fallback;
        if (isMissing && ++count <= kMostNamed) {
            missing.append(count == 1 ? "" : ", ").append(Printable(language));
        }
    }
    return count <= kMostNamed ? missing : missing + " and " + std::to_string(count - kMostNamed) + " more";
}

} // namespace lusym
