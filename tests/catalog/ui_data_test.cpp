#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "catalog/PartslibraryUIData.h"
#include "support/SessionTest.h"

#include <du/Utf8.h>
#include <luk/illustration/SymbolTemplateCollection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace
{

using namespace lusymbols;
using luk::illustration::SymbolTemplateCollection;
using Origin = PartslibraryItem::Origin;
using Strings = std::vector<std::string>;

/// Opens what only the host's own gallery reaches.
class OpenUIData : public PartslibraryUIData
{
public:
    OpenUIData() : PartslibraryUIData("ol_", "img_") {}
    using PartslibraryUIData::Construct;
    using PartslibraryUIData::GetGroupItems;
};

template <class Item>
du::SmartPtr<Item> MakeItem(const std::string& id, const std::string& category, Origin origin = Origin::ORIGIN_USER)
{
    const auto item = du::MakeCounted<Item>(origin);
    item->SetId(id);
    item->SetName("n" + id);
    item->SetTitle("t" + id);
    item->SetCategoryId(category);
    return item;
}

du::SmartPtr<PartslibraryCategoryItem> MakeCategory(const std::string& id)
{
    const auto category = du::MakeCounted<PartslibraryCategoryItem>();
    category->SetId(id);
    category->SetCatName("C" + id);
    return category;
}

class GalleryData : public test::SessionTest
{
protected:
    static const du::SmartPtr<SymbolTemplateCollection>& Collection()
    {
        return SymbolTemplateCollection::GetCollection();
    }

    OpenUIData m_data;
};

TEST_F(GalleryData, EmptyGroupsPointToTheNextEntryAndNullsAreSkipped)
{
    const auto b1 = MakeItem<PartslibraryImageItem>("1", "b");
    const auto b2 = MakeItem<PartslibraryImageItem>("2", "b");
    EXPECT_EQ(m_data.Construct({nullptr}, {b1, nullptr, b2},
                               {MakeCategory("a"), nullptr, MakeCategory("b"), MakeCategory("c")}),
              2u);
    EXPECT_EQ(m_data.GetGroupNames(), (Strings{"Ca", "Cb", "Cc"}));
    EXPECT_EQ(m_data.GetGroupItems(), (Strings{"img_n11", "img_n11", ""}));
    EXPECT_EQ(m_data.GetNumActualCategories(), 3u);
    EXPECT_EQ(m_data.GetNumItems(), 2u);
    EXPECT_EQ(m_data.GetNumgroupItems(), 3u);
}

TEST_F(GalleryData, WithoutEntriesThereAreNoGroupsWithoutACategoryNoRow)
{
    EXPECT_EQ(m_data.Construct({}, {}, {MakeCategory("a")}), 0u);
    EXPECT_EQ(m_data.GetNumGroupNames() + m_data.GetNumActualCategories(), 0u);
    EXPECT_EQ(m_data.Refresh(nullptr), 0u);
    const auto shape = MakeItem<PartslibraryOlItem>("1", "a");
    EXPECT_EQ(m_data.Construct({shape}, {MakeItem<PartslibraryImageItem>("2", "")}, {MakeCategory("b")}), 0u);
    EXPECT_EQ(m_data.GetNumItems(), 0u);
    EXPECT_EQ(m_data.GetNumGroupNames(), 1u);
}

TEST_F(GalleryData, ARowTellsAllOfAnEntry)
{
    const auto gate = du::MakeCounted<PartslibraryOlItem>(Origin::ORIGIN_USER);
    gate->SetId("7");
    gate->SetName("Gate");
    gate->SetTitle("T\xc3\xbcr");
    gate->SetDescription("<b>");
    gate->SetOlGalleryThumbnailUrl("Shape\\gate_64x64.png");
    const auto image = MakeItem<PartslibraryImageItem>("7", "", Origin::ORIGIN_OOTB);
    m_data.Construct({gate}, {image}, {MakeCategory("")});
    EXPECT_EQ(m_data.GetNames(), (Strings{"ol_Gate7", "img_n77"}));
    EXPECT_EQ(m_data.GetUserData(), (Strings{"ol.7", "image.7"}));
    EXPECT_EQ(m_data.GetIcons()[0], m_folder.Url("Shape/gate_64x64.png"));
    EXPECT_EQ(m_data.GetLabels()[0], L"T\u00fcr");
    EXPECT_EQ(m_data.GetTooltips()[0], L"\\b T\u00fcr\\b0 \n <b>");
    EXPECT_EQ(m_data.GetSharedItems(), (std::vector<bool>{false, true}));
}

TEST_F(GalleryData, BuildingAgainAppendsAndFillsOnlyItsOwnGroups)
{
    const auto item = MakeItem<PartslibraryImageItem>("1", "a");
    m_data.Construct({}, {item}, {MakeCategory("a"), MakeCategory("b")});
    m_data.Construct({}, {item}, {MakeCategory("a")});
    EXPECT_EQ(m_data.GetGroupItems(), (Strings{"img_n11", "", "img_n11"}));
    EXPECT_EQ(m_data.GetNumIcons(), 2u);
    EXPECT_EQ(m_data.GetNumItems(), 1u);
    EXPECT_EQ(m_data.GetNumActualCategories(), 1u);
    m_data.Clear();
    EXPECT_EQ(m_data.GetNumIcons() + m_data.GetNumgroupItems(), 0u);
    EXPECT_EQ(m_data.GetNumItems(), 1u);
}

TEST_F(GalleryData, PrefixesSurviveARefreshAndListsHaveNone)
{
    Collection()->AddCategory(MakeCategory("a"));
    Collection()->AddAssociativeObject(MakeItem<PartslibraryImageItem>("1", "a"));
    m_data.Refresh(Collection());
    EXPECT_EQ(m_data.Refresh(Collection()), 1u);
    EXPECT_EQ(m_data.GetNames(), Strings{"img_n11"});
    const PartslibraryUIData plain({}, {MakeItem<PartslibraryImageItem>("1", "a")}, {MakeCategory("a")});
    EXPECT_EQ(plain.GetNames(), Strings{"n11"});
}

/// The rows as the plain reading of the rules gives them, by scanning everything for every category.
Strings ExpectedUserData(const std::vector<du::SmartPtr<PartslibraryItem>>& items,
                         const std::vector<du::SmartPtr<PartslibraryCategoryItem>>& categories)
{
    std::vector<du::SmartPtr<PartslibraryItem>> sorted = items;
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
        const auto rank = [](const auto& item) { return item->IsShared() ? 0 : item->IsOOTB() ? 1 : 2; };
        return rank(a) < rank(b);
    });
    Strings rows;
    for (const auto& category : categories) {
        for (const char* kind : {"ol", "image"}) {
            for (const auto& item : sorted) {
                const bool isOl = bool(du::DynamicCast<PartslibraryOlItem>(item));
                if (isOl == (std::string(kind) == "ol") && item->GetCategoryId() == category->GetId()) {
                    rows.push_back(kind + ("." + item->GetId()));
                }
            }
        }
    }
    return rows;
}

