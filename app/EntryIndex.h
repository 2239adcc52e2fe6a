#pragma once

#include "LibrarySource.h"

#include <du/SmartPtr.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace lusymbols
{
class PartslibraryItem;
}

namespace lusym
{

class DocumentSource;

/// The entries of several libraries by id; of two with one id that of the later library counts.
class EntryIndex
{
public:
    struct Entry {
        du::SmartPtr<lusymbols::PartslibraryItem> item;
        const LibraryReading* library = nullptr;
    };

    /// @param libraries have to outlive the index
    explicit EntryIndex(const std::vector<LibraryReading>& libraries);

    /// Null when no library has it.
    const Entry* Find(const std::string& id) const;

    /// The id that was probably meant; empty when none is like it. Compares with every one.
    std::string FindLike(const std::string& id) const;

private:
    std::unordered_map<std::string, Entry> m_entries;
};

/// Reads the libraries that a document goes by, and tells on stderr what they lose.
/// @return Done when all of them were read
ExitCode ReadLibraries(DocumentSource& source, std::vector<LibraryReading>& libraries);

/// Null when the document has no entry of that id.
du::SmartPtr<lusymbols::PartslibraryItem> FindOwnEntry(const std::string& id);

/// Puts an entry, and its category, into the collection of the session. One of that id is replaced, and the symbols that
/// follow it are told.
void PutIntoDocument(const std::vector<EntryIndex::Entry>& entries);

/// In what two entries of one kind differ, wherever their files lie: "title, tags"; empty when they say the same.
std::string DifferencesOf(const lusymbols::PartslibraryItem& a, const lusymbols::PartslibraryItem& b);

/// Whether an entry is a shape that stands in the product; else it is a picture.
bool IsShape(const lusymbols::PartslibraryItem& entry);
/// "shape" or "picture"
std::string FileKindOf(const lusymbols::PartslibraryItem& entry);
/// The file of the shape or the picture, as the entry names it.
const std::string& FilePathOf(const lusymbols::PartslibraryItem& entry);
void SetFilePath(lusymbols::PartslibraryItem& entry, const std::string& path);
std::string FileNameOf(const lusymbols::PartslibraryItem& entry);
/// Lets an entry without a thumbnail have none. Read from a delivered library it would name the folder.
void DropFolderThumbnail(lusymbols::PartslibraryItem& entry);

/// @return why the file of a library's entry cannot be taken; empty when it can
std::string FaultOfFile(const EntryIndex::Entry& entry);

} // namespace lusym
