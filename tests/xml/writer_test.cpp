#include "LibraryTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace
{

using luk::illustration::CategoryInfo;
using luk::illustration::CollectionInformation;
using luk::illustration::SequencerTag;
using luk::illustration::SymbolCollectionInformation;
using luk::illustration::SymbolTemplate;
using lusymbols::PartslibraryCategoryItem;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryOlItem;
using test::Categories;
using test::Origin;
using test::Templates;

/// Information about a collection of something else.
class OtherInformation : public CollectionInformation
{
};

class Writer : public test::LibraryTest
{
protected:
    static du::SmartPtr<PartslibraryOlItem> MakeShape(Origin origin = Origin::ORIGIN_USER)
    {
        const auto shape = du::MakeCounted<PartslibraryOlItem>(origin);
        std::string key = "ARROW";
        shape->SetId("shp-1");
        shape->SetCategoryId("cat-arrows");
        shape->SetName("Arrow");
        shape->SetLocIdName(key);
        shape->SetTitle("Arrow & \"bow\"");
        shape->SetShowTooltipTitle(true);
        shape->SetDescription("Bent <arrow>");
        shape->SetOlGalleryThumbnailUrl("SymbolsLibrary/standard/Shape/arrow_64x64.png");
        shape->SetOlUrl("Shape\\arrow.obj");
        shape->SetOlCsys({dg::FMat33::IDENTITY, {1234567.0, -0.5, 1.0 / 3.0}});
        shape->SetCameraData(false, 45.5, {dg::FMat33::IDENTITY, {0.1, 0.0, -2.0}});
        const auto tag = du::MakeCounted<SequencerTag>();
        std::string units = "NM";
        tag->SetType(SequencerTag::GetTypeForSymbol(du::Symbol("TORQUE")));
        tag->SetDescription("Torque");
        tag->SetUnits("Nm");
        tag->SetLocIdUnits(units);
        tag->SetQuantityString("25");
        shape->AddSequencerTag(tag);
        return shape;
    }

    static du::SmartPtr<PartslibraryImageItem> MakeImage(const std::string& url, Origin origin = Origin::ORIGIN_USER)
    {
        const auto image = du::MakeCounted<PartslibraryImageItem>(origin);
        image->SetId("img-1");
        image->SetName("Stop");
        image->SetTitle("Stop");
        image->SetImageTooltip("'tip'");
        image->SetImageGalleryThumbnailUrl(url);
        image->SetImageUrl(url);
        image->SetImageScale(100);
        image->SetRotateLeft(-90);
        return image;
    }

    static du::SmartPtr<PartslibraryCategoryItem> MakeCategory()
    {
        const auto category = du::MakeCounted<PartslibraryCategoryItem>();
        std::string key = "ARROWS";
        category->SetId("cat-arrows");
        category->SetCatName("Arrows");
        category->SetCatTooltip("Direction arrows");
        category->SetLocIdName(key);
        category->SetLocIdDesc(key);
        return category;
    }

    /// The URL of the only picture in a written library.
    std::string WrittenUrl(const std::string& url, Origin origin, bool asStandard) const
    {
        const std::string text = Write({MakeImage(url, origin)}, {}, asStandard);
        const std::size_t begin = text.find("<image url=\"") + 12;
        return text.substr(begin, text.find('"', begin) - begin);
    }
};

TEST_F(Writer, ADocumentIsWrittenToTheByte)
{
    const auto information = du::MakeCounted<SymbolCollectionInformation>();
    information->SetUnits("mm");
    information->SetInformation("A & B");
    EXPECT_EQ(Write({MakeShape(), MakeImage("SymbolsLibrary/2D/stop.png")}, {MakeCategory()}, false, information),
              R"(<?xml version="1.0" encoding="utf-8"?>
<drellin-library>
  <units>mm</units>
  <information>A &amp; B</information>
  <categories>
    <category id="cat-arrows">
      <name locid="ARROWS"/> 
      <tooltip>Direction arrows</tooltip>
      <description></description>
    </category>
  </categories>
  <shapes>
    <shape id="shp-1" categoryId="cat-arrows">
      <name locid="ARROW"/> 
      <title>Arrow &amp; &quot;bow&quot;</title>
      <showTooltipTitle>true</showTooltipTitle>
      <description>Bent &lt;arrow&gt;</description>
      <showTooltipDescription>false</showTooltipDescription>
      <tooltip></tooltip>
      <gallery_thumbnail url="SymbolsLibrary/standard/Shape/arrow_64x64.png"/> 
      <graphic url="Shape\arrow.obj"/> 
      <scale>1</scale>
      <orientation>0</orientation>
      <shape_csys a="1" b="0" c="0" d="0" e="1" f="0" g="0" h="0" i="1" pos_x="1.23457e+06" pos_y="-0.5" pos_z="0.333333"/> 
      <axis_name></axis_name>
      <distance_from_csys>0</distance_from_csys>
      <axis_id>0</axis_id>
      <orientation_name></orientation_name>
      <annotation_to_symbol>false</annotation_to_symbol>
      <use_current_orientation>false</use_current_orientation>
      <edit_csys_method>1</edit_csys_method>
      <tags>
        <tag type="TORQUE">
          <description>Torque</description>
          <quantity locid="NM">25</quantity>
        </tag>
      </tags>
      <camera ortho="false" value="45.5" location="1 0 0 0 1 0 0 0 1 0.1 0 -2"/> 
    </shape>
  </shapes>
  <symbols>
    <symbol id="img-1" categoryId="" billboard="false">
      <name>Stop</name>
      <title>Stop</title>
      <showTooltipTitle>false</showTooltipTitle>
      <description></description>
      <showTooltipDescription>false</showTooltipDescription>
      <tooltip>&apos;tip&apos;</tooltip>
      <gallery_thumbnail url="SymbolsLibrary/2D/stop.png"/> 
      <image url="SymbolsLibrary/2D/stop.png"/> 
      <scale>100</scale>
      <flip horizontal="false" vertical="false"/> 
      <rotate right="0" left="-90"/> 
    </symbol>
  </symbols>
</drellin-library>
)");
}

TEST_F(Writer, AsStandardTextsStandInPlaceOfKeys)
{
    const std::string text = Write({MakeShape()}, {MakeCategory()}, true);
    EXPECT_EQ(text.find("locid"), std::string::npos);
    EXPECT_NE(text.find("      <name>Arrows</name>\n"), std::string::npos);
    EXPECT_NE(text.find("      <name>Arrow</name>\n"), std::string::npos);
    EXPECT_NE(text.find("          <quantity unit=\"Nm\">25</quantity>\n"), std::string::npos);
}

TEST_F(Writer, AnEmptyCatalogKeepsItsFiveSections)
{
    EXPECT_EQ(Write({}, {}), "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<drellin-library>\n  <units></units>\n"
                             "  <information></information>\n  <categories>\n  </categories>\n  <shapes>\n  </shapes>\n"
                             "  <symbols>\n  </symbols>\n</drellin-library>\n");
}

TEST_F(Writer, AbsoluteUrlsGoIntoTheFolderOfTheirOrigin)
{
    const struct {
        const char* url;
        Origin origin;
        bool asStandard;
        const char* written;
    } urls[] = {
        {"C:\\pics\\stop.png", Origin::ORIGIN_USER, false, "SymbolsLibrary/2D/stop.png"},
        {"C:\\pics\\stop.png", Origin::ORIGIN_USER, true, "SymbolsLibrary/standard/2D/stop.png"},
        {"/pics/stop.png", Origin::ORIGIN_OOTB, false, "SymbolsLibrary/standard/2D/stop.png"},
        {"/pics/", Origin::ORIGIN_USER, false, "SymbolsLibrary/2D/"},
        {"pics\\stop.png", Origin::ORIGIN_USER, true, "pics\\stop.png"},
        {"", Origin::ORIGIN_OOTB, false, ""},
    };
    for (const auto& expected : urls) {
        EXPECT_EQ(WrittenUrl(expected.url, expected.origin, expected.asStandard), expected.written) << expected.url;
    }
}

TEST_F(Writer, SharedAndForeignEntriesAndNullsAreLeftOut)
{
    const auto shared = MakeCategory();
    const auto foreign = du::MakeCounted<CategoryInfo>(
        Origin::ORIGIN_USER, luk::illustration::AssociativeObjectCollection::Type::CATEGORY, "F<");
    foreign->SetId("f");
    const Categories categories = {nullptr, du::MakeCounted<PartslibraryCategoryItem>(Origin::ORIGIN_SHARED), foreign};
    const Templates templates = {nullptr, du::MakeCounted<SymbolTemplate>(Origin::ORIGIN_USER),
                                 MakeShape(Origin::ORIGIN_SHARED), MakeImage("x", Origin::ORIGIN_SHARED)};
    const std::string text = Write(templates, categories);
    EXPECT_NE(text.find("  <categories>\n    <category id=\"f\">\n      <name>F&lt;</name>\n      <tooltip></tooltip>\n"
                        "      <description></description>\n    </category>\n  </categories>\n  <shapes>\n  </shapes>\n"
                        "  <symbols>\n  </symbols>\n"),
              std::string::npos)
        << text;
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
        lusymbols::SymbolTemplateWriter(false).ToXml(du::Symbol(m_folder.Path(name)), {MakeShape()}, {});
    }
    EXPECT_TRUE(std::filesystem::is_directory(m_folder.Path("folder")));
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("no")));
}

TEST_F(Writer, NumbersThatAreNoneAreReadBackAsZero)
{
    const auto shape = MakeShape();
    shape->SetOlScale(std::numeric_limits<double>::quiet_NaN());
    shape->SetDistanceFromCsys(-std::numeric_limits<double>::infinity());
    shape->SetOlCsys(dg::Location());
    const std::string text = Write({shape}, {});
    const auto read = du::DynamicCast<PartslibraryOlItem>(Load(text)[0]);
    EXPECT_EQ(read->GetOlScale(), 0.0);
    EXPECT_EQ(read->GetDistanceFromCsys(), 0.0);
    EXPECT_TRUE(read->GetOlCsys().GetPosition() == dg::DPoint3D::ORIGIN);
}

} // namespace
