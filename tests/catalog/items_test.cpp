#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "support/SessionTest.h"

#include <dg/Camera3D.h>
#include <luk/illustration/SequencerTagPtrComparator.h>

#include <gtest/gtest.h>

#include <functional>

namespace
{

using namespace lusymbols;
using luk::illustration::SequencerTag;
using luk::illustration::SequencerTagPtrComparator;

class CatalogItems : public test::SessionTest
{
};

PartslibraryItem::SequencerTagPtr MakeTag(const std::string& quantity)
{
    const auto tag = du::MakeCounted<SequencerTag>();
    tag->SetQuantityString(quantity);
    return tag;
}

void ExpectCamera(const PartslibraryOlItem& item, bool orthographic, double value, const dg::Location& location)
{
    bool isOrthographic = !orthographic;
    double read = -1;
    dg::Location readLocation;
    EXPECT_TRUE(item.GetCameraData(isOrthographic, read, readLocation));
    EXPECT_EQ(isOrthographic, orthographic);
    EXPECT_EQ(read, value);
    EXPECT_TRUE(readLocation == location);
}

template <class Item>
using Changes = std::vector<std::pair<const char*, std::function<void(Item&)>>>;

/// Each change must make an entry differ from an untouched one, in both directions and through Compare.
template <class Item>
void ExpectDifference(const Changes<Item>& changes, bool expected)
{
    for (const auto& [what, apply] : changes) {
        const auto plain = du::MakeCounted<Item>();
        const auto changed = du::MakeCounted<Item>();
        apply(*changed);
        EXPECT_EQ(*plain == *changed, !expected) << what;
        EXPECT_EQ(*changed == *plain, !expected) << what;
        EXPECT_EQ(plain->Compare(changed), !expected) << what;
    }
}

template <class Item>
void ExpectCommonDifferences()
{
    ExpectDifference<Item>({{"title", [](auto& item) { item.SetTitle("other"); }},
                            {"description", [](auto& item) { item.SetDescription("other"); }},
                            {"show title", [](auto& item) { item.SetShowTooltipTitle(true); }},
                            {"show description", [](auto& item) { item.SetShowTooltipDescription(true); }},
                            {"tags", [](auto& item) { item.AddSequencerTag(MakeTag("1")); }},
                            {"null tag", [](auto& item) { item.AddSequencerTag(nullptr); }},
                            {"id", [](auto& item) { item.SetId("other"); }},
                            {"name", [](auto& item) { item.SetName("other"); }},
                            {"category", [](auto& item) { item.SetCategoryId("other"); }}},
                           true);
}

TEST_F(CatalogItems, EveryFieldThatCountsMakesImagesDiffer)
{
    ExpectCommonDifferences<PartslibraryImageItem>();
    ExpectDifference<PartslibraryImageItem>({{"billboard", [](auto& item) { item.SetIsBillboardImage(true); }},
                                             {"url", [](auto& item) { item.SetImageUrl("u"); }},
                                             {"tooltip", [](auto& item) { item.SetImageTooltip("t"); }},
                                             {"scale", [](auto& item) { item.SetImageScale(1); }},
                                             {"flip h", [](auto& item) { item.SetFlipHorizontal(true); }},
                                             {"flip v", [](auto& item) { item.SetFlipVertical(true); }},
                                             {"right", [](auto& item) { item.SetRotateRight(90); }},
                                             {"left", [](auto& item) { item.SetRotateLeft(90); }}},
                                            true);
}

TEST_F(CatalogItems, EveryFieldThatCountsMakesShapesDiffer)
{
    const dg::Location moved(dg::FMat33::IDENTITY, {0, 0, 1e-9});
    ExpectCommonDifferences<PartslibraryOlItem>();
    ExpectDifference<PartslibraryOlItem>({{"tooltip", [](auto& item) { item.SetOlTooltip("t"); }},
                                          {"url", [](auto& item) { item.SetOlUrl("u"); }},
                                          {"scale", [](auto& item) { item.SetOlScale(1.0000001); }},
                                          {"orientation", [](auto& item) { item.SetOlOrientation(1); }},
                                          {"csys position", [&](auto& item) { item.SetOlCsys(moved); }},
                                          {"csys matrix", [](auto& item) { item.SetOlCsys(dg::Location::ZERO); }},
                                          {"axis", [](auto& item) { item.SetAxisId(1); }},
                                          {"distance", [](auto& item) { item.SetDistanceFromCsys(1); }},
                                          {"axis name", [](auto& item) { item.SetAxisName("x"); }},
                                          {"orientation name", [](auto& item) { item.SetOrientationName("x"); }},
                                          {"annotation", [](auto& item) { item.SetAnnotationSymbol(true); }},
                                          {"orientation kept", [](auto& item) { item.SetUseCurrentOrientation(true); }},
                                          {"method", [](auto& item) { item.SetEditCsysMethod(0); }}},
                                         true);
}

TEST_F(CatalogItems, ThumbnailsKeysAndCamerasDoNotCount)
{
    std::string key = "KEY";
    ExpectDifference<PartslibraryImageItem>({{"gallery", [](auto& item) { item.SetImageGalleryThumbnailUrl("u"); }},
                                             {"dialog", [](auto& item) { item.SetImageDlgThumbnailUrl("u"); }},
                                             {"name key", [&](auto& item) { item.SetLocIdName(key); }},
                                             {"title key", [&](auto& item) { item.SetLocIdTitle(key); }},
                                             {"description key", [&](auto& item) { item.SetLocIdDesc(key); }}},
                                            false);
    ExpectDifference<PartslibraryOlItem>(
        {{"gallery", [](auto& item) { item.SetOlGalleryThumbnailUrl("u"); }},
         {"dialog", [](auto& item) { item.SetOlDlgThumbnailUrl("u"); }},
         {"camera", [](auto& item) { item.SetCameraData(true, 1.0, dg::Location::IDENTITY); }}},
        false);
    EXPECT_EQ(key, "KEY");
}

TEST_F(CatalogItems, AnotherKindNothingAndNotANumberAreNeverEqual)
{
    const auto image = du::MakeCounted<PartslibraryImageItem>();
    const auto ol = du::MakeCounted<PartslibraryOlItem>();
    EXPECT_FALSE(image->Compare(ol) || ol->Compare(image) || ol->Compare(nullptr));
    EXPECT_EQ(image->GetReferenceCount(), 1u);
    ol->SetDistanceFromCsys(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(*ol == *ol);
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
    assigned = *&assigned;
    for (const PartslibraryOlItem* item : {&copy, &std::as_const(assigned)}) {
        EXPECT_TRUE(*item == source);
        EXPECT_EQ(item->GetOlGalleryThumbnailUrl() + item->GetOlDlgThumbnailUrl(), "a_64x64.pnga_192x192.png");
        ExpectCamera(*item, true, 3.5, dg::Location::ZERO);
    }
}

TEST_F(CatalogItems, CameraDataIsGivenOnlyWhileSet)
{
    PartslibraryOlItem item;
    bool orthographic = true;
    double value = -1;
    dg::Location location = dg::Location::ZERO;
    EXPECT_FALSE(item.GetCameraData(orthographic, value, location));
    EXPECT_TRUE(orthographic && value == -1 && location == dg::Location::ZERO) << "left alone";
    item.SetCameraData(false, 45.0, dg::Location::IDENTITY);
    ExpectCamera(item, false, 45.0, dg::Location::IDENTITY);
    item.ResetCameraData();
    EXPECT_FALSE(item.IsCameraSet());
    dg::Camera3D camera;
    camera.SetOrthographic(0.25);
    item.SetCameraData(camera);
    ExpectCamera(item, true, 0.25, camera.GetLocation());
}

TEST_F(CatalogItems, ThumbnailUrlsReplaceTheFirstSizeOnly)
{
    for (const auto& [before, after] : {std::pair("2D/stop_64x64.png", "2D/stop_192x192.png"),
                                        {"2D/stop.png", "2D/stop.png"},
                                        {"64x64/stop_64x64.png", "192x192/stop_64x64.png"},
                                        {"64x64", "192x192"},
                                        {"", ""}}) {
        std::string url = before;
        PartslibraryImageItem().ComputeDialogThumbnailUrl(url);
        EXPECT_EQ(url, after);
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

} // namespace
