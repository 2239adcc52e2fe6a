#include "LibraryTest.h"

#include <dg/XmlElem.h>
#include <du/FileSystem.h>

#include <gtest/gtest.h>

#include <random>

namespace
{

using namespace lusymbols;
using luk::illustration::SequencerTag;
using test::Origin;
using test::Templates;

class RoundTrip : public test::LibraryTest
{
protected:
    /// The document of these tests with twenty entries of each kind, and other texts wherever texts may stand.
    std::string MakeDocument()
    {
        const std::string document = test::kDocument;
        const std::size_t shape = document.find("    <shape ");
        const std::size_t shapesEnd = document.find("  </shapes>");
        const std::size_t symbol = document.find("    <symbol ");
        const std::size_t symbolsEnd = document.find("  </symbols>");
        std::string text = document.substr(0, shape);
        for (int entry = 0; entry < 20; ++entry) {
            text += WithOtherTexts(document.substr(shape, shapesEnd - shape));
        }
        text += document.substr(shapesEnd, symbol - shapesEnd);
        for (int entry = 0; entry < 20; ++entry) {
            text += WithOtherTexts(document.substr(symbol, symbolsEnd - symbol));
        }
        return text + document.substr(symbolsEnd);
    }

private:
    std::string WithOtherTexts(std::string entry)
    {
        static constexpr std::pair<const char*, char> kPlaces[] = {
            {" id=\"", '"'},       {"categoryId=\"", '"'}, {"<name locid=\"", '"'}, {"<name>", '<'},
            {"<title>", '<'},      {"<description>", '<'}, {"<tooltip>", '<'},      {"<axis_name>", '<'},
            {"<tag type=\"", '"'}, {"<quantity>", '<'},    {"locid=\"K\">", '<'},   {"<orientation_name>", '<'}};
        for (const auto& [begin, end] : kPlaces) {
            for (std::size_t at = 0; (at = entry.find(begin, at)) != std::string::npos;) {
                at += std::string(begin).size();
                entry.replace(at, entry.find(end, at) - at, Text());
            }
        }
        return entry;
    }

    /// A text with all that could go wrong on the way, unique by its number.
    std::string Text()
    {
        static constexpr const char* kPieces[] = {"a",  "<",        ">",    "&",   "\"",   "'",  "&amp;",        " ",
                                                  "\t", "\xd7\xa9", "\xff", "]]>", "<!--", "\\", "\xe2\x80\xae", "\x01",
                                                  "\r", "%s"};
        std::string text = std::to_string(m_serial++);
        for (std::size_t i = m_random() % 8; i > 0; --i) {
            text += kPieces[m_random() % std::size(kPieces)];
        }
        return dg::EncodeXmlStr(text);
    }

    std::mt19937 m_random{11};
    int m_serial = 0;
};

TEST_F(RoundTrip, WhatWasReadAndWrittenIsTheSameBytesForEveryOriginKeyedAndAsStandard)
{
    for (int round = 0; round < 5; ++round) {
        const std::string document = MakeDocument();
        EXPECT_EQ(Rewrite(document, Origin::ORIGIN_USER), document);
        for (const Origin origin : {Origin::ORIGIN_USER, Origin::ORIGIN_OOTB}) {
            for (const bool asStandard : {false, true}) {
                // The first reading settles the origin's folder and the keys; from then on nothing may change.
                const Origin readOrigin = asStandard ? Origin::ORIGIN_OOTB : origin;
                const std::string written = Rewrite(document, origin, asStandard);
                ASSERT_GT(written.size(), 20000u);
                EXPECT_EQ(Rewrite(written, readOrigin, asStandard), written);
                EXPECT_EQ(Rewrite(m_folder.Write("read.xml", written), readOrigin, asStandard), written);
            }
        }
    }
}

TEST_F(RoundTrip, ASharedLibraryIsReadButNeverWrittenIntoAnother)
{
    const std::string document = MakeDocument();
    EXPECT_EQ(Load(document, Origin::ORIGIN_SHARED).size(), 40u);
    const std::string shared = Rewrite(document, Origin::ORIGIN_SHARED);
    EXPECT_EQ(shared.find("id="), std::string::npos);
    EXPECT_EQ(Rewrite(shared, Origin::ORIGIN_SHARED), shared);
}

TEST_F(RoundTrip, ALibraryMayLieDeepAndHaveAnyName)
{
    std::string path = m_folder.Path();
    while (path.size() < 400) {
        path += "/\xC3\x84 \xE6\x96\x87 " + std::string(100, 'd');
        ASSERT_EQ(du::FileSystem::Mkdir(path), 0);
    }
    path += "/\xC3\x9C.xml";
    const Templates read = Load(test::kDocument);
    SymbolTemplateWriter(false).ToXml(du::Symbol(path), Templates(read), {});
    const Templates again = Load(path);
    ASSERT_EQ(again.size(), read.size());
    EXPECT_TRUE(again[0]->Compare(read[0]));
    const std::string end = du::FileSpec::DIR_SEP_CHAR == '/' ? "\n" : "\r\n";
    EXPECT_TRUE(du::FileSystem::CopyFile(path, m_folder.Path("short.xml")));
    EXPECT_TRUE(m_folder.Read("short.xml").ends_with("</symbols>" + end + "</drellin-library>" + end));
}

TEST_F(RoundTrip, ATagWithoutATypeComesBackEqual)
{
    const auto item = du::MakeCounted<PartslibraryImageItem>();
    item->AddSequencerTag(du::MakeCounted<SequencerTag>());
    item->AddSequencerTag(nullptr);
    const auto read = du::DynamicCast<PartslibraryItem>(Load(Write({item}, {})).at(0));
    ASSERT_EQ(read->GetSequencerTags().size(), 1u);
    EXPECT_TRUE(*read->GetSequencerTags()[0] == *item->GetSequencerTags()[0]);
}

} // namespace
