#include "LibraryTest.h"
#include "support/Contains.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <locale>

namespace
{

using namespace luk::illustration;
using namespace lusymbols;
using test::Categories;
using test::Origin;
using test::Templates;

/// Information about a collection of something else.
class OtherInformation : public CollectionInformation
{
};

/// Numbers as a German would write them.
class GermanNumbers : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class Writer : public test::LibraryTest
{
protected:
    /// The URL of the only picture in a written library.
    std::string WrittenUrl(const std::string& url, Origin origin, bool asStandard) const
    {
        const auto image = du::MakeCounted<PartslibraryImageItem>(origin);
        image->SetImageUrl(url);
        const std::string text = Write({image}, {}, asStandard);
        const std::size_t begin = text.find("<image url=\"") + 12;
        return text.substr(begin, text.find('"', begin) - begin);
    }
};

TEST_F(Writer, ADocumentIsReadAndWrittenToTheByteWhateverTheLocale)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new GermanNumbers));
    const std::string written = Rewrite(test::kDocument, Origin::ORIGIN_USER);
    std::locale::global(before);
    EXPECT_EQ(written, test::kDocument);
}

TEST_F(Writer, AsStandardTextsStandInPlaceOfKeys)
{
    m_config.messageFile = m_folder.Write("messages.xml", "<messages table=\"lubase:lumodulesStrings\" default=\"en\">"
                                                          "<message key=\"K\"><text lang=\"en\">Text</text></message>"
                                                          "</messages>");
    RestartSession();
    EXPECT_EQ(Rewrite(test::kDocument, Origin::ORIGIN_USER), test::kDocument);
    const std::string text = Rewrite(test::kDocument, Origin::ORIGIN_USER, true);
    EXPECT_EQ(text.find("locid"), std::string::npos);
    EXPECT_TRUE(test::Contains(text, "      <name>Text</name>\n      <tooltip>Direction arrows</tooltip>\n"));
    EXPECT_TRUE(test::Contains(text, "      <name>Text</name>\n      <title>Arrow &amp; &quot;bow&quot;</title>\n"));
    EXPECT_TRUE(test::Contains(text, "          <quantity unit=\"Text\">25</quantity>\n"));
}

TEST_F(Writer, AbsoluteUrlsGoIntoTheFolderOfTheirOrigin)
{
    const std::tuple<const char*, Origin, bool, const char*> urls[] = {
        {"C:\\pics\\stop.png", Origin::ORIGIN_USER, false, "SymbolsLibrary/2D/stop.png"},
        {"C:\\pics\\stop.png", Origin::ORIGIN_USER, true, "SymbolsLibrary/standard/2D/stop.png"},
        {"/pics/stop.png", Origin::ORIGIN_OOTB, false, "SymbolsLibrary/standard/2D/stop.png"},
        {"/pics/", Origin::ORIGIN_USER, false, "SymbolsLibrary/2D/"},
        {"pics\\stop.png", Origin::ORIGIN_USER, true, "pics\\stop.png"},
        {"", Origin::ORIGIN_OOTB, false, ""},
    };
    for (const auto& [url, origin, asStandard, written] : urls) {
        EXPECT_EQ(WrittenUrl(url, origin, asStandard), written) << url;
    }
}

TEST_F(Writer, SharedAndForeignEntriesAndNullsAreLeftOut)
{
    const auto foreign = du::MakeCounted<CategoryInfo>(
        Origin::ORIGIN_USER, luk::illustration::AssociativeObjectCollection::Type::CATEGORY, "F<");
    foreign->SetId("f");
    const Categories categories = {nullptr, du::MakeCounted<PartslibraryCategoryItem>(Origin::ORIGIN_SHARED), foreign};
    const Templates templates = {nullptr, du::MakeCounted<SymbolTemplate>(Origin::ORIGIN_USER),
                                 du::MakeCounted<PartslibraryOlItem>(Origin::ORIGIN_SHARED),
                                 du::MakeCounted<PartslibraryImageItem>(Origin::ORIGIN_SHARED)};
    EXPECT_EQ(Write(templates, categories),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<drellin-library>\n  <units></units>\n"
              "  <information></information>\n  <categories>\n    <category id=\"f\">\n      <name>F&lt;</name>\n"
              "      <tooltip></tooltip>\n      <description></description>\n    </category>\n  </categories>\n"
              "  <shapes>\n  </shapes>\n  <symbols>\n  </symbols>\n</drellin-library>\n");
}

TEST_F(Writer, OtherInformationChangesNothing)
{
    const auto information = du::MakeCounted<SymbolCollectionInformation>();
    information->SetUnits("mm");
    lusymbols::SymbolTemplateWriter writer(false);
    writer.SetCollectionInformation(information);
    writer.SetCollectionInformation(nullptr);
    writer.SetCollectionInformation(du::MakeCounted<OtherInformation>());
    writer.ToXml(du::Symbol(m_folder.Path("out.xml")), {}, {});
    EXPECT_NE(m_folder.Read("out.xml").find("<units>mm</units>"), std::string::npos);
}

TEST_F(Writer, AFileThatCannotBeOpenedIsLeftAlone)
{
    std::filesystem::create_directory(m_folder.Path("folder"));
    for (const char* name : {"folder", "no/such/folder.xml"}) {
        lusymbols::SymbolTemplateWriter(false).ToXml(du::Symbol(m_folder.Path(name)), {}, {});
    }
    EXPECT_TRUE(std::filesystem::is_directory(m_folder.Path("folder")));
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("no")));
}

TEST_F(Writer, NumbersAreRoundedAndThoseThatAreNoneAreReadBackAsZero)
{
    const auto shape = du::MakeCounted<PartslibraryOlItem>();
    shape->SetOlScale(std::numeric_limits<double>::quiet_NaN());
    shape->SetDistanceFromCsys(-std::numeric_limits<double>::infinity());
    shape->SetOlCsys(dg::Location());
    const auto read = du::DynamicCast<PartslibraryOlItem>(Load(Write({shape}, {}))[0]);
    EXPECT_EQ(read->GetOlScale(), 0.0);
    EXPECT_EQ(read->GetDistanceFromCsys(), 0.0);
    EXPECT_TRUE(read->GetOlCsys().GetPosition() == dg::DPoint3D::ORIGIN);
    shape->SetOlScale(1.0 / 3.0);
    shape->SetOlCsys({dg::FMat33::IDENTITY, {1234567.0, -0.5, 0.0}});
    const std::string text = Write({shape}, {});
    EXPECT_TRUE(test::Contains(text, "<scale>0.333333</scale>"));
    EXPECT_TRUE(test::Contains(text, "i=\"1\" pos_x=\"1.23457e+06\" pos_y=\"-0.5\" pos_z=\"0\"/> \n"));
}

} // namespace
