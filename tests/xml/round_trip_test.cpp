#include "LibraryTest.h"

#include <gtest/gtest.h>

#include <random>

namespace
{

using luk::illustration::SequencerTag;
using lusymbols::PartslibraryCategoryItem;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;
using test::Categories;
using test::Origin;
using test::Templates;

class RoundTrip : public test::LibraryTest
{
protected:
    /// A text with all that could go wrong on the way, unique by its number.
    std::string Text()
    {
        static constexpr const char* kPieces[] = {"a",  "<",        ">",    "&",   "\"",   "'",  "&amp;",        " ",
                                                  "\t", "\xd7\xa9", "\xff", "]]>", "<!--", "\\", "\xe2\x80\xae", "\x01",
                                                  "\r", "%s"};
        std::string text = std::to_string(m_serial++);
        for (unsigned i = Pick(8); i > 0; --i) {
            text += kPieces[Pick(std::size(kPieces))];
        }
        return text;
    }

    unsigned Pick(std::size_t count) { return static_cast<unsigned>(m_random() % count); }
    bool Flip() { return Pick(2) == 0; }
    /// Six digits, as many as a document keeps.
    double Number() { return (static_cast<int>(Pick(200001)) - 100000) / 100.0; }

    void FillTexts(PartslibraryItem& item)
    {
        item.SetId(Text());
        item.SetName(Text());
        item.SetCategoryId(Text());
        item.SetTitle(Text());
        item.SetDescription(Text());
        item.SetShowTooltipTitle(Flip());
        item.SetShowTooltipDescription(Flip());
        std::string key = Flip() ? "KEY" + std::to_string(m_serial++) : "";
        item.SetLocIdDesc(key);
        for (unsigned i = Pick(3); i > 0; --i) {
            const auto tag = du::MakeCounted<SequencerTag>();
            tag->SetType(SequencerTag::GetTypeForSymbol(du::Symbol(Text())));
            tag->SetDescription(Text());
            tag->SetUnits(Text());
            tag->SetQuantityString(Text());
            item.AddSequencerTag(tag);
        }
    }

    Templates MakeCatalog(Origin origin)
    {
        Templates templates;
        for (int i = 0; i < 20; ++i) {
            const auto ol = du::MakeCounted<PartslibraryOlItem>(origin);
            FillTexts(*ol);
            ol->SetOlUrl("/x/" + std::to_string(m_serial++) + ".obj");
            ol->SetOlGalleryThumbnailUrl("/x/" + std::to_string(m_serial++) + "_64x64.png");
            ol->SetOlTooltip(Text());
            ol->SetOlScale(Number());
            ol->SetAxisName(Text());
            ol->SetDistanceFromCsys(Number());
            ol->SetOlOrientation(static_cast<int>(Pick(9)));
            dg::FMat33 matrix;
            matrix.Set(static_cast<int>(Pick(3)), static_cast<int>(Pick(3)), static_cast<float>(Number()));
            ol->SetOlCsys({matrix, {Number(), Number(), Number()}});
            if (Flip()) {
                ol->SetCameraData(Flip(), Number() / 3.0, {matrix, {Number() / 7.0, 0.0, 1e-300}});
            }
            templates.push_back(ol);
        }
        for (int i = 0; i < 20; ++i) {
            const auto image = du::MakeCounted<PartslibraryImageItem>(origin);
            FillTexts(*image);
            image->SetImageUrl("/x/" + std::to_string(m_serial++) + ".svg");
            image->SetImageGalleryThumbnailUrl("/x/" + std::to_string(m_serial++) + "_64x64.svg");
            image->SetImageTooltip(Text());
            image->SetIsBillboardImage(Flip());
            image->SetFlipVertical(Flip());
            image->SetRotateRight(static_cast<int>(Pick(4)) * 90);
            templates.push_back(image);
        }
        return templates;
    }

