#include "DocumentUpdate.h"

#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotation.h"
#include "catalog/PartslibraryItem.h"
#include "DocumentSource.h"
#include "EntryIndex.h"
#include "FileProbe.h"
#include "FileText.h"
#include "Printable.h"

#include <du/FileSystem.h>
#include <luk/ComponentNode.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>
#include <luk/ShapeSource.h>
#include <luloader/Loader.h>

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
using luannotations::SymbolAnnotation;
using lusymbols::PartslibraryItem;
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
        CheckFiles();
        if (m_update.conflicts.empty() && !m_update.entries.empty()) {
            TakeOver();
        }
        return std::move(m_update);
    }

private:
    void CompareEntries()
    {
        for (const std::string& id : m_source.GetDocument().GetUsedTemplateIds()) {
            const du::SmartPtr<PartslibraryItem> own = FindOwnEntry(id);
            const EntryIndex::Entry* const found = m_index.Find(id);
            if (!own) {
                continue;
            }
            if (!found || IsShape(*found->item) != IsShape(*own)) {
                m_update.missing.push_back(id);
                m_finalNames.emplace_back(own->GetName(), id);
                continue;
            }
            const PartslibraryItem& item = *found->item;
            const std::string fault = FaultOfFile(*found);
            if (!fault.empty()) {
                Refuse(id, fault);
                continue;
            }
            m_finalNames.emplace_back(item.GetName(), id);
            m_sources.try_emplace(id, FilePathOf(item));
            const std::string kind = FileKindOf(item);
            std::string differences = DifferencesOf(*own, item);
            const bool hasNewFile = !HasSameContent(FilePathOf(item), FilePathOf(*own));
            if (!differences.empty() || hasNewFile) {
                m_changed.push_back(*found);
                if (hasNewFile && differences.find(kind) == differences.npos) {
                    differences.append(differences.empty() ? "" : ", ").append(kind);
                }
                m_update.entries.push_back({id, std::move(differences)});
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

    /// Pictures and shapes lie in one folder, so that a name stands for one of them.
    void CheckFiles()
    {
        std::map<std::string, du::SmartPtr<PartslibraryItem>> byName;
        std::vector<std::string> pictures;
        std::vector<std::string> shapes;
        for (const EntryIndex::Entry& entry : m_changed) {
            const std::string& path = FilePathOf(*entry.item);
            const auto [first, isNew] = byName.try_emplace(FileNameOf(*entry.item), entry.item);
            if (isNew) {
                (IsShape(*entry.item) ? shapes : pictures).push_back(path);
            } else if (!HasSameContent(FilePathOf(*first->second), path)) {
                Refuse(entry.item->GetId(), "and the entry " + Quote(first->second->GetId()) +
                                                " have different files of the name " + Quote(first->first) +
                                                ". Rename one of them");
            }
        }
        const auto facts = ProbePictures(pictures, m_source);
        const auto shapeProblems = ProbeShapes(shapes, m_source);
        for (const auto& [name, item] : byName) {
            const std::string& path = FilePathOf(*item);
            const std::string problem = IsShape(*item) ? shapeProblems.at(path) : facts.at(path).problem;
            if (!problem.empty()) {
                Refuse(item->GetId(), "has the " + FileKindOf(*item) + " " + Quote(path) +
                                          ", which cannot be shown: " + Printable(problem) + ". Mend the file");
            }
            const std::string held = PathInDocument(name);
            if (du::FileSystem::FileExists(held) && !HasSameContent(held, path)) {
                CheckOtherUsers(name, *item);
                m_replaced.emplace(name, path);
            }
        }
    }

    /// Symbols that show a file of this name and are not to get the new one.
    void CheckOtherUsers(const std::string& name, const PartslibraryItem& item)
    {
        for (const SymbolState& state : m_before) {
            const auto source = m_sources.find(state.entry);
            const bool follows =
                !state.entry.empty() && source != m_sources.end() &&
                (!source->second.ends_with("/" + name) || HasSameContent(source->second, FilePathOf(item)));
            if (state.file == name && !follows) {
                Refuse(item.GetId(), "has a new " + FileKindOf(item) + " " + Quote(name) + ", and the symbol " +
                                         Quote(state.id) + " shows another one of that name. Rename the new one");
                return;
            }
        }
    }

    std::string PathInDocument(const std::string& name) const { return m_source.GetPictureFolder() + "/" + name; }

    void TakeOver()
    {
        const std::unordered_map<std::string, double> growth = ReplaceFiles();
        PutIntoDocument(m_changed);
        m_source.WaitForLoads();
        const auto annotations = m_source.GetDocument().GetAnnotations();
        for (std::size_t index = 0; index < annotations.size(); ++index) {
            const SymbolState& before = m_before[index];
            const auto grown = growth.find(before.file);
            if (grown == growth.end()) {
                continue;
            }
            Symbol2D* const picture = AsPicture(*annotations[index]);
            SymbolAnnotation* const shape = AsShape(*annotations[index]);
            if (picture && picture->GetImageFileName().GetText() == grown->first) {
                ShowAnew(*picture, before, grown->second);
                m_reloaded.insert(before.id);
            } else if (shape && shape->GetFileName().GetText() == grown->first) {
                ShowAnew(*shape);
                m_reloaded.insert(before.id);
            }
        }
        m_source.WaitForLoads();
        Report();
    }

    /// @return for each file that is replaced under its name, how much higher the picture is now for its width
    std::unordered_map<std::string, double> ReplaceFiles()
    {
        std::vector<std::string> paths;
        for (const auto& [name, path] : m_replaced) {
            paths.push_back(PathInDocument(name));
            paths.push_back(path);
        }
        // A shape is no picture, and has no width.
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
                m_update.conflicts.push_back("the file " + Quote(path) + " cannot be copied. Is the medium full?");
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

    /// The same for a shape. The host keeps what it has read of a source, so that the node gets a new one.
    static void ShowAnew(SymbolAnnotation& symbol)
    {
        const du::SmartPtr<luk::ShapeInstance> instance = symbol.GetShapeInstance();
        const du::SmartPtr<luk::ShapeScene> scene = instance ? instance->GetShapeScene() : nullptr;
        const auto node = scene ? instance->GetInstance()->GetNode() : nullptr;
        const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader();
        if (!node || !node->GetShapeSource() || !loader) {
            return;
        }
        du::SmartPtr<luk::ShapeSource> source;
        luk::ShapeSource::Create(source, node->GetShapeSource()->GetPath(), dg::FBox::EMPTY, 0);
        node->SetShapeSource(source);
        scene->ReplaceShapeInstanceShape(instance, luk::Shape::Get(source));
        const InterruptHold hold;
        loader->LoadShape(instance->GetShape(), 0, nullptr, nullptr);
    }

    void Report()
    {
        const std::vector<SymbolState> after = StatesOf(m_source.GetDocument());
        for (std::size_t index = 0; index < after.size(); ++index) {
            UpdatedSymbol symbol{after[index], CompareStates(m_before[index], after[index])};
            if (m_reloaded.contains(after[index].id)) {
                symbol.changes.push_back(
                    {after[index].isShape ? "shape" : "picture", after[index].file, after[index].file + ", new"});
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
