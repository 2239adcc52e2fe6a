// A message table, and the texts that come of it.
#include "Fuzzing.h"

#include <du/MessageTable.h>
#include <luhost/MessageFile.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const luhost::MessageFile::Result result = luhost::MessageFile::Parse(fuzz::AsText(data, size));
    fuzz::Require(static_cast<bool>(result) == result.reason.empty(), "a table or a reason");
    if (!result) {
        return 0;
    }
    const du::MessageTable& table = *result.table;
    for (const std::string& language : table.GetLanguages()) {
        for (const std::string& key : table.GetMissingKeys(language)) {
            fuzz::Require(table.Find(key, language) == table.Find(key, table.GetDefaultLanguage()),
                          "what a language misses is that of the default language");
        }
    }
    const std::string other(size + 1, '-'); // longer than any language of the table
    fuzz::Require(table.GetMissingKeys(other).size() == table.GetKeyCount(),
                  "a language without texts misses each key");
    return 0;
}
