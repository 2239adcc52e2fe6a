#pragma once

#include "FileClaim.h"
#include "LibrarySource.h"
#include "RecordedLibraries.h"
#include "SymbolAttachment.h"

#include <luhost/Document.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lusym
{

/// What every verb that works on documents may be told.
struct DocumentOptions {
    /// Instead of those that the document records.
    std::vector<std::string> libraries;
    LibraryOptions library;
};

/// A document, open in a session of the host, with the library entries that it brought along.
///
/// Use: Create, or Open and Attach; then GetDocument; Save.
///
/// Ownership: annotations and entries have to go before this object, since the session tells what is left at its end.
///
/// Errors: told on stderr, with the name of the document; the exit code says the same.
///
/// Threads: the loader of the session starts a thread with a load, so that whatever asks for one does so under an
/// InterruptHold.
class DocumentSource
{
public:
    DocumentSource(const DocumentOptions& options, Progress& progress);
    ~DocumentSource();
    DocumentSource(const DocumentSource&) = delete;
    DocumentSource& operator=(const DocumentSource&) = delete;

    bool IsUsable() const { return m_library.IsUsable(); }
    ExitCode GetFault() const { return m_library.GetFault(); }

    /// An empty document, which records the libraries of the options.
    void Create();

    enum class Entries {
        Load, ///< put into the collection of the session, so that symbols follow them
        Leave ///< symbols stay as they were saved
    };
    /// Opens a document, in the place of one that is open, and leaves its annotations for Attach.
    ExitCode Open(const std::string& name, Entries entries = Entries::Load);

    /// Makes the annotations and waits for their pictures.
    void Attach();
    /// Open and Attach; what the document has to tell goes to stderr.
    ExitCode OpenWhole(const std::string& name);

    void WaitForLoads();

    luhost::Document& GetDocument() { return *m_document; }
    LibrarySource& GetLibrarySource() { return m_library; }
    Progress& GetProgress() { return m_progress; }
    /// As the user wrote it.
    const std::string& GetName() const { return m_name; }
    /// What could not be read of the document's own entries, beside what the document itself tells.
    const std::vector<std::string>& GetEntryProblems() const { return m_entryProblems; }

    /// Attachments that the document in its file has, to parts that it has not got. Symbols let go of them when they are
    /// made, so that the next Save does not have them any more.
    const LostAttachments& GetLostAttachments() const { return m_lost; }

    /// The folder in which the pictures and shapes of the open document lie.
    std::string GetPictureFolder() const;

    /// The libraries of the options, else those that the document records.
    std::vector<LibraryPlace> GetLibraryPlaces() const;
    /// Whether the places are the user's choice of this run.
    bool AreLibrariesChosen() const { return !m_options.libraries.empty(); }
    /// Remembers, for the next Save, that symbols were taken from there.
    void RecordLibrary(const LibraryPlace& place);
    /// The same for these places alone. @return whether the next Save remembers others than before
    bool RecordOnly(const std::vector<LibraryPlace>& places);

    /// @param chosen "-" for standard output, empty for the file that was opened
    ExitCode Save(const std::string& chosen);

private:
    luhost::Document::Setup MakeSetup();
    void LoadOwnEntries();
    bool WriteOwnEntries(const std::string& documentFolder, std::string& error);
    std::string EntriesAsText(std::string& error);

    const DocumentOptions m_options;
    Progress& m_progress;
    LibrarySource m_library;
    std::unique_ptr<luhost::Document> m_document;
    std::unique_ptr<FileClaim> m_claim; ///< on the file that was opened
    std::string m_name;
    std::vector<RecordedLibrary> m_recorded;
    std::vector<std::string> m_entryProblems;
    LostAttachments m_lost;
};

/// Opens a document and does the work of a verb on it.
/// @return what the work returns, or why there was none
ExitCode WorkOnDocument(const DocumentOptions& options, const std::string& name, Progress& progress,
                        const std::function<ExitCode(DocumentSource&)>& work);

/// The options --library, --root, --messages and --lang.
/// @param isNew whether there is no document yet that records libraries
void AddDocumentLibraryOptions(CLI::App& verb, DocumentOptions& options, bool isNew = false);

/// The option --output of a verb that otherwise changes the document in its place.
void AddDocumentOutputOption(CLI::App& verb, std::string& output);

/// The document, which comes first.
void AddDocumentArgument(CLI::App& verb, std::string& name);

} // namespace lusym
