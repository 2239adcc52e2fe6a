#include "DocumentExamination.h"

#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "DocumentSource.h"
#include "DocumentUnknown.h"
#include "DocumentUpdate.h"
#include "EntryIndex.h"
#include "Printable.h"
#include "Reattachment.h"
#include "SymbolState.h"

#include <luannotations/ConstStrings.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/SerializedContentElement.h>

#include <algorithm>
#include <cmath>
#include <iterator>
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
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;

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
        LookAtAttachments();
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
        const auto put = [&](const std::string& id, const du::SmartPtr<PartslibraryItem>& standIn) {
            if (!id.empty() && !collection->GetAssociativeObjectById(id) && m_gone.insert(id).second) {
                standIn->SetId(id);
                merge.PutObject(standIn);
            }
        };
        m_source.GetDocument().ForEachUnmade([&](const auto&, const auto& content, const std::string& id) {
            if (content.GetName() == luannotations::ConstStrings::luSymbol3D) {
                put(id, du::MakeCounted<PartslibraryOlItem>());
            } else {
                put(id, du::MakeCounted<PartslibraryImageItem>());
            }
        });
        merge.Commit();
    }

    void TellProblems()
    {
        std::vector<std::string> problems = m_source.GetEntryProblems();
        const std::vector<std::string>& own = m_source.GetDocument().GetProblems();
        problems.insert(problems.end(), own.begin(), own.end());
        for (const std::string& problem : problems) {
            Add(Code::NotUnderstood, {}, Printable(problem),
                "Correct it with the program that wrote it, or see whether the document shows what it should.");
        }
        m_source.GetDocument().FindExpectedTypes();
        std::vector<DocumentFinding> unknown = FindUnknown(m_source.GetDocument());
        std::ranges::move(unknown, std::back_inserter(m_result.findings));
    }

    void LookAtSymbol(const SymbolState& state, const SymbolState& asSaved)
    {
        if (!state.isPicture && !state.isShape) {
            return;
        }
        // What a stand-in or a changed entry has brought is nothing that the document holds.
        LookAtFile(asSaved);
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

    void LookAtFile(const SymbolState& state)
    {
        if (state.fileProblem.empty()) {
            return;
        }
        const bool isHeld = !state.file.empty() && state.fileProblem != kFileNotHeld && state.fileProblem != kIdOfPart;
        const Code code = state.isShape ? isHeld ? Code::ShapeUnreadable : Code::ShapeMissing
                          : isHeld      ? Code::PictureUnreadable
                                        : Code::PictureMissing;
        const std::string kind = state.isShape ? "shape" : "picture";
        Add(code, state.id,
            "the " + kind + " " + Quote(state.file) + " cannot be shown: " + Printable(state.fileProblem),
            isHeld ? "Mend the " + kind + " in its library, and run \"lusym document update\"."
                   : std::string("Remove the symbol, and place it again from its library."));
    }

    void LookAtAttachments()
    {
        for (const Heir& heir : FindHeirs(m_source.GetDocument(), m_source.GetLostAttachments())) {
            const std::string likeliest =
                heir.part ? "the likeliest heir is " + Quote(AttachmentPathOf(*heir.part)) : "no part is called alike";
            Add(Code::PartGone, heir.symbol,
                "the symbol is attached to the part " + Quote(heir.path) + ", which is not there; " + likeliest,
                heir.part ? "Run \"lusym document update --reattach\" to put it on the heir."
                          : "Place it again with --attach, or leave it where it is.");
        }
    }

    void LookAtPlace(const SymbolState& state)
    {
        const bool isPlaced = std::isfinite(state.center.x) && std::isfinite(state.center.y) &&
                              std::isfinite(state.center.z) && std::isfinite(state.width) &&
                              std::isfinite(state.height);
        const bool hasSize = state.isShape ? std::isfinite(state.scale) && std::abs(state.scale) > 0.0
                                           : state.width > 0.0 && state.height > 0.0;
        if (!isPlaced || !hasSize) {
            Add(Code::NoSize, state.id, "the symbol has no size or no place",
                state.isShape ? "Remove it, and place it again." : "Remove it, and place it again with --size.");
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

ExitCode ExamineDocument(DocumentSource& source, const std::string& name, DocumentExamination& examination)
{
    return Examiner(source, name, examination).Run();
}

} // namespace lusym
