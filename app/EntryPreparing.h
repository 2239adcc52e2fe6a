#pragma once

#include "EntryIndex.h"
#include "FileProbe.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace lusym
{

/// Brings library entries and their files into an open document, so that symbols can be made of them. An entry is looked
/// for in the libraries first and else among the document's own.
class EntryPreparing
{
public:
    struct Entry {
        du::SmartPtr<lusymbols::PartslibraryItem> item;
        std::string file;   ///< in the document's folder of pictures and shapes
        PictureFacts facts; ///< of a picture, once files have been probed
        std::string error;
    };

    /// @param libraries have to outlive this
    EntryPreparing(DocumentSource& source, const std::vector<LibraryReading>& libraries);

    /// Each entry is prepared once, however many symbols are made of it.
    Entry& Prepare(const std::string& id);
    /// Of those that are prepared, once their files have been read: notes for each what is wrong with its file.
    void ProbeFiles();

private:
    std::string Take(const EntryIndex::Entry& found, Entry& entry);
    std::string TakeOwn(const std::string& id, Entry& entry);
    std::string Embed(const lusymbols::PartslibraryItem& item, std::string& file);
    std::string FaultOfUnknown(const std::string& id);

    DocumentSource& m_source;
    const EntryIndex m_index;
    std::unordered_map<std::string, std::string> m_idOfName;
    std::unordered_map<std::string, Entry> m_entries;
    int m_proposals = 0;
};

} // namespace lusym