    Categories MakeCategories(Origin origin)
    {
        const auto category = du::MakeCounted<PartslibraryCategoryItem>(origin);
        category->SetId(Text());
        category->SetCatName(Text());
        category->SetCatTooltip(Text());
        category->SetCatDescription(Text());
        return {category};
    }

private:
    std::mt19937 m_random{11};
    int m_serial = 0;
};

TEST_F(RoundTrip, WhatWasReadAndWrittenIsTheSameBytesForEveryOriginKeyedAndAsStandard)
{
    for (const Origin origin : {Origin::ORIGIN_USER, Origin::ORIGIN_OOTB}) {
        for (const bool asStandard : {false, true}) {
            // The first reading settles the origin's folder; from then on nothing may change.
            const Origin readOrigin = asStandard ? Origin::ORIGIN_OOTB : origin;
            for (int round = 0; round < 5; ++round) {
                const std::string written = Write(MakeCatalog(origin), MakeCategories(origin), asStandard);
                ASSERT_GT(written.size(), 20000u);
                EXPECT_EQ(Rewrite(written, readOrigin, asStandard), written);
                EXPECT_EQ(Rewrite(m_folder.Write("read.xml", written), readOrigin, asStandard), written);
            }
        }
    }
}

TEST_F(RoundTrip, ASharedLibraryIsReadButNeverWrittenIntoAnother)
{
    const std::string written = Write(MakeCatalog(Origin::ORIGIN_USER), MakeCategories(Origin::ORIGIN_USER));
    EXPECT_EQ(Load(written, Origin::ORIGIN_SHARED).size(), 40u);
    const std::string shared = Rewrite(written, Origin::ORIGIN_SHARED);
    EXPECT_EQ(shared.find("id="), std::string::npos);
    EXPECT_EQ(Rewrite(shared, Origin::ORIGIN_SHARED), shared);
}

TEST_F(RoundTrip, ATagWithoutATypeComesBackEqual)
{
    const auto item = du::MakeCounted<PartslibraryImageItem>();
    item->SetTitle("t");
    item->SetShowTooltipTitle(true);
    const std::string url = m_folder.Path("a.png");
    item->SetImageUrl(url);
    item->AddSequencerTag(du::MakeCounted<SequencerTag>());
    item->AddSequencerTag(nullptr);
    const auto read = Load(Write({item}, {}));
    ASSERT_EQ(read.size(), 1u);
    const auto& tags = du::DynamicCast<PartslibraryItem>(read[0])->GetSequencerTags();
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_TRUE(*tags[0] == *item->GetSequencerTags()[0]);
}

TEST_F(RoundTrip, EntriesComeBackEqual)
{
    const Templates catalog = MakeCatalog(Origin::ORIGIN_USER);
    const Templates read = Load(Write(catalog, {}, true));
    ASSERT_EQ(read.size(), catalog.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
        const auto& before = dynamic_cast<const PartslibraryItem&>(*catalog[i]);
        const auto& after = dynamic_cast<const PartslibraryItem&>(*read[i]);
        EXPECT_EQ(after.GetId() + after.GetName() + after.GetCategoryId() + after.GetTitle() + after.GetDescription(),
                  before.GetId() + before.GetName() + before.GetCategoryId() + before.GetTitle() +
                      before.GetDescription());
        EXPECT_EQ(after.GetSequencerTags().size(), before.GetSequencerTags().size());
    }
}

TEST_F(RoundTrip, TheExampleLibrariesAreWrittenBackToTheByte)
{
    m_config.baseFolder = EXAMPLE_LIBRARY;
    m_config.messageFile = std::string(EXAMPLE_LIBRARY) + "/messages.xml";
    for (const char* language : {"en", "de", "fr"}) {
        m_config.language = language;
        RestartSession();
        const struct {
            const char* file;
            Origin origin;
        } libraries[] = {
            {"/SymbolsLibrary/PartSymbolLibrary.xml", Origin::ORIGIN_USER},
            {"/SymbolsLibrary/standard/PartSymbolLibrary.xml", Origin::ORIGIN_OOTB},
            // Maintained where it is read as one's own.
            {"/shared/SymbolsLibrary/PartSymbolLibrary.xml", Origin::ORIGIN_USER},
        };
        for (const auto& library : libraries) {
            const std::string path = EXAMPLE_LIBRARY + std::string(library.file);
            EXPECT_EQ(Rewrite(path, library.origin), test::TemporaryFolder::ReadFile(path)) << path;
        }
    }
}

} // namespace