TEST_F(GalleryData, RowsAreThoseOfAScanInOrderForAnyCollection)
{
    std::mt19937 random(7);
    const auto pick = [&random](unsigned count) { return random() % count; };
    for (int round = 0; round < 20; ++round) {
        Collection()->Clear();
        std::vector<du::SmartPtr<PartslibraryCategoryItem>> categories;
        for (unsigned i = 0; i < 6; ++i) {
            // Ids repeat: such a category shows its entries twice.
            categories.push_back(MakeCategory(std::to_string(pick(5))));
            Collection()->AddCategory(categories.back());
        }
        std::vector<du::SmartPtr<PartslibraryItem>> items;
        for (unsigned i = 0; i < 60; ++i) {
            const auto origin = static_cast<Origin>(1u << pick(3));
            const std::string category = std::to_string(pick(7));
            const std::string id = std::to_string(i);
            items.push_back(MakeItem<PartslibraryOlItem>(id, category, origin));
            if (pick(2)) {
                items.back() = MakeItem<PartslibraryImageItem>(id, category, origin);
            }
            Collection()->AddAssociativeObject(items.back());
        }
        const Strings expected = ExpectedUserData(items, categories);
        EXPECT_EQ(m_data.Refresh(Collection()), expected.size());
        EXPECT_EQ(m_data.GetUserData(), expected);
    }
}

} // namespace
