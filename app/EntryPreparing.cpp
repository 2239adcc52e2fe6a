#include "EntryPreparing.h"

#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryItem.h"
#include "DocumentSource.h"
#include "FileProbe.h"
#include "FileText.h"
#include "Printable.h"

#include <du/FileSystem.h>
#include <luk/illustration/SymbolTemplateCollection.h>

namespace lusym
{

using luk::illustration::SymbolTemplateCollection;
using lusymbols::PartslibraryItem;

EntryPreparing::EntryPreparing(DocumentSource& source, const std::vector<LibraryReading>& libraries)
    : m_source(source), m_index(libraries)
{
    for (const auto& object : SymbolTemplateCollection::GetCollection()->GetAssociativeObjects()) {
        m_idOfName.try_emplace(object->GetName(), object->GetId());
    }
}

EntryPreparing::Entry& EntryPreparing::Prepare(const std::string& id)
{
    const auto [place, isNew] = m_entries.try_emplace(id);
    Entry& entry = place->second;
    if (isNew) {
        entry.item = FindOwnEntry(id);
        const EntryIndex::Entry* const found = m_index.Find(id);
        entry.error = found ? Take(*found, entry) : TakeOwn(id, entry);
    }
    return entry;
}

std::string EntryPreparing::FaultOfUnknown(const std::string& id)
{
    // Each proposal compares with all entries, and a table may be wrong from top to bottom.
    constexpr int kMostProposals = 5;
    if (m_source.GetLibraryPlaces().empty()) {
        return "there is no entry " + Quote(id) + ", and the document records no library. Name one with --library";
    }
    const std::string meant = m_proposals++ < kMostProposals ? m_index.FindLike(id) : std::string();
    return "no library has the entry " + Quote(id) +
           (meant.empty() ? ". List those that there are with \"lusym library list\", or name another library with "
                            "--library"
                          : ". The one most like it is " + Quote(meant));
}

/// An entry that only the document has, whose file it holds.
std::string EntryPreparing::TakeOwn(const std::string& id, Entry& entry)
{
    if (!entry.item) {
        return FaultOfUnknown(id);
    }
    entry.file = FilePathOf(*entry.item);
    return du::FileSystem::FileReadable(entry.file)
               ? std::string()
               : "the document does not hold the " + FileKindOf(*entry.item) + " of the entry " + Quote(id) +
                     ". Name its library with --library";
}

std::string EntryPreparing::Take(const EntryIndex::Entry& found, Entry& entry)
{
    const du::SmartPtr<PartslibraryItem>& item = found.item;
    const std::string subject = "the entry " + Quote(item->GetId()) + " ";
    if (const std::string fault = FaultOfFile(found); !fault.empty()) {
        return subject + fault;
    }
    if (entry.item) {
        const std::string differences = DifferencesOf(*entry.item, *item);
        if (!differences.empty()) {
            return subject + "has changed since the document took it over (" + differences +
                   "). Run \"lusym document update\" first, so that all its symbols follow";
        }
    }
    const auto [taken, isNew] = m_idOfName.try_emplace(item->GetName(), item->GetId());
    if (taken->second != item->GetId()) {
        return subject + "has the name " + Quote(item->GetName()) + " of the entry " + Quote(taken->second) +
               ", which the document has already. Rename one of them";
    }
    const std::string error = Embed(*item, entry.file);
    if (!error.empty()) {
        if (isNew) {
            m_idOfName.erase(taken);
        }
        return subject + error;
    }
    if (!entry.item) {
        PutIntoDocument({found});
        m_source.RecordLibrary(found.library->place);
    }
    entry.item = item;
    return {};
}

std::string EntryPreparing::Embed(const PartslibraryItem& item, std::string& file)
{
    const std::string kind = FileKindOf(item);
    const std::string name = FileNameOf(item);
    const std::string& path = FilePathOf(item);
    const std::string wanted = m_source.GetPictureFolder() + "/" + name;
    if (du::FileSystem::FileExists(wanted) && !HasSameContent(path, wanted)) {
        return "has the " + kind + " " + Quote(path) + ", and the document holds another file named " + Quote(name) +
               ". If the " + kind + " is a new version, run \"lusym document update\"; else rename it";
    }
    du::Symbol target;
    const bool isEmbedded = lusymbols::Partslibrary::EmbedSymbol(du::Symbol(path), target, false);
    file = target.GetText();
    return isEmbedded && HasSameContent(path, file)
               ? std::string()
               : "has the " + kind + " " + Quote(path) +
                     ", which cannot be copied into the document. Give it a plain file name, and see that there is "
                     "room for it";
}

void EntryPreparing::ProbeFiles()
{
    std::vector<std::string> shapes;
    std::vector<std::string> pictures;
    for (const auto& [id, entry] : m_entries) {
        if (entry.error.empty()) {
            (IsShape(*entry.item) ? shapes : pictures).push_back(entry.file);
        }
    }
    const auto shapeProblems = ProbeShapes(shapes, m_source);
    const auto pictureFacts = ProbePictures(pictures, m_source);
    for (auto& [id, entry] : m_entries) {
        if (!entry.error.empty()) {
            continue;
        }
        const bool isShape = IsShape(*entry.item);
        const std::string problem = isShape ? shapeProblems.at(entry.file) : pictureFacts.at(entry.file).problem;
        if (!problem.empty()) {
            entry.error = "the " + FileKindOf(*entry.item) + " " + Quote(FileNameOf(*entry.item)) + " of the entry " +
                          Quote(id) + " cannot be shown: " + Printable(problem) + ". Mend the file";
        }
        entry.facts = isShape ? PictureFacts() : pictureFacts.at(entry.file);
    }
}

} // namespace lusym
