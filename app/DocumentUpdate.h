#pragma once

#include "SymbolState.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace lusym
{

class DocumentSource;
struct LibraryReading;

struct UpdatedSymbol {
    SymbolState state; ///< afterwards
    std::vector<StateChange> changes;
};

struct UpdatedEntry {
    std::string id;
    std::string differences; ///< "title, picture"
};

/// What a document's symbols take over when their entries are read anew from their libraries.
struct DocumentUpdate {
    std::vector<UpdatedSymbol> symbols;
    std::vector<UpdatedEntry> entries;
    /// Entries that no library has any more; their symbols stay as they are.
    std::vector<std::string> missing;
    /// Why it cannot be done at all; nothing has been taken over then.
    std::vector<std::string> conflicts;

    bool IsEmpty() const { return symbols.empty() && entries.empty(); }
};

/// Puts the libraries' entries in the place of the open document's own and lets the symbols follow. The document in its
/// file is not touched.
DocumentUpdate UpdateDocument(DocumentSource& source, const std::vector<LibraryReading>& libraries);

/// One line for each change: `DOC:ID: title: "A" becomes "B"`.
std::string UpdateAsText(const DocumentUpdate& update, const std::string& document);
nlohmann::ordered_json UpdateAsJson(const DocumentUpdate& update);

} // namespace lusym
