#include "LibraryListing.h"

#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "LibrarySource.h"
#include "Printable.h"
#include "TextSearch.h"
#include "TextTable.h"

#include <luk/illustration/SequencerTag.h>

#include <nlohmann/json.hpp>

#include <unordered_map>
#include <vector>

namespace lusym
{

namespace
{

using lusymbols::PartslibraryCategoryItem;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;
using nlohmann::ordered_json;

const PartslibraryItem& ItemOf(const LibraryReading& reading, std::size_t index)
{
    return static_cast<const PartslibraryItem&>(*reading.examination.templates[index]);
}

std::unordered_map<std::string_view, std::string_view> CategoryNames(const LibraryReading& reading)
{
    std::unordered_map<std::string_view, std::string_view> names;
    for (const auto& category : reading.examination.categories) {
        names.emplace(category->GetId(), category->GetName());
    }
    return names;
}

/// Decides about one entry after the other.
class Selection
{
public:
    Selection(const LibraryReading& reading, const ListingFilter& filter)
        : m_reading(reading), m_filter(filter), m_categoryNames(CategoryNames(reading)), m_search(filter.words)
    {
    }

    std::vector<std::size_t> Wanted() const
    {
        std::vector<std::size_t> wanted;
        for (std::size_t index = 0; index < m_reading.examination.templates.size(); ++index) {
            if (IsWanted(ItemOf(m_reading, index), m_reading.examination.kept[index])) {
                wanted.push_back(index);
            }
        }
        return wanted;
    }

private:
    bool IsWanted(const PartslibraryItem& item, const KeptEntry& kept) const
    {
        if (m_filter.hasCategoryId && item.GetCategoryId() != m_filter.categoryId) {
            return false;
        }
        return !m_search.HasWords() || m_search.Matches(TextsOf(item, kept));
    }

    /// A line feed keeps words from matching across two texts.
    std::string TextsOf(const PartslibraryItem& item, const KeptEntry& kept) const
    {
        std::string texts = item.GetId() + "\n" + item.GetName() + "\n" + item.GetTitle() + "\n" +
                            item.GetDescription() + "\n" + kept.tooltip + "\n" + item.GetCategoryId();
        const auto category = m_categoryNames.find(item.GetCategoryId());
        if (category != m_categoryNames.end()) {
            texts.append("\n").append(category->second);
        }
        for (const auto& tag : item.GetSequencerTags()) {
            texts.append("\n").append(tag->GetDescription());
        }
        return texts;
    }

