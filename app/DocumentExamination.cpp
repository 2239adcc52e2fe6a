#include "DocumentExamination.h"

#include "catalog/PartslibraryImageItem.h"
#include "DocumentSource.h"
#include "DocumentUpdate.h"
#include "EntryIndex.h"
#include "Printable.h"
#include "SymbolState.h"

#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Scene2D.h>

#include <algorithm>
#include <cassert>
#include <cmath>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace lusym
{

namespace
{

using Code = DocumentFindingCode;
using luk::illustration::SymbolTemplateCollection;
using lusymbols::PartslibraryImageItem;

constexpr DocumentFindingKind kKinds[] = {
    {Code::PictureMissing, "picture-missing", Severity::Error,
     "The document does not hold the picture that a symbol names; the symbol is shown as a crossed box."},
    {Code::PictureUnreadable, "picture-unreadable", Severity::Error,
     "The picture of a symbol is damaged, or of no format that can be read; the symbol is shown as a crossed box."},
    {Code::EntryGone, "entry-gone", Severity::Warning,
     "The document has not got the entry that a symbol follows; the symbol stays as it is."},
    {Code::EntryDiffers, "entry-differs", Severity::Warning,
     "The document's own entry says something else than the symbol; opening the document lets the symbol follow."},
    {Code::EntryNotInLibrary, "entry-not-in-library", Severity::Note,
     "No library has an entry of the document any more; its symbols stay as they are."},
    {Code::LibraryDiffers, "library-differs", Severity::Warning,
     "An entry has changed in its library since the document took it over."},
    {Code::LibraryUnreadable, "library-unreadable", Severity::Warning,
     "A library that the document records cannot be read, so that nothing can be compared with it."},
    {Code::OffPage, "off-page", Severity::Warning, "A symbol lies outside its page, so that nobody sees it."},
    {Code::OverPageEdge, "over-page-edge", Severity::Note, "A symbol reaches over the edge of its page."},
    {Code::NoSize, "no-size", Severity::Warning, "A symbol has no size or no place, so that nobody sees it."},
    {Code::NotUnderstood, "not-understood", Severity::Warning,
     "Something in the document is not understood; it is kept and written again as it is."},
};

/// Opens the document several times, since a symbol takes over what its entry says as soon as it meets it.
class Examiner
{
public:
    Examiner(DocumentSource& source, const std::string& name, DocumentExamination& result)
        : m_source(source), m_name(name), m_result(result)
    {
    }

    ExitCode Run()
    {
        ExitCode opened = m_source.Open(m_name, DocumentSource::Entries::Leave);
        if (opened != ExitCode::Done) {
            return opened;
        }
        m_source.Attach();
        const std::vector<SymbolState> asSaved = StatesOf(m_source.GetDocument());
        opened = m_source.Open(m_name);
        if (opened != ExitCode::Done) {
            return opened;
        }
        PutStandIns();
        m_source.Attach();
        TellProblems();
        const std::vector<SymbolState> states = StatesOf(m_source.GetDocument());
        m_result.symbolCount = states.size();
        for (std::size_t index = 0; index < states.size(); ++index) {
            LookAtSymbol(states[index], index < asSaved.size() ? asSaved[index] : states[index]);
        }
        return LookAtLibraries();
    }

private:
    void Add(Code code, const std::string& symbol, std::string text, std::string mend)
    {
        m_result.findings.push_back({code, symbol, std::move(text), std::move(mend)});
    }

    /// Entries that symbols name and the document has not got, so that it can be told which symbols those are.
    void PutStandIns()
    {
        const auto& collection = SymbolTemplateCollection::GetCollection();
        luk::illustration::AssociativeObjectCollection::Merge merge(*collection);
        for (const std::string& id : m_source.GetDocument().GetUsedTemplateIds()) {
            if (!collection->GetAssociativeObjectById(id)) {
                const auto standIn = du::MakeCounted<PartslibraryImageItem>();
                standIn->SetId(id);
                merge.PutObject(standIn);
                m_gone.insert(id);
            }
        }
    }

    void TellProblems()
    {
        std::vector<std::string> problems = m_source.GetEntryProblems();
        const std::vector<std::string>& own = m_source.GetDocument().GetProblems();
        problems.insert(problems.end(), own.begin(), own.end());
        for (const std::string& problem : problems) {
            Add(Code::NotUnderstood, {}, Printable(problem),
                "Mend it with the program that wrote it, or leave it: it stays.");
        }
        const std::size_t unknown = m_source.GetDocument().GetUnknownAnnotationCount();
        if (unknown != 0) {
            Add(Code::NotUnderstood, {},
                CountOf(unknown, "annotation is", "annotations are") + " of a kind that this program does not know",
                "Look at them with the program that made them; they stay.");
        }
    }

    void LookAtSymbol(const SymbolState& state, const SymbolState& asSaved)
    {
        if (!state.isPicture) {
            return;
        }
        // What a stand-in or a changed entry has brought is nothing that the document holds.
        LookAtPicture(asSaved);
        LookAtPlace(asSaved);
        if (m_gone.contains(state.entry)) {
            Add(Code::EntryGone, state.id,
                "the document has not got the entry " + Quote(state.entry) + " that the symbol follows",
                "Remove the symbol, and place it again from its library.");
            return;
        }
        std::string changes;
        for (const StateChange& change : CompareStates(asSaved, state)) {
            changes.append(changes.empty() ? "" : "; ").append(ChangeText(change));
        }
        if (!state.entry.empty() && !changes.empty()) {
            Add(Code::EntryDiffers, state.id,
                "the entry " + Quote(state.entry) + " of the document says something else: " + changes,
                "Save the document anew, with \"lusym document update\", to let the symbol follow.");
        }
    }

    void LookAtPicture(const SymbolState& state)
    {
        if (state.fileProblem.empty()) {
            return;
        }
        const bool isHeld = !state.file.empty() && state.fileProblem != kFileNotHeld;
        Add(isHeld ? Code::PictureUnreadable : Code::PictureMissing, state.id,
            "the picture " + Quote(state.file) + " cannot be shown: " + Printable(state.fileProblem),
            isHeld ? "Mend the picture in its library, and run \"lusym document update\"."
                   : "Remove the symbol, and place it again from its library.");
    }

    void LookAtPlace(const SymbolState& state)
    {
        const bool isPlaced = std::isfinite(state.center.x) && std::isfinite(state.center.y) &&
                              std::isfinite(state.center.z) && std::isfinite(state.width) &&
                              std::isfinite(state.height);
        if (!isPlaced || state.width <= 0.0 || state.height <= 0.0) {
            Add(Code::NoSize, state.id, "the symbol has no size or no place",
                "Remove it, and place it again with --size.");
            return;
        }
        if (state.page != 0) {
            LookAtPage(state);
        }
    }

    void LookAtPage(const SymbolState& state)
    {
        // A symbol that touches the edge is meant to.
        constexpr double kTolerance = 0.01;
        const auto& sheet = *m_source.GetDocument().GetPage(static_cast<std::size_t>(state.page) - 1)->GetDocument();
        const auto outside = [&](double center, double size, double length) {
            const double low = center - 0.5 * size;
            const double high = center + 0.5 * size;
            return high <= kTolerance || low >= length - kTolerance ? 2
                                                                    : low < -kTolerance || high > length + kTolerance;
        };
        const int worst = std::max(outside(state.center.x, state.width, sheet.GetWidth()),
                                   outside(state.center.y, state.height, sheet.GetHeight()));
        if (worst != 0) {
            Add(worst == 2 ? Code::OffPage : Code::OverPageEdge, state.id,
                std::string("the symbol ") + (worst == 2 ? "lies outside " : "reaches over the edge of ") +
                    PageText(state.page),
                "Remove it and place it again, if that is not meant.");
        }
    }

    ExitCode LookAtLibraries()
    {
        std::vector<LibraryReading> libraries;
        for (const LibraryPlace& place : m_source.GetLibraryPlaces()) {
            LibraryReading reading = m_source.GetLibrarySource().Read(place);
            if (reading.examination.isRead) {
                libraries.push_back(std::move(reading));
            } else if (m_source.AreLibrariesChosen()) {
                TellEffects(reading, m_source.GetProgress());
                return JudgeReadings({reading});
            } else {
                Add(Code::LibraryUnreadable, {}, "the library " + Quote(place.path) + " cannot be read",
                    "Say where it is now: \"lusym document update\" with --library.");
            }
        }
        if (!libraries.empty()) {
            CompareWith(libraries);
        }
        return ExitCode::Done;
    }

    void CompareWith(const std::vector<LibraryReading>& libraries)
    {
        const DocumentUpdate update = UpdateDocument(m_source, libraries);
        for (const std::string& conflict : update.conflicts) {
            Add(Code::LibraryDiffers, {}, conflict.substr(0, conflict.rfind(". ")),
                conflict.substr(std::min(conflict.size(), conflict.rfind(". ") + 2)) + ".");
        }
        for (const UpdatedEntry& entry : update.entries) {
            Add(Code::LibraryDiffers, {},
                "the entry " + Quote(entry.id) + " has changed in its library: " + entry.differences,
                "See with \"lusym document update --dry-run\" what the symbols would take over.");
        }
        for (const std::string& id : update.missing) {
            if (!m_gone.contains(id)) {
                Add(Code::EntryNotInLibrary, {}, "no library has the entry " + Quote(id) + " any more",
                    "Leave it, or name the library that has it with --library.");
            }
        }
    }

    DocumentSource& m_source;
    const std::string& m_name;
    DocumentExamination& m_result;
    std::unordered_set<std::string> m_gone;
};

} // namespace

std::span<const DocumentFindingKind> AllDocumentFindingKinds() { return kKinds; }

const DocumentFindingKind& KindOf(DocumentFindingCode code)
{
    const DocumentFindingKind& kind = kKinds[static_cast<std::size_t>(code)];
    assert(kind.code == code);
    return kind;
}

std::string FormatFinding(std::string_view document, const DocumentFinding& finding)
{
    const DocumentFindingKind& kind = KindOf(finding.code);
    std::string line = Printable(document);
    if (!finding.symbol.empty()) {
        line.append(":").append(Printable(finding.symbol));
    }
    line.append(": ").append(NameOf(kind.severity)).append(": ").append(finding.text).append(". ");
    return line.append(finding.mend).append(" [").append(kind.name).append("]\n");
}

FindingCounts CountFindings(const std::vector<DocumentFinding>& findings)
{
    FindingCounts counts;
    for (const DocumentFinding& finding : findings) {
        const Severity severity = KindOf(finding.code).severity;
        ++(severity == Severity::Error     ? counts.errors
           : severity == Severity::Warning ? counts.warnings
                                           : counts.notes);
    }
    return counts;
}

ExitCode ExamineDocument(DocumentSource& source, const std::string& name, DocumentExamination& examination)
{
    return Examiner(source, name, examination).Run();
}

} // namespace lusym
