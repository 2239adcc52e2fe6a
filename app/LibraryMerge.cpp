#include "LibraryMerge.h"

#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "FileText.h"
#include "LibraryUrl.h"
#include "Printable.h"

#include <du/FileSystem.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace lusym
{

namespace
{

using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;
using nlohmann::ordered_json;

bool IsSameContent(const std::string& a, const std::string& b)
{
    std::string textA;
    std::string textB;
    std::string error;
    return a == b || (ReadFileText(a, textA, error) && ReadFileText(b, textB, error) && textA == textB);
}

/// The files of the merged entries, and which of them get into each other's way.
class FileCollector
{
public:
    FileCollector(std::vector<MergedFile>& files, const LibraryPlace& output) : m_files(files), m_output(output) {}

    void AddFilesOf(const PartslibraryItem& item)
    {
        if (const auto* shape = dynamic_cast<const PartslibraryOlItem*>(&item)) {
            Add(shape->GetOlUrl(), true, false);
            Add(shape->GetOlGalleryThumbnailUrl(), true, false);
            Add(shape->GetOlDlgThumbnailUrl(), true, true);
        } else if (const auto* image = dynamic_cast<const PartslibraryImageItem*>(&item)) {
            Add(image->GetImageUrl(), false, false);
            Add(image->GetImageGalleryThumbnailUrl(), false, false);
            Add(image->GetImageDlgThumbnailUrl(), false, true);
        }
    }

private:
    /// @param isDerived the document does not name the file, so that nobody misses it
    void Add(const std::string& source, bool isShape, bool isDerived)
    {
        const std::string url = WrittenUrl(source, isShape, m_output.origin, false);
        if (url == source || url.ends_with('/') || source.find("://") != std::string::npos) {
            return;
        }
        const auto [known, isNew] = m_sourceOfUrl.try_emplace(url, source);
        if (!isNew && known->second == source) {
            return;
        }
        MergedFile file{source, url, m_output.root.empty() ? std::string() : m_output.root + "/" + url, {}, false};
        file.isMissing = !du::FileSystem::FileReadable(source);
        if (file.isMissing && isDerived) {
            return;
        }
        if (!isNew) {
            AddSecond(std::move(file), known->second);
        } else if (file.target.empty() || !IsAtTarget(file)) {
            m_files.push_back(std::move(file));
        }
    }

    void AddSecond(MergedFile file, const std::string& first)
    {
        if (!file.isMissing && !IsSameContent(file.source, first)) {
            file.rival = first;
            m_files.push_back(std::move(file));
        }
    }

    /// Whether it lies there already; something else at its place becomes its rival.
    static bool IsAtTarget(MergedFile& file)
    {
        if (!du::FileSystem::FileExists(file.target)) {
            return false;
        }
        if (IsSameContent(file.source, file.target)) {
            return true;
        }
        file.rival = file.isMissing ? std::string() : file.target;
        return false;
    }

    std::vector<MergedFile>& m_files;
    const LibraryPlace& m_output;
    std::unordered_map<std::string, std::string> m_sourceOfUrl;
};

class Merger
{
public:
    Merger(const std::vector<LibraryReading>& readings, const LibraryPlace& output)
        : m_readings(readings), m_output(output)
    {
    }

    Merge Run()
    {
        for (const LibraryReading& reading : m_readings) {
            m_merge.inputs.push_back({reading.place.name, reading.examination.templates.size(), 0,
                                      reading.examination.categories.size(), 0});
            AddCategories(reading, m_merge.inputs.back());
            AddTexts(reading);
            for (const auto& item : reading.examination.templates) {
                m_loader->AddItem(du::DynamicCast<PartslibraryItem>(item));
            }
        }
        m_loader->GetTemplateList(du::Symbol(), m_merge.content.templates);
        m_loader->GetCategoryList(m_merge.content.categories);
        m_merge.content.information = m_loader->GetCollectionInformation();
        CompareEntries();
        FileCollector files(m_merge.files, m_output);
        for (const auto& item : m_merge.content.templates) {
            files.AddFilesOf(static_cast<const PartslibraryItem&>(*item));
        }
        return std::move(m_merge);
    }

private:
    void AddCategories(const LibraryReading& reading, MergedInput& input)
    {
        for (const auto& category : reading.examination.categories) {
            const auto [first, isNew] = m_fileOfCategory.try_emplace(category->GetId(), reading.place.name);
            if (isNew) {
                m_loader->AddCategoryItem(du::DynamicCast<lusymbols::PartslibraryCategoryItem>(category));
                ++input.categoriesTaken;
            } else {
                m_merge.categoriesJoined.push_back(
                    {reading.place.name, 0, category->GetName(), category->GetId(), {}, first->second, 0});
            }
        }
    }

    void AddTexts(const LibraryReading& reading)
    {
        const lusymbols::SymbolTemplateLoader& loader = *reading.examination.loader;
        const bool isFirst = m_merge.inputs.size() == 1;
        AddText("units", loader.GetUnits(), m_loader->GetUnits(), isFirst, reading.place.name);
        AddText("information", loader.GetInformation(), m_loader->GetInformation(), isFirst, reading.place.name);
        m_loader->SetUnits(loader.GetUnits());
        m_loader->SetInformation(loader.GetInformation());
    }

    void AddText(const char* what, const std::string& value, const std::string& before, bool isFirst,
                 const std::string& from)
    {
        const auto known = std::ranges::find(m_merge.differing, what, &MergedText::what);
        if (known != m_merge.differing.end()) {
            known->value = value;
            known->from = from;
        } else if (!isFirst && value != before) {
            m_merge.differing.push_back({what, value, from});
        }
    }

    /// The merged list holds the very entries of the inputs, in their order, but for those that were dropped.
    void CompareEntries()
    {
        std::size_t next = 0;
        for (std::size_t input = 0; input < m_readings.size(); ++input) {
            const Examination& examination = m_readings[input].examination;
            for (std::size_t index = 0; index < examination.templates.size(); ++index) {
                const auto& item = examination.templates[index];
                const KeptEntry& kept = examination.kept[index];
                MergeConflict conflict{
                    m_readings[input].place.name, kept.line, item->GetName(), kept.writtenId, {}, {}, 0};
                if (next == m_merge.content.templates.size() || m_merge.content.templates[next] != item) {
                    std::tie(conflict.otherFile, conflict.otherLine) = m_placeOfName.at(item->GetName());
                    m_merge.dropped.push_back(std::move(conflict));
                    continue;
                }
                ++next;
                ++m_merge.inputs[input].entriesTaken;
                m_placeOfName.try_emplace(item->GetName(), m_readings[input].place.name, kept.line);
                if (item->GetId() != kept.writtenId) {
                    conflict.newId = item->GetId();
                    m_merge.renamed.push_back(std::move(conflict));
                }
            }
        }
    }

    const std::vector<LibraryReading>& m_readings;
    const LibraryPlace& m_output;
    Merge m_merge;
    const du::SmartPtr<lusymbols::SymbolTemplateLoader> m_loader = du::MakeCounted<lusymbols::SymbolTemplateLoader>();
    std::unordered_map<std::string, std::string> m_fileOfCategory;
    std::unordered_map<std::string_view, std::pair<std::string, std::size_t>> m_placeOfName;
};

bool HasRival(const MergedFile& file) { return !file.rival.empty(); }
bool IsMissing(const MergedFile& file) { return file.isMissing; }
bool IsToBring(const MergedFile& file) { return !file.isMissing && file.rival.empty(); }

std::string PlaceText(const std::string& file, std::size_t line)
{
    std::string place = Printable(file);
    return line == 0 ? place : place.append(":").append(std::to_string(line));
}

std::string PlaceOf(const MergeConflict& conflict) { return PlaceText(conflict.file, conflict.line); }

ordered_json ConflictsAsJson(const std::vector<MergeConflict>& conflicts, const char* other)
{
    ordered_json list = ordered_json::array();
    for (const MergeConflict& conflict : conflicts) {
        ordered_json json = {{"file", conflict.file}, {"name", conflict.name}, {"id", conflict.id}};
        if (conflict.line != 0) {
            json["line"] = conflict.line;
        }
        json[other] = conflict.newId.empty() ? conflict.otherFile : conflict.newId;
        if (conflict.otherLine != 0) {
            json["takenAtLine"] = conflict.otherLine;
        }
        list.push_back(std::move(json));
    }
    return list;
}

ordered_json FilesAsJson(const Merge& merge, bool (*predicate)(const MergedFile&))
{
    ordered_json list = ordered_json::array();
    for (const MergedFile& file : merge.files) {
        if (predicate(file)) {
            ordered_json json = {{"source", file.source}, {"url", file.url}};
            if (!file.rival.empty()) {
                json["rival"] = file.rival;
            }
            list.push_back(std::move(json));
        }
    }
    return list;
}

} // namespace

std::size_t Merge::CountFiles(bool (*predicate)(const MergedFile&)) const
{
    return static_cast<std::size_t>(std::ranges::count_if(files, predicate));
}

Merge MergeLibraries(const std::vector<LibraryReading>& readings, const LibraryPlace& output)
{
    return Merger(readings, output).Run();
}

std::string MergeAsText(const Merge& merge)
{
    std::string text;
    for (const MergedInput& input : merge.inputs) {
        text += Printable(input.name) + ": " + std::to_string(input.entriesTaken) + " of " +
                CountOf(input.entries, "entry", "entries") + " and " + std::to_string(input.categoriesTaken) + " of " +
                CountOf(input.categories, "category", "categories") + " taken\n";
    }
    for (const MergeConflict& entry : merge.dropped) {
        text += PlaceOf(entry) + ": the entry " + Quote(entry.name) + " is dropped: the one at " +
                PlaceText(entry.otherFile, entry.otherLine) + " has its name\n";
    }
    for (const MergeConflict& entry : merge.renamed) {
        text += PlaceOf(entry) + ": the id " + Quote(entry.id) + " of " + Quote(entry.name) + " becomes " +
                Quote(entry.newId) + "\n";
    }
    for (const MergeConflict& category : merge.categoriesJoined) {
        text += PlaceOf(category) + ": the category " + Quote(category.id) + " joins the one of " +
                Printable(category.otherFile) + "\n";
    }
    for (const MergedText& differing : merge.differing) {
        text += "The inputs differ in " + differing.what + ": " + Quote(differing.value) + " of " +
                Printable(differing.from) + " stands\n";
    }
    for (const MergedFile& file : merge.files) {
        if (HasRival(file)) {
            text += "The files " + Printable(file.rival) + " and " + Printable(file.source) +
                    " differ, and both would be " + Printable(file.url) + "\n";
        } else if (file.isMissing) {
            text += "The file " + Printable(file.source) + " is missing or cannot be read\n";
        }
    }
    return text;
}

ordered_json MergeAsJson(const Merge& merge)
{
    ordered_json inputs = ordered_json::array();
    for (const MergedInput& input : merge.inputs) {
        inputs.push_back({{"file", input.name},
                          {"entries", input.entries},
                          {"entriesTaken", input.entriesTaken},
                          {"categories", input.categories},
                          {"categoriesTaken", input.categoriesTaken}});
    }
    ordered_json differing = ordered_json::array();
    for (const MergedText& text : merge.differing) {
        differing.push_back({{"what", text.what}, {"value", text.value}, {"from", text.from}});
    }
    return {{"inputs", std::move(inputs)},
            {"entries", merge.content.templates.size()},
            {"categories", merge.content.categories.size()},
            {"dropped", ConflictsAsJson(merge.dropped, "takenBy")},
            {"renamed", ConflictsAsJson(merge.renamed, "newId")},
            {"categoriesJoined", ConflictsAsJson(merge.categoriesJoined, "joins")},
            {"differing", std::move(differing)},
            {"files",
             {{"toBring", FilesAsJson(merge, IsToBring)},
              {"rivals", FilesAsJson(merge, HasRival)},
              {"missing", FilesAsJson(merge, IsMissing)}}}};
}

} // namespace lusym
