#include "EntryIndex.h"

#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "DocumentSource.h"
#include "LibraryRules.h"
#include "Printable.h"
#include "RealPath.h"

#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <luk/illustration/SymbolTemplateCollection.h>

#include <algorithm>
#include <functional>
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
using lusymbols::PartslibraryOlItem;

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

/// An entry that gives no coordinate system is placed by the one of its shape.
dg::Location CsysOf(const PartslibraryOlItem& shape)
{
    return shape.GetOlCsys().HasPosition() ? shape.GetOlCsys() : dg::Location::IDENTITY;
}

bool HaveSamePlacement(const PartslibraryImageItem& a, const PartslibraryImageItem& b)
{
    return a.GetIsBillboardImage() == b.GetIsBillboardImage() && a.GetImageScale() == b.GetImageScale() &&
           a.GetFlipHorizontal() == b.GetFlipHorizontal() && a.GetFlipVertical() == b.GetFlipVertical() &&
           a.GetRotateRight() == b.GetRotateRight() && a.GetRotateLeft() == b.GetRotateLeft();
}

bool HaveSamePlacement(const PartslibraryOlItem& a, const PartslibraryOlItem& b)
{
    const std::equal_to<double> isEqual;
    return isEqual(a.GetOlScale(), b.GetOlScale()) && CsysOf(a) == CsysOf(b) &&
           a.GetOlOrientation() == b.GetOlOrientation() && a.GetAxisId() == b.GetAxisId() &&
           isEqual(a.GetDistanceFromCsys(), b.GetDistanceFromCsys()) &&
           a.IsUseCurrentOrientation() == b.IsUseCurrentOrientation() &&
           a.IsAnnotationSymbol() == b.IsAnnotationSymbol();
}

/// As the class of the entries compares them.
bool IsSameButForFile(const PartslibraryImageItem& a, const PartslibraryImageItem& b)
{
    PartslibraryImageItem copy(a);
    copy.SetImageUrl(b.GetImageUrl());
    return copy == b;
}

bool IsSameButForFile(const PartslibraryOlItem& a, const PartslibraryOlItem& b)
{
    PartslibraryOlItem copy(a);
    PartslibraryOlItem other(b);
    copy.SetOlUrl(b.GetOlUrl());
    copy.SetOlCsys(CsysOf(a));
    other.SetOlCsys(CsysOf(b));
    return copy == other;
}

template <class Item>
void AppendOwnDifferences(std::string& differences, const Item& a, const PartslibraryItem& other)
{
    const auto* const b = dynamic_cast<const Item*>(&other);
    Append(differences, b && !HaveSamePlacement(a, *b), "placement");
    // Nothing else is left of what an entry says.
    Append(differences, b && differences.empty() && !IsSameButForFile(a, *b), "tooltip");
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

std::string EntryIndex::FindLike(const std::string& id) const
{
    std::vector<std::string_view> ids;
    for (const auto& [known, entry] : m_entries) {
        ids.push_back(known);
    }
    // In their order, so that of two that are alike it is always the same.
    std::ranges::sort(ids);
    return std::string(NearestName(id, ids));
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

du::SmartPtr<PartslibraryItem> FindOwnEntry(const std::string& id)
{
    return du::DynamicCast<PartslibraryItem>(SymbolTemplateCollection::GetCollection()->GetAssociativeObjectById(id));
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
    merge.Commit();
}

std::string DifferencesOf(const PartslibraryItem& a, const PartslibraryItem& b)
{
    std::string differences;
    Append(differences, a.GetName() != b.GetName(), "name");
    Append(differences, a.GetTitle() != b.GetTitle(), "title");
    Append(differences, a.GetDescription() != b.GetDescription(), "description");
    Append(differences,
           a.ShowTooltipTitle() != b.ShowTooltipTitle() || a.ShowTooltipDescription() != b.ShowTooltipDescription(),
           "flags");
    Append(differences, !HaveSameTags(a, b), "tags");
    Append(differences, FileNameOf(a) != FileNameOf(b), FileKindOf(a));
    Append(differences, a.GetCategoryId() != b.GetCategoryId(), "category");
    if (const auto* const shape = dynamic_cast<const PartslibraryOlItem*>(&a)) {
        AppendOwnDifferences(differences, *shape, b);
    } else if (const auto* const image = dynamic_cast<const PartslibraryImageItem*>(&a)) {
        AppendOwnDifferences(differences, *image, b);
    }
    return differences;
}

bool IsShape(const PartslibraryItem& entry) { return dynamic_cast<const PartslibraryOlItem*>(&entry) != nullptr; }

std::string FileKindOf(const PartslibraryItem& entry) { return IsShape(entry) ? "shape" : "picture"; }

const std::string& FilePathOf(const PartslibraryItem& entry)
{
    static const std::string none;
    if (const auto* const shape = dynamic_cast<const PartslibraryOlItem*>(&entry)) {
        return shape->GetOlUrl();
    }
    const auto* const image = dynamic_cast<const PartslibraryImageItem*>(&entry);
    return image ? image->GetImageUrl() : none;
}

void SetFilePath(PartslibraryItem& entry, const std::string& path)
{
    if (auto* const shape = dynamic_cast<PartslibraryOlItem*>(&entry)) {
        shape->SetOlUrl(path);
    } else if (auto* const image = dynamic_cast<PartslibraryImageItem*>(&entry)) {
        image->SetImageUrl(path);
    }
}

std::string FileNameOf(const PartslibraryItem& entry) { return du::FileSpec(FilePathOf(entry)).GetFile(); }

void DropFolderThumbnail(PartslibraryItem& entry)
{
    if (auto* const shape = dynamic_cast<PartslibraryOlItem*>(&entry)) {
        if (du::FileSpec(shape->GetOlGalleryThumbnailUrl()).GetFile().empty()) {
            shape->SetOlGalleryThumbnailUrl({});
        }
    } else if (auto* const image = dynamic_cast<PartslibraryImageItem*>(&entry)) {
        if (du::FileSpec(image->GetImageGalleryThumbnailUrl()).GetFile().empty()) {
            image->SetImageGalleryThumbnailUrl({});
        }
    }
}

std::string FaultOfFile(const EntryIndex::Entry& entry)
{
    const std::string kind = FileKindOf(*entry.item);
    const std::string& path = FilePathOf(*entry.item);
    if (FileNameOf(*entry.item).empty()) {
        return "names no " + kind + ". Name one in the library";
    }
    if (!du::FileSystem::FileReadable(path)) {
        return "names the " + kind + " " + Quote(path) + ", which is missing or cannot be read. Put it there";
    }
    // A library from elsewhere must not carry files of this machine into a document that is handed on.
    if (!IsInside(RealPath(path), RealPath(entry.library->place.root))) {
        return "names the " + kind + " " + Quote(path) +
               ", which lies outside the library's root. Move it there, or name "
               "another root with --root";
    }
    return {};
}

} // namespace lusym