    const LibraryReading& m_reading;
    const ListingFilter& m_filter;
    const std::unordered_map<std::string_view, std::string_view> m_categoryNames;
    const TextSearch m_search;
};

void AddKey(ordered_json& json, const char* name, const std::string& key)
{
    if (!key.empty()) {
        json[name] = key;
    }
}

ordered_json TagsAsJson(const PartslibraryItem& item)
{
    ordered_json tags = ordered_json::array();
    for (const auto& tag : item.GetSequencerTags()) {
        ordered_json json = {{"type", luk::illustration::SequencerTag::GetSymbolForType(tag->GetType()).GetText()},
                             {"name", tag->GetName()},
                             {"description", tag->GetDescription()},
                             {"quantity", tag->GetQuantityString()},
                             {"units", tag->GetUnits()}};
        AddKey(json, "descriptionKey", tag->GetLocIdDesc());
        AddKey(json, "unitsKey", tag->GetLocIdUnits());
        tags.push_back(std::move(json));
    }
    return tags;
}

ordered_json LocationAsJson(const dg::Location& location)
{
    ordered_json matrix = ordered_json::array();
    for (const float entry : location.GetMat().GetEntries()) {
        matrix.push_back(entry);
    }
    const dg::DPoint3D& position = location.GetPosition();
    return {{"matrix", std::move(matrix)}, {"position", {position.x, position.y, position.z}}};
}

void AddShape(ordered_json& json, const PartslibraryOlItem& shape)
{
    json["thumbnail"] = shape.GetOlGalleryThumbnailUrl();
    json["largeThumbnail"] = shape.GetOlDlgThumbnailUrl();
    json["file"] = shape.GetOlUrl();
    json["scale"] = shape.GetOlScale();
    json["orientation"] = shape.GetOlOrientation();
    json["csys"] = LocationAsJson(shape.GetOlCsys());
    json["axisName"] = shape.GetAxisName();
    json["distanceFromCsys"] = shape.GetDistanceFromCsys();
    json["axisId"] = shape.GetAxisId();
    json["orientationName"] = shape.GetOrientationName();
    json["annotationToSymbol"] = shape.IsAnnotationSymbol();
    json["useCurrentOrientation"] = shape.IsUseCurrentOrientation();
    json["editCsysMethod"] = shape.GetEditCsysMethod();
    bool isOrthographic = false;
    double value = 0.0;
    dg::Location location;
    if (shape.GetCameraData(isOrthographic, value, location)) {
        json["camera"] = {{"orthographic", isOrthographic}, {"value", value}, {"location", LocationAsJson(location)}};
    }
}

void AddImage(ordered_json& json, const PartslibraryImageItem& image)
{
    json["thumbnail"] = image.GetImageGalleryThumbnailUrl();
    json["largeThumbnail"] = image.GetImageDlgThumbnailUrl();
    json["file"] = image.GetImageUrl();
    json["billboard"] = image.GetIsBillboardImage();
    json["scale"] = image.GetImageScale();
    json["flipHorizontal"] = image.GetFlipHorizontal();
    json["flipVertical"] = image.GetFlipVertical();
    json["rotateRight"] = image.GetRotateRight();
    json["rotateLeft"] = image.GetRotateLeft();
}

ordered_json EntryAsJson(const PartslibraryItem& item, const KeptEntry& kept)
{
    const auto* shape = dynamic_cast<const PartslibraryOlItem*>(&item);
    ordered_json json = {{"kind", shape ? "shape" : "symbol"},  {"line", kept.line},      {"id", item.GetId()},
                         {"categoryId", item.GetCategoryId()},  {"name", item.GetName()}, {"title", item.GetTitle()},
                         {"description", item.GetDescription()}};
    AddKey(json, "nameKey", item.GetLocIdName());
    AddKey(json, "titleKey", item.GetLocIdTitle());
    AddKey(json, "descriptionKey", item.GetLocIdDesc());
    json["showTooltipTitle"] = item.ShowTooltipTitle();
    json["showTooltipDescription"] = item.ShowTooltipDescription();
    json["tooltip"] = kept.tooltip;
    if (shape) {
        AddShape(json, *shape);
    } else if (const auto* image = dynamic_cast<const PartslibraryImageItem*>(&item)) {
        AddImage(json, *image);
    }
    json["tags"] = TagsAsJson(item);
    return json;
}

ordered_json CategoriesAsJson(const LibraryReading& reading)
{
    ordered_json categories = ordered_json::array();
    for (const auto& category : reading.examination.categories) {
        ordered_json json = {{"id", category->GetId()}, {"name", category->GetName()}};
        if (const auto* item = dynamic_cast<const PartslibraryCategoryItem*>(category.get())) {
            AddKey(json, "nameKey", item->GetLocIdName());
            json["tooltip"] = item->GetCatTooltip();
            json["description"] = item->GetCatDescription();
        }
        categories.push_back(std::move(json));
    }
    return categories;
}

const char* OriginName(LibraryPlace::Origin origin)
{
    return (origin & LibraryPlace::Origin::ORIGIN_SHARED) != 0 ? "shared"
           : (origin & LibraryPlace::Origin::ORIGIN_OOTB) != 0 ? "delivered"
                                                               : "user";
}

} // namespace

std::string ListingAsTable(const LibraryReading& reading, const ListingFilter& filter)
{
    std::vector<std::vector<std::string>> rows = {{"KIND", "ID", "CATEGORY", "NAME", "TITLE"}};
    for (const std::size_t index : Selection(reading, filter).Wanted()) {
        const PartslibraryItem& item = ItemOf(reading, index);
        const bool isShape = dynamic_cast<const PartslibraryOlItem*>(&item) != nullptr;
        rows.push_back({isShape ? "shape" : "symbol", Printable(item.GetId()), Printable(item.GetCategoryId()),
                        Printable(item.GetName()), Printable(item.GetTitle())});
    }
    return TableText(rows);
}

ordered_json ListingAsJson(const LibraryReading& reading, const ListingFilter& filter)
{
    ordered_json entries = ordered_json::array();
    for (const std::size_t index : Selection(reading, filter).Wanted()) {
        entries.push_back(EntryAsJson(ItemOf(reading, index), reading.examination.kept[index]));
    }
    const lusymbols::SymbolTemplateLoader& loader = *reading.examination.loader;
    return {{"file", reading.place.name},
            {"root", reading.place.root},
            {"origin", OriginName(reading.place.origin)},
            {"units", loader.GetUnits()},
            {"information", loader.GetInformation()},
            {"categories", CategoriesAsJson(reading)},
            {"entries", std::move(entries)}};
}

} // namespace lusym
