#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "support/SessionTest.h"

#include <dg/Camera3D.h>
#include <luk/illustration/AssociativeObjectCollection.h>
#include <luk/illustration/SequencerTagPtrComparator.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <utility>

namespace
{

using luk::illustration::SequencerTag;
using luk::illustration::SequencerTagPtrComparator;
using lusymbols::PartslibraryCategoryItem;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;
using Tags = std::vector<PartslibraryItem::SequencerTagPtr>;

class CatalogItems : public test::SessionTest
{
};

PartslibraryItem::SequencerTagPtr MakeTag(const std::string& quantity)
{
    const auto tag = du::MakeCounted<SequencerTag>();
    tag->SetQuantityString(quantity);
    return tag;
}

template <class Item>
struct Change {
    const char* what;
    std::function<void(Item&)> apply;
};

template <class Item>
std::vector<Change<Item>> CommonChanges()
{
    return {
        {"title", [](Item& item) { item.SetTitle("other"); }},
        {"description", [](Item& item) { item.SetDescription("other"); }},
        {"show title", [](Item& item) { item.SetShowTooltipTitle(true); }},
        {"show description", [](Item& item) { item.SetShowTooltipDescription(true); }},
        {"tags", [](Item& item) { item.AddSequencerTag(MakeTag("1")); }},
        {"null tag", [](Item& item) { item.AddSequencerTag(nullptr); }},
        {"id", [](Item& item) { item.SetId("other"); }},
        {"name", [](Item& item) { item.SetName("other"); }},
        {"category", [](Item& item) { item.SetCategoryId("other"); }},
    };
}

/// Each change must make an entry differ from an untouched one, in both directions and through Compare.
template <class Item>
void ExpectDifference(const std::vector<Change<Item>>& changes, bool expected)
{
    for (const Change<Item>& change : changes) {
        const auto plain = du::MakeCounted<Item>();
        const auto changed = du::MakeCounted<Item>();
        change.apply(*changed);
        EXPECT_EQ(*plain == *changed, !expected) << change.what;
        EXPECT_EQ(*changed == *plain, !expected) << change.what;
        EXPECT_EQ(plain->Compare(changed), !expected) << change.what;
    }
}

TEST_F(CatalogItems, EveryFieldThatCountsMakesImagesDiffer)
{
    using Item = PartslibraryImageItem;
    ExpectDifference(CommonChanges<Item>(), true);
    ExpectDifference<Item>({{"billboard", [](Item& item) { item.SetIsBillboardImage(true); }},
                            {"url", [](Item& item) { item.SetImageUrl("u"); }},
                            {"tooltip", [](Item& item) { item.SetImageTooltip("t"); }},
                            {"scale", [](Item& item) { item.SetImageScale(1); }},
                            {"flip h", [](Item& item) { item.SetFlipHorizontal(true); }},
                            {"flip v", [](Item& item) { item.SetFlipVertical(true); }},
                            {"right", [](Item& item) { item.SetRotateRight(90); }},
                            {"left", [](Item& item) { item.SetRotateLeft(90); }}},
                           true);
}

TEST_F(CatalogItems, EveryFieldThatCountsMakesShapesDiffer)
{
    using Item = PartslibraryOlItem;
    ExpectDifference(CommonChanges<Item>(), true);
    ExpectDifference<Item>({{"tooltip", [](Item& item) { item.SetOlTooltip("t"); }},
                            {"url", [](Item& item) { item.SetOlUrl("u"); }},
                            {"scale", [](Item& item) { item.SetOlScale(1.0000001); }},
                            {"orientation", [](Item& item) { item.SetOlOrientation(1); }},
                            {"csys position",
                             [](Item& item) {
                                 item.SetOlCsys({dg::FMat33::IDENTITY, {0, 0, 1e-9}});
                             }},
                            {"csys matrix", [](Item& item) { item.SetOlCsys(dg::Location::ZERO); }},
                            {"axis", [](Item& item) { item.SetAxisId(1); }},
                            {"distance", [](Item& item) { item.SetDistanceFromCsys(1); }},
                            {"axis name", [](Item& item) { item.SetAxisName("x"); }},
                            {"orientation name", [](Item& item) { item.SetOrientationName("x"); }},
                            {"annotation", [](Item& item) { item.SetAnnotationSymbol(true); }},
                            {"current orientation", [](Item& item) { item.SetUseCurrentOrientation(true); }},
                            {"method", [](Item& item) { item.SetEditCsysMethod(0); }}},
                           true);
}

TEST_F(CatalogItems, ThumbnailsKeysAndCamerasDoNotCount)
{
    std::string key = "KEY";
    ExpectDifference<PartslibraryImageItem>(
        {{"gallery", [](PartslibraryImageItem& item) { item.SetImageGalleryThumbnailUrl("u"); }},
         {"dialog", [](PartslibraryImageItem& item) { item.SetImageDlgThumbnailUrl("u"); }},
         {"keys",
          [&](PartslibraryImageItem& item) {
              item.SetLocIdName(key);
              item.SetLocIdTitle(key);
              item.SetLocIdDesc(key);
          }}},
        false);
    ExpectDifference<PartslibraryOlItem>(
        {{"gallery", [](PartslibraryOlItem& item) { item.SetOlGalleryThumbnailUrl("u"); }},
         {"dialog", [](PartslibraryOlItem& item) { item.SetOlDlgThumbnailUrl("u"); }},
         {"camera", [](PartslibraryOlItem& item) { item.SetCameraData(true, 1.0, dg::Location::IDENTITY); }}},
        false);
    EXPECT_EQ(key, "KEY");
}

TEST_F(CatalogItems, NotANumberIsNeverEqual)
{
    const auto a = du::MakeCounted<PartslibraryOlItem>();
    a->SetDistanceFromCsys(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(*a == *a);
}

TEST_F(CatalogItems, CompareWithAnotherKindOrNothingIsFalse)
{
    const auto image = du::MakeCounted<PartslibraryImageItem>();
    const auto ol = du::MakeCounted<PartslibraryOlItem>();
    EXPECT_FALSE(image->Compare(ol));
    EXPECT_FALSE(ol->Compare(image));
    EXPECT_FALSE(ol->Compare(nullptr));
    EXPECT_EQ(image->GetReferenceCount(), 1u);
}

TEST_F(CatalogItems, AnEmptyTitleIsMadeOfKindAndId)
{
    const auto image = du::MakeCounted<PartslibraryImageItem>();
    image->SetId("abc");
    image->SetTitle("");
    EXPECT_EQ(image->GetTitle(), "Image abc");
    image->SetTitle("x");
    EXPECT_EQ(image->GetTitle(), "x");
    const auto ol = du::MakeCounted<PartslibraryOlItem>();
    ol->SetTitle("");
    EXPECT_EQ(ol->GetTitle(), "Ol ");
}

TEST_F(CatalogItems, ANewEntryOwnsItsTagsAnAssignedOneSharesThem)
{
    const auto source = du::MakeCounted<PartslibraryImageItem>();
    source->AddSequencerTag(MakeTag("25"));
    source->AddSequencerTag(nullptr);
    source->AddSequencerTag(MakeTag("12"));

    const auto copied = du::MakeCounted<PartslibraryImageItem>(*source);
    PartslibraryImageItem movedFrom(*source);
    const auto moved = du::MakeCounted<PartslibraryImageItem>(std::move(movedFrom));
    for (const auto& fresh : {copied, moved}) {
        ASSERT_EQ(fresh->GetSequencerTags().size(), 2u);
        EXPECT_FALSE(fresh->GetSequencerTags()[0] == source->GetSequencerTags()[0]);
        EXPECT_TRUE(SequencerTagPtrComparator()(fresh->GetSequencerTags()[0], source->GetSequencerTags()[0]));
        EXPECT_TRUE(SequencerTagPtrComparator()(fresh->GetSequencerTags()[1], source->GetSequencerTags()[2]));
    }

    const auto assigned = du::MakeCounted<PartslibraryImageItem>();
    *assigned = *source;
    const auto moveAssigned = du::MakeCounted<PartslibraryImageItem>();
    *moveAssigned = std::move(*assigned);
    EXPECT_EQ(moveAssigned->GetSequencerTags(), source->GetSequencerTags());
}

TEST_F(CatalogItems, CopiesKeepEveryFieldAlsoTheCamera)
{
    PartslibraryOlItem source(PartslibraryItem::ORIGIN_SHARED);
    source.SetId("7");
    source.SetName("Gate");
    source.SetOlUrl("a.obj");
    source.SetOlGalleryThumbnailUrl("a_64x64.png");
    source.SetOlDlgThumbnailUrl("a_192x192.png");
    source.SetCameraData(true, 3.5, dg::Location::ZERO);
    const PartslibraryOlItem copy(source);
    PartslibraryOlItem assigned;
    assigned = source;
    for (const PartslibraryOlItem* item : {&copy, &std::as_const(assigned)}) {
        EXPECT_TRUE(*item == source);
        EXPECT_EQ(item->GetOlGalleryThumbnailUrl(), "a_64x64.png");
        EXPECT_EQ(item->GetOlDlgThumbnailUrl(), "a_192x192.png");
        bool orthographic = false;
        double value = 0;
        dg::Location location;
        EXPECT_TRUE(item->GetCameraData(orthographic, value, location));
        EXPECT_TRUE(orthographic && value == 3.5 && location == dg::Location::ZERO);
    }
    assigned = *&assigned;
    EXPECT_TRUE(assigned == source);
}

TEST_F(CatalogItems, CameraDataIsGivenOnlyWhileSet)
{
    PartslibraryOlItem item;
    bool orthographic = true;
    double value = -1;
    dg::Location location = dg::Location::ZERO;
    EXPECT_FALSE(item.GetCameraData(orthographic, value, location));
    EXPECT_TRUE(orthographic && value == -1 && location == dg::Location::ZERO);
    item.SetCameraData(false, 45.0, dg::Location::IDENTITY);
    EXPECT_TRUE(item.GetCameraData(orthographic, value, location));
    EXPECT_TRUE(!orthographic && value == 45.0 && location == dg::Location::IDENTITY);
    item.ResetCameraData();
    EXPECT_FALSE(item.IsCameraSet());

    dg::Camera3D camera;
    camera.SetOrthographic(0.25);
    item.SetCameraData(camera);
    EXPECT_TRUE(item.GetCameraData(orthographic, value, location));
    EXPECT_TRUE(orthographic && value == 0.25);
}

TEST_F(CatalogItems, ThumbnailUrlsReplaceTheFirstSizeOnly)
{
    const struct {
        const char *before, *after;
    } urls[] = {
        {"2D/stop_64x64.png", "2D/stop_192x192.png"},
        {"2D/stop.png", "2D/stop.png"},
        {"64x64/stop_64x64.png", "192x192/stop_64x64.png"},
        {"64x64", "192x192"},
        {"", ""},
    };
    for (const auto& expected : urls) {
        std::string url = expected.before;
        PartslibraryImageItem().ComputeDialogThumbnailUrl(url);
        EXPECT_EQ(url, expected.after);
    }
    std::string self = "aba";
    PartslibraryOlItem::ComputeThumbnailUrl(self, self, self);
    EXPECT_EQ(self, "aba");
}

TEST_F(CatalogItems, TagIndicesOutOfRangeAreIgnored)
{
    const auto item = du::MakeCounted<PartslibraryOlItem>();
    for (const char* quantity : {"1", "2", "3"}) {
        item->AddSequencerTag(MakeTag(quantity));
    }
    item->DelSequencerTag(1);
    ASSERT_EQ(item->GetSequencerTags().size(), 2u);
    EXPECT_EQ(item->GetSequencerTags()[1]->GetQuantityString(), "3");
    item->DelSequencerTag(2);
    item->DelSequencerTag(-1);
    item->SetSequencerTag(2, MakeTag("4"));
    EXPECT_EQ(item->GetSequencerTags().size(), 2u);
    item->SetSequencerTag(0, nullptr);
    EXPECT_EQ(item->GetSequencerTags()[0], nullptr);
}

TEST_F(CatalogItems, DefaultsOfTheKinds)
{
    const PartslibraryOlItem ol;
    EXPECT_EQ(ol.GetOlScale(), 1.0);
    EXPECT_EQ(ol.GetEditCsysMethod(), 1);
    EXPECT_TRUE(ol.GetOlCsys() == dg::Location::IDENTITY);
    EXPECT_EQ(ol.GetOrigin(), PartslibraryItem::ORIGIN_USER);
    EXPECT_EQ(PartslibraryImageItem().GetOrigin(), PartslibraryItem::ORIGIN_USER);
    const PartslibraryCategoryItem category;
    EXPECT_EQ(category.GetType(), 0x100u);
    EXPECT_EQ(category.GetOrigin(), PartslibraryItem::ORIGIN_USER);
}

} // namespace
