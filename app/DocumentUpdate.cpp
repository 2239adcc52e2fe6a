#include "DocumentUpdate.h"

#include "annotations2d/Symbol2D.h"
#include "catalog/PartslibraryImageItem.h"
#include "DocumentSource.h"
#include "EntryIndex.h"
#include "FileText.h"
#include "PictureProbe.h"
#include "Printable.h"

#include <du/FileSystem.h>

#include <nlohmann/json.hpp>

#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace lusym
{

namespace
{

using luannotations::Symbol2D;
using lusymbols::PartslibraryImageItem;
using nlohmann::ordered_json;

class Updater
{
public:
    Updater(DocumentSource& source, const std::vector<LibraryReading>& libraries)
        : m_source(source), m_index(libraries), m_before(StatesOf(source.GetDocument()))
    {
    }

    DocumentUpdate Run()
    {
        CompareEntries();
        CheckNames();
        CheckPictures();
        if (m_update.conflicts.empty() && !m_update.entries.empty()) {
            TakeOver();
        }
        return std::move(m_update);
    }

private:
    void CompareEntries()
    {
        for (const std::string& id : m_source.GetDocument().GetUsedTemplateIds()) {
            const du::SmartPtr<PartslibraryImageItem> own = FindOwnEntry(id);
            const EntryIndex::Entry* const found = m_index.Find(id);
            const auto image = found ? du::DynamicCast<PartslibraryImageItem>(found->item) : nullptr;
            if (!own) {
                continue;
            }
            if (!image) {
                m_update.missing.push_back(id);
                m_finalNames.emplace_back(own->GetName(), id);
                continue;
            }
            const std::string fault = FaultOfPicture(*found);
            if (!fault.empty()) {
                Refuse(id, fault);
                continue;
            }
            m_finalNames.emplace_back(image->GetName(), id);
            m_sources.try_emplace(id, image->GetImageUrl());
            const std::string differences = DifferencesOf(*own, *image);
            const bool isNewPicture = !HasSameContent(image->GetImageUrl(), own->GetImageUrl());
            if (!differences.empty() || isNewPicture) {
                m_changed.push_back(*found);
                const bool isTold = differences.find("picture") != differences.npos || !isNewPicture;
                m_update.entries.push_back(
                    {id, isTold ? differences : differences + (differences.empty() ? "picture" : ", picture")});
            }
        }
    }

    void Refuse(const std::string& id, const std::string& reason)
    {
        m_update.conflicts.push_back("the entry " + Quote(id) + " " + reason);
    }

    /// The document's own entries are a library, in which a name stands once.
    void CheckNames()
    {
        std::unordered_map<std::string, std::string> idOfName;
        for (const auto& [name, id] : m_finalNames) {
            const auto [first, isNew] = idOfName.try_emplace(name, id);
            if (!isNew) {
                Refuse(id, "would have the name " + Quote(name) + " of the entry " + Quote(first->second) +
                               ". Rename one of them in its library");
            }
        }
    }

    /// Pictures lie in one folder, so that a name stands for one of them.
    void CheckPictures()
    {
        std::map<std::string, std::pair<std::string, std::string>> byName;
        std::vector<std::string> pictures;
        for (const EntryIndex::Entry& entry : m_changed) {
            const auto image = du::DynamicCast<PartslibraryImageItem>(entry.item);
            const auto [first, isNew] = byName.try_emplace(PictureNameOf(*image), image->GetImageUrl(), image->GetId());
            if (isNew) {
                pictures.push_back(image->GetImageUrl());
            } else if (!HasSameContent(first->second.first, image->GetImageUrl())) {
                Refuse(image->GetId(), "and the entry " + Quote(first->second.second) +
                                           " have different pictures of the name " + Quote(first->first) +
                                           ". Rename one of them");
            }
        }
        const auto facts = ProbePictures(pictures, m_source);
        for (const auto& [name, origin] : byName) {
            const std::string& problem = facts.at(origin.first).problem;
            if (!problem.empty()) {
                Refuse(origin.second, "has the picture " + Quote(origin.first) +
                                          ", which cannot be shown: " + Printable(problem) + ". Mend the file");
            }
            const std::string held = PathInDocument(name);
            if (du::FileSystem::FileExists(held) && !HasSameContent(held, origin.first)) {
                CheckOtherUsers(name, origin);
                m_replaced.emplace(name, origin.first);
            }
        }
    }

    /// Symbols that show a picture of this name and are not to get the new one.
    void CheckOtherUsers(const std::string& name, const std::pair<std::string, std::string>& origin)
    {
        for (const SymbolState& state : m_before) {
            const auto source = m_sources.find(state.entry);
            const bool follows =
                !state.entry.empty() && source != m_sources.end() &&
                (!source->second.ends_with("/" + name) || HasSameContent(source->second, origin.first));
            if (state.pictureFile == name && !follows) {
                Refuse(origin.second, "has a new picture " + Quote(name) + ", and the symbol " + Quote(state.id) +
                                          " shows another one of that name. Rename the new one");
                return;
            }
        }
    }

    std::string PathInDocument(const std::string& name) const { return m_source.GetPictureFolder() + "/" + name; }

    void TakeOver()
    {
        const std::unordered_map<std::string, double> growth = ReplacePictures();
        PutIntoDocument(m_changed);
        m_source.WaitForLoads();
        const auto annotations = m_source.GetDocument().GetAnnotations();
        for (std::size_t index = 0; index < annotations.size(); ++index) {
            Symbol2D* const symbol = AsPicture(*annotations[index]);
            const auto grown = growth.find(m_before[index].pictureFile);
            if (symbol && grown != growth.end() && symbol->GetImageFileName().GetText() == grown->first) {
                ShowAnew(*symbol, m_before[index], grown->second);
                m_reloaded.insert(m_before[index].id);
            }
        }
        m_source.WaitForLoads();
        Report();
    }

    /// @return for each picture that is replaced under its name, how much higher it is now for its width
    std::unordered_map<std::string, double> ReplacePictures()
    {
        std::vector<std::string> paths;
        for (const auto& [name, path] : m_replaced) {
            paths.push_back(PathInDocument(name));
            paths.push_back(path);
        }
        const auto facts = ProbePictures(paths, m_source);
        std::unordered_map<std::string, double> growth;
        for (const auto& [name, path] : m_replaced) {
            const PictureFacts& before = facts.at(PathInDocument(name));
            const PictureFacts& now = facts.at(path);
            const auto heightPerWidth = [](const PictureFacts& picture) {
                return static_cast<double>(picture.height) / static_cast<double>(picture.width);
            };
            growth[name] = before.width > 0 && before.height > 0 ? heightPerWidth(now) / heightPerWidth(before) : 1.0;
            // The plug-in keeps what lies there, so the new one is put there first.
            du::FileSystem::DeletePath(PathInDocument(name));
            if (!du::FileSystem::CopyFile(path, PathInDocument(name))) {
                m_update.conflicts.push_back("the picture " + Quote(path) + " cannot be copied. Is the medium full?");
            }
        }
        return growth;
    }

    /// The plug-in goes by the name of the picture, so that one that keeps its name is loaded again from here. As with one
    /// of another name, the width stays.
    static void ShowAnew(Symbol2D& symbol, const SymbolState& before, double growth)
    {
        const bool isTurned = before.rotate % 180 != 0;
        const dg::FVec3 half = symbol.GetMarkupSize(0);
        const auto factor = static_cast<float>(isTurned ? 1.0 / growth : growth);
        symbol.SetMarkupSize(0, {half.x, half.y * factor, 0.0F});
        const InterruptHold hold;
        symbol.Initialise();
    }

    void Report()
    {
        const std::vector<SymbolState> after = StatesOf(m_source.GetDocument());
        for (std::size_t index = 0; index < after.size(); ++index) {
            UpdatedSymbol symbol{after[index], CompareStates(m_before[index], after[index])};
            if (m_reloaded.contains(after[index].id)) {
                symbol.changes.push_back({"picture", after[index].pictureFile, after[index].pictureFile + ", new"});
            }
            if (!symbol.changes.empty()) {
                m_update.symbols.push_back(std::move(symbol));
            }
        }
    }

    DocumentSource& m_source;
    const EntryIndex m_index;
    const std::vector<SymbolState> m_before;
    DocumentUpdate m_update;
    std::vector<EntryIndex::Entry> m_changed;
    std::vector<std::pair<std::string, std::string>> m_finalNames;
    std::unordered_map<std::string, std::string> m_sources;
    std::map<std::string, std::string> m_replaced;
    std::unordered_set<std::string> m_reloaded;
};

} // namespace

DocumentUpdate UpdateDocument(DocumentSource& source, const std::vector<LibraryReading>& libraries)
{
    return Updater(source, libraries).Run();
}

std::string UpdateAsText(const DocumentUpdate& update, const std::string& document)
{
    std::string text;
    for (const UpdatedEntry& entry : update.entries) {
        text += Printable(document) + ": entry " + Quote(entry.id) + " has changed: " + entry.differences + "\n";
    }
    for (const UpdatedSymbol& symbol : update.symbols) {
        for (const StateChange& change : symbol.changes) {
            text += Printable(document) + ":" + Printable(symbol.state.id) + ": " + ChangeText(change) + "\n";
        }
    }
    for (const std::string& id : update.missing) {
        text += Printable(document) + ": entry " + Quote(id) + " is in no library any more; its symbols stay\n";
    }
    return text;
}

ordered_json UpdateAsJson(const DocumentUpdate& update)
{
    ordered_json entries = ordered_json::array();
    for (const UpdatedEntry& entry : update.entries) {
        entries.push_back({{"id", entry.id}, {"differences", entry.differences}});
    }
    ordered_json symbols = ordered_json::array();
    for (const UpdatedSymbol& symbol : update.symbols) {
        ordered_json changes = ordered_json::array();
        for (const StateChange& change : symbol.changes) {
            changes.push_back({{"what", change.what}, {"before", change.before}, {"after", change.after}});
        }
        ordered_json json = {{"id", symbol.state.id}};
        json["page"] = symbol.state.page == 0 ? ordered_json() : ordered_json(symbol.state.page);
        json["entry"] = symbol.state.entry;
        json["changes"] = std::move(changes);
        symbols.push_back(std::move(json));
    }
    return {{"entries", std::move(entries)},
            {"symbols", std::move(symbols)},
            {"missing", update.missing},
            {"conflicts", update.conflicts}};
}

} // namespace lusym
