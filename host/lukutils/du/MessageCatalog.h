#pragma once

#include <du/Export.h>

#include <memory>
#include <string>
#include <string_view>

namespace du
{

class MessageTable;

/// The message tables in force in this process, and the user's language.
///
/// Use: a session installs its tables at its start and removes them at its end; Localizer reads them. The messages that
/// the host itself uses ("2047" and "5601" of "lubase:lumodulesStrings") have built-in English texts beneath every
/// installed table.
///
/// Ownership: shares the installed tables until they are removed or replaced.
///
/// Threads and locks: every call is safe on any thread; reading takes a shared lock and calls nobody under it.
class LUHOST_API MessageCatalog
{
public:
    /// Puts the table in force under its name, in the place of the one before. Null is ignored.
    static void Install(std::shared_ptr<const MessageTable> table);

    /// Takes this very table out of force; another one that has replaced it stays.
    static void Remove(const std::shared_ptr<const MessageTable>& table);

    /// @param language as in the tables, such as "de"; "" for each table's default
    static void SetLanguage(std::string language);
    static std::string GetLanguage();

    /// @param[out] text replaced by the message in the current language, untouched when there is none
    static bool Find(std::string_view tableName, std::string_view key, std::string& text);

    MessageCatalog() = delete;
};

} // namespace du
