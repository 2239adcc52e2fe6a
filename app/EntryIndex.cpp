#include "EntryIndex.h"

#include "catalog/PartslibraryImageItem.h"
#include "DocumentSource.h"
#include "Printable.h"
#include "RealPath.h"

#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <luk/illustration/SymbolTemplateCollection.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace lusym
{

namespace
{

using luk::illustration::SequencerTag;
using luk::illustration::SymbolTemplateCollection;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;

bool HaveSameTags(const PartslibraryItem& a, const PartslibraryItem& b)
{
    return std::ranges::equal(a.GetSequencerTags(), b.GetSequencerTags(),
                              [](const auto& x, const auto& y) { return x == y || (x && y && *x == *y); });
}

void Append(std::string& list, bool isDifferent, std::string_view what)
{
    if (isDifferent) {
        list.append(list.empty() ? "" : ", ").append(what);
    }
}

} // namespace

EntryIndex::EntryIndex(const std::vector<LibraryReading>& libraries)
{
    for (const LibraryReading& library : libraries) {
        for (const auto& entry : library.examination.templates) {
            if (auto item = du::DynamicCast<PartslibraryItem>(entry)) {
                Entry& place = m_entries[item->GetId()];
                place = {std::move(item), &library};
            }
        }
    }
}

const EntryIndex::Entry* EntryIndex::Find(const std::string& id) const
{
    const auto found = m_entries.find(id);
    return found == m_entries.end() ? nullptr : &found->second;
}

ExitCode ReadLibraries(DocumentSource& source, std::vector<LibraryReading>& libraries)
{
    for (const LibraryPlace& place : source.GetLibraryPlaces()) {
        LibraryReading& reading = libraries.emplace_back(source.GetLibrarySource().Read(place));
        if (!reading.isReadable && !source.AreLibrariesChosen()) {
            reading.examination.findings.front().mend = "The document records it; say with --library where it is now.";
        }
        TellEffects(libraries.back(), source.GetProgress());
    }
    return JudgeReadings(libraries);
}

du::SmartPtr<PartslibraryImageItem> FindOwnEntry(const std::string& id)
{
    return du::DynamicCast<PartslibraryImageItem>(
        SymbolTemplateCollection::GetCollection()->GetAssociativeObjectById(id));
}

void PutIntoDocument(const std::vector<EntryIndex::Entry>& entries)
{
    const InterruptHold hold;
    luk::illustration::AssociativeObjectCollection& collection = *SymbolTemplateCollection::GetCollection();
    luk::illustration::AssociativeObjectCollection::Merge merge(collection);
    std::unordered_map<const LibraryReading*, std::unordered_set<std::string>> wantedCategories;
    for (const EntryIndex::Entry& entry : entries) {
        merge.PutObject(entry.item);
        wantedCategories[entry.library].insert(entry.item->GetCategoryId());
    }
    for (const auto& [library, wanted] : wantedCategories) {
        for (const auto& category : library->examination.categories) {
            if (wanted.contains(category->GetId())) {
                merge.PutCategory(category);
            }
        }
        if (!collection.GetInformation()) {
            collection.SetInformation(library->examination.loader->GetCollectionInformation());
        }
    }
}

std::string DifferencesOf(const PartslibraryImageItem& a, const PartslibraryImageItem& b)
{
    std::string differences;
    Append(differences, a.GetName() != b.GetName(), "name");
    Append(differences, a.GetTitle() != b.GetTitle(), "title");
    Append(differences, a.GetDescription() != b.GetDescription(), "description");
    Append(differences,
           a.ShowTooltipTitle() != b.ShowTooltipTitle() || a.ShowTooltipDescription() != b.ShowTooltipDescription(),
           "flags");
    Append(differences, !HaveSameTags(a, b), "tags");
    Append(differences, PictureNameOf(a) != PictureNameOf(b), "picture");
    Append(differences, a.GetCategoryId() != b.GetCategoryId(), "category");
    Append(differences,
           a.GetIsBillboardImage() != b.GetIsBillboardImage() || a.GetImageScale() != b.GetImageScale() ||
               a.GetFlipHorizontal() != b.GetFlipHorizontal() || a.GetFlipVertical() != b.GetFlipVertical() ||
               a.GetRotateRight() != b.GetRotateRight() || a.GetRotateLeft() != b.GetRotateLeft(),
           "placement");
    if (differences.empty()) {
        PartslibraryImageItem sameFile(a);
        sameFile.SetImageUrl(b.GetImageUrl());
        // Nothing else is left of what an entry says.
        Append(differences, !(sameFile == b), "tooltip");
    }
    return differences;
}

std::string PictureNameOf(const PartslibraryImageItem& entry) { return du::FileSpec(entry.GetImageUrl()).GetFile(); }

std::string FaultOfPicture(const EntryIndex::Entry& entry)
{
    const auto image = du::DynamicCast<PartslibraryImageItem>(entry.item);
    const std::string& path = image->GetImageUrl();
    if (PictureNameOf(*image).empty()) {
        return "names no picture. Name one in the library";
    }
    if (!du::FileSystem::FileReadable(path)) {
        return "names the picture " + Quote(path) + ", which is missing or cannot be read. Put it there";
    }
    // A library from elsewhere must not carry files of this machine into a document that is handed on.
    if (!IsInside(RealPath(path), RealPath(entry.library->place.root))) {
        return "names the picture " + Quote(path) +
               ", which lies outside the library's root. Move it there, or name "
               "another root with --root";
    }
    return {};
}

} // namespace lusym
