#include "LibraryMerge.h"

#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "FileText.h"
#include "LibraryUrl.h"
#include "Printable.h"
#include "RealPath.h"

#include <du/FileSystem.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace lusym
{

namespace
{

using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;
using nlohmann::ordered_json;

/// The files of the merged entries, and which of them get into each other's way.
class FileCollector
{
public:
    FileCollector(std::vector<MergedFile>& files, const LibraryPlace& output) : m_files(files), m_output(output) {}

    /// @param root that of the library from which the entries that follow come
    void StartLibrary(const std::string& root) { m_root = RealPath(root); }

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
        std::unordered_set<std::string>& seen = isShape ? m_seenShapes : m_seenPictures;
        if (seen.contains(source)) {
            return;
        }
        MergedFile file{source, url, m_output.root.empty() ? std::string() : m_output.root + "/" + url};
        file.isMissing = !du::FileSystem::FileReadable(source);
        if (file.isMissing && isDerived) {
            return;
        }
        seen.insert(source);
        const auto [first, isNew] = m_sourceOfUrl.try_emplace(url, source);
        if (!isNew) {
            AddSecond(std::move(file), first->second);
        } else if (file.target.empty() || !IsAtTarget(file)) {
            file.isOutside = !file.isMissing && !IsInside(RealPath(source), m_root);
            m_files.push_back(std::move(file));
        }
    }

    /// One file may be named in many ways, and is compared but once.
    void AddSecond(MergedFile file, const std::string& first)
    {
        if (file.isMissing || !m_compared.insert(RealPath(file.source).string() + '\n' + file.url).second) {
            return;
        }
        if (!HasSameContent(file.source, first)) {
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
        if (file.source == file.target || HasSameContent(file.source, file.target)) {
            return true;
        }
        file.rival = file.isMissing ? std::string() : file.target;
        return false;
    }

    std::vector<MergedFile>& m_files;
    const LibraryPlace& m_output;
    std::filesystem::path m_root;
    std::unordered_map<std::string, std::string> m_sourceOfUrl;
    std::unordered_set<std::string> m_seenShapes;
    std::unordered_set<std::string> m_seenPictures;
    std::unordered_set<std::string> m_compared;
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
        CollectFiles();
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

    /// The merged entries are those that were taken of the first input, then those of the second, and so on.
    void CollectFiles()
    {
        FileCollector files(m_merge.files, m_output);
        auto item = m_merge.content.templates.begin();
        for (std::size_t input = 0; input < m_readings.size(); ++input) {
            files.StartLibrary(m_readings[input].place.root);
            for (std::size_t taken = 0; taken < m_merge.inputs[input].entriesTaken; ++taken, ++item) {
                files.AddFilesOf(static_cast<const PartslibraryItem&>(**item));
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

ordered_json FilesAsJson(const Merge& merge, bool (MergedFile::*predicate)() const)
{
    ordered_json list = ordered_json::array();
    for (const MergedFile& file : merge.files) {
        if ((file.*predicate)()) {
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

std::size_t Merge::CountFiles(bool (MergedFile::*predicate)() const) const
{
    return static_cast<std::size_t>(std::ranges::count_if(files, std::mem_fn(predicate)));
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
        if (file.HasRival()) {
            text += "The files " + Printable(file.rival) + " and " + Printable(file.source) +
                    " differ, and both would be " + Printable(file.url) + "\n";
        } else if (file.isMissing) {
            text += "The file " + Printable(file.source) + " is missing or cannot be read\n";
        } else if (file.isOutside) {
            text += "The file " + Printable(file.source) +
                    " is not copied: it lies outside the root of the library that names it\n";
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
             {{"toBring", FilesAsJson(merge, &MergedFile::IsToBring)},
              {"rivals", FilesAsJson(merge, &MergedFile::HasRival)},
              {"missing", FilesAsJson(merge, &MergedFile::IsMissing)},
              {"outside", FilesAsJson(merge, &MergedFile::IsRefused)}}}};
}

} // namespace lusym
