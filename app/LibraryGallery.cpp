#include "LibraryGallery.h"

#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "GalleryPage.h"
#include "Printable.h"
#include "Progress.h"

#include <du/Utf8.h>
#include <luhost/Session.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <nlohmann/json.hpp>

#include <numeric>
#include <unordered_map>

namespace lusym
{

namespace
{

using luk::illustration::CategoryInfo;
using luk::illustration::CollectionInformation;
using luk::illustration::SymbolTemplate;
using luk::illustration::SymbolTemplateCollection;
using nlohmann::ordered_json;

/// Hands the session what was read already.
class FinishedLoader : public lukapp::illustration::SymbolTemplateLoader
{
public:
    explicit FinishedLoader(const Examination& examination) : m_examination(examination) {}

    du::SmartPtr<CollectionInformation> GetCollectionInformation() override
    {
        return m_examination.loader->GetCollectionInformation();
    }

    bool GetTemplateList(const du::Symbol&, std::vector<du::SmartPtr<SymbolTemplate>>& out) override
    {
        out.insert(out.end(), m_examination.templates.begin(), m_examination.templates.end());
        return true;
    }

    void GetCategoryList(std::vector<du::SmartPtr<CategoryInfo>>& out) override
    {
        out.insert(out.end(), m_examination.categories.begin(), m_examination.categories.end());
    }

private:
    const Examination& m_examination;
};

/// An entry stands in every category that has its id.
std::vector<std::size_t> CountRowsPerGroup(const SymbolTemplateCollection& collection)
{
    std::unordered_map<std::string, std::size_t> counts;
    for (const auto& object : collection.GetAssociativeObjects()) {
        if (du::DynamicCast<lusymbols::PartslibraryItem>(object)) {
            ++counts[object->GetCategoryId()];
        }
    }
    std::vector<du::SmartPtr<CategoryInfo>> categories;
    collection.GetCategories(categories);
    std::vector<std::size_t> rows;
    for (const auto& category : categories) {
        if (du::DynamicCast<lusymbols::PartslibraryCategoryItem>(category)) {
            const auto found = counts.find(category->GetId());
            rows.push_back(found == counts.end() ? 0 : found->second);
        }
    }
    return rows;
}

} // namespace

void AddToCollection(LibrarySource& source, const LibraryReading& reading)
{
    const auto loader = du::MakeCounted<FinishedLoader>(reading.examination);
    source.GetSession().LoadLibrary(reading.place.path, loader);
}

bool CanMakeGallery(Progress& progress)
{
    const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection();
    const std::vector<std::size_t> counts = collection ? CountRowsPerGroup(*collection) : std::vector<std::size_t>();
    const std::size_t rows = std::reduce(counts.begin(), counts.end());
    if (rows > kMaxGalleryRows) {
        progress.Tell("lusym: the gallery would have " + std::to_string(rows) + " rows, and " +
                      std::to_string(kMaxGalleryRows) +
                      " are the most that are made. Give each category an id of its own, or take fewer libraries.\n");
    }
    return rows <= kMaxGalleryRows;
}

LibraryGallery MakeGallery()
{
    const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection();
    LibraryGallery gallery{du::MakeCounted<lusymbols::PartslibraryUIData>(std::string("ol_"), std::string("img_")), {}};
    gallery.rows->Refresh(collection);
    if (collection && gallery.rows->GetNumItems() != 0) {
        gallery.rowsPerGroup = CountRowsPerGroup(*collection);
    }
    return gallery;
}

ordered_json GalleryAsJson(const LibraryGallery& gallery)
{
    const lusymbols::PartslibraryUIData& rows = *gallery.rows;
    ordered_json groups = ordered_json::array();
    std::size_t row = 0;
    for (std::size_t group = 0; group < gallery.rowsPerGroup.size(); ++group) {
        ordered_json list = ordered_json::array();
        for (const std::size_t end = row + gallery.rowsPerGroup[group]; row < end; ++row) {
            list.push_back({{"name", rows.GetNames()[row]},
                            {"userData", rows.GetUserData()[row]},
                            {"label", du::WideStrToUtf8(rows.GetLabels()[row])},
                            {"tooltip", du::WideStrToUtf8(rows.GetTooltips()[row])},
                            {"icon", rows.GetIcons()[row]},
                            {"shared", static_cast<bool>(rows.GetSharedItems()[row])}});
        }
        groups.push_back({{"name", rows.GetGroupNames()[group]},
                          {"label", du::WideStrToUtf8(rows.GetGroupLabels()[group])},
                          {"rows", std::move(list)}});
    }
    return {{"items", rows.GetNumItems()}, {"groups", std::move(groups)}};
}

std::string GalleryAsPage(const LibraryGallery& gallery, const std::string& title, const std::string& language,
                          Progress& progress)
{
    GalleryPageResult page = WriteGalleryPage(GalleryContent{title, language, *gallery.rows, gallery.rowsPerGroup});
    for (const std::string& icon : page.missingIcons) {
        // An entry without a thumbnail of its own is left with the root.
        progress.Tell(icon.ends_with('/') ? std::string("lusym: warning: entries name no thumbnail.\n")
                                          : "lusym: warning: the thumbnail " + Printable(icon) +
                                                " cannot be shown. Put a picture there.\n");
    }
    return std::move(page.html);
}

} // namespace lusym
