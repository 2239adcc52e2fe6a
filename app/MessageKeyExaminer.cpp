#include "MessageKeyExaminer.h"

#include "Printable.h"

#include <du/MessageTable.h>

#include <utility>

namespace lusym
{

MessageKeyExaminer::MessageKeyExaminer(std::shared_ptr<const du::MessageTable> table) : m_table(std::move(table))
{
    if (m_table) {
        for (const std::string& language : m_table->GetLanguages()) {
            const std::vector<std::string> keys = m_table->GetMissingKeys(language);
            m_missing.emplace_back(keys.begin(), keys.end());
        }
    }
}

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
    const std::vector<std::string>& languages = m_table->GetLanguages();
    const std::string ownedKey(key);
    std::string missing;
    for (std::size_t index = 0; index < languages.size(); ++index) {
        if (m_missing[index].contains(ownedKey) || !m_table->Find(key, languages[index])) {
            missing.append(missing.empty() ? "" : ", ").append(Printable(languages[index]));
        }
    }
    return missing;
}

} // namespace lusym
