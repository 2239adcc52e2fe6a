#include <du/MessageCatalog.h>
#include <du/MessageTable.h>
#include <du/Symbol.h>

#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace du
{

namespace
{

struct BuiltInMessage {
    std::string_view table;
    std::string_view key;
    std::string_view text;
};

constexpr BuiltInMessage kBuiltInMessages[] = {
    {"lubase:lumodulesStrings", "2047", "Symbol"},
    {"lubase:lumodulesStrings", "5601", "Symbol %1"},
};

struct Tables {
    std::shared_mutex mutex;
    std::unordered_map<Symbol, std::shared_ptr<const MessageTable>> tableByName;
    std::string language;
};

/// Localizers in constants of plug-ins may ask until the process ends.
Tables& GetTables()
{
    static Tables* const s_tables = new Tables;
    return *s_tables;
}

bool FindInstalled(Symbol tableName, std::string_view key, std::string& text)
{
    Tables& tables = GetTables();
    const std::shared_lock lock(tables.mutex);
    const auto table = tables.tableByName.find(tableName);
    if (table == tables.tableByName.end()) {
        return false;
    }
    const std::string* const found = table->second->Find(key, tables.language);
    if (found) {
        text = *found;
    }
    return found != nullptr;
}

} // namespace

void MessageCatalog::Install(std::shared_ptr<const MessageTable> table)
{
    if (!table) {
        return;
    }
    Tables& tables = GetTables();
    const Symbol name(table->GetName());
    const std::lock_guard lock(tables.mutex);
    tables.tableByName[name] = std::move(table);
}

void MessageCatalog::Remove(const std::shared_ptr<const MessageTable>& table)
{
    if (!table) {
        return;
    }
    Tables& tables = GetTables();
    const std::lock_guard lock(tables.mutex);
    const auto position = tables.tableByName.find(Symbol(table->GetName()));
    if (position != tables.tableByName.end() && position->second == table) {
        tables.tableByName.erase(position);
    }
}

void MessageCatalog::SetLanguage(std::string language)
{
    Tables& tables = GetTables();
    const std::lock_guard lock(tables.mutex);
    tables.language = std::move(language);
}

std::string MessageCatalog::GetLanguage()
{
    Tables& tables = GetTables();
    const std::shared_lock lock(tables.mutex);
    return tables.language;
}

bool MessageCatalog::Find(std::string_view tableName, std::string_view key, std::string& text)
{
    // A table is installed under an interned name, so a name that is not interned has none.
    const Symbol name = Symbol::Find(tableName);
    if (!name.IsNull() && FindInstalled(name, key, text)) {
        return true;
    }
    for (const BuiltInMessage& message : kBuiltInMessages) {
        if (message.key == key && message.table == tableName) {
            text = message.text;
            return true;
        }
    }
    return false;
}

} // namespace du
