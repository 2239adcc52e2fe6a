#include "LibraryTest.h"

#include <dp/LUTracer.h>
#include <du/MessageCatalog.h>
#include <du/MessageTable.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <locale>
#include <sys/stat.h>

namespace
{

using lusymbols::PartslibraryCategoryItem;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;
using lusymbols::SymbolTemplateLoader;
using test::Categories;
using test::Origin;
using test::Templates;
using Strings = std::vector<std::string>;

Strings Ids(const Templates& templates)
{
    Strings ids;
    for (const auto& item : templates) {
        ids.push_back(item->GetId());
    }
    return ids;
}

class Loader : public test::LibraryTest
{
protected:
    Loader()
    {
        m_config.messageFile =
            m_folder.Write("messages.xml",
                           "<messages table=\"lubase:lumodulesStrings\" default=\"en\">"
                           "<message key=\"K\"><text lang=\"en\">Key text</text><text lang=\"de\">Text</text></message>"
                           "</messages>");
        RestartSession();
    }
};

TEST_F(Loader, TheRootDecidesWhetherAnythingIsRead)
{
    const std::string symbol = "<symbols><symbol id=\"a\"><name>a</name></symbol></symbols>";
    const std::string head = "<?xml version=\"1.0\"?>";
    const struct {
        const char* what;
        std::string document;
        bool isRead, isReadWhenShared;
    } documents[] = {
        {"five sections",
         head + "<drellin-library><units/><information/><categories/><shapes/>" + symbol + "</drellin-library>", true,
         true},
        {"another order",
         head + "<drellin-library>" + symbol +
             "<shapes/><categories/><information/><units/>"
             "</drellin-library>",
         true, true},
        {"four", head + "<drellin-library><units/><categories/><shapes/>" + symbol + "</drellin-library>", false, true},
        {"six",
         head + "<drellin-library><units/><units/><information/><categories/><shapes/>" + symbol + "</drellin-library>",
         false, true},
        {"five, one of them unknown",
         head + "<drellin-library><units/><other/><categories/><shapes/>" + symbol + "</drellin-library>", true, true},
        {"comments and text do not count",
         head +
             "<drellin-library>x<!-- c --><units/><information/><categories/>"
             "<shapes/>" +
             symbol + "</drellin-library>",
         true, true},
        {"other root",
         head + "<Drellin-library><units/><information/><categories/><shapes/>" + symbol + "</Drellin-library>", false,
         false},
        {"ill-formed at the end", head + "<drellin-library><units/><information/><categories/><shapes/>" + symbol,
         false, false},
    };
    for (const auto& expected : documents) {
        EXPECT_EQ(!Load(expected.document, Origin::ORIGIN_OOTB).empty(), expected.isRead) << expected.what;
        EXPECT_EQ(!Load(expected.document, Origin::ORIGIN_USER).empty(), expected.isRead) << expected.what;
        EXPECT_EQ(!Load(expected.document, Origin::ORIGIN_SHARED).empty(), expected.isReadWhenShared) << expected.what;
    }
}

TEST_F(Loader, ADocumentThatIsNotReadLeavesTheStringsAlone)
{
    SymbolTemplateLoader loader;
    loader.ParseFromFile(Document("", "", ""), Origin::ORIGIN_USER);
    loader.ParseFromFile("<?xml version=\"1.0\"?><other/>", Origin::ORIGIN_USER);
    loader.ParseFromFile("<?xml <", Origin::ORIGIN_USER);
    EXPECT_EQ(loader.GetUnits() + loader.GetInformation(), "mmi");
}

TEST_F(Loader, EveryFieldOfAShape)
{
    const auto shape = LoadShape(
        "<name>N</name><title>T</title><showTooltipTitle>false</showTooltipTitle><description>D</description>"
        "<showTooltipDescription>1</showTooltipDescription><tooltip>P</tooltip>"
        "<gallery_thumbnail url=\"Shape/a_64x64.png\"/><graphic url=\"/abs/a.obj\"/><scale> 2.5 mm</scale>"
        "<orientation>3</orientation><shape_csys a=\"1\" b=\"2\" c=\"3\" d=\"4\" e=\"5\" f=\"6\" g=\"7\" h=\"8\" "
        "i=\"9\""
        " pos_x=\"-1.5\" pos_y=\"2e3\" pos_z=\"x\"/><axis_name>X</axis_name>"
        "<distance_from_csys>-0.25</distance_from_csys><axis_id>2</axis_id><orientation_name>O</orientation_name>"
        "<annotation_to_symbol>true</annotation_to_symbol><use_current_orientation>1</use_current_orientation>"
        "<edit_csys_method>7</edit_csys_method>"
        "<camera ortho=\"true\" value=\"12.5\" location=\"1 0 0 0 1 0 0 0 1 4 5 6\"/>");
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->GetName() + shape->GetTitle() + shape->GetDescription() + shape->GetOlTooltip(), "NTDP");
    EXPECT_FALSE(shape->ShowTooltipTitle());
    EXPECT_TRUE(shape->ShowTooltipDescription());
    EXPECT_EQ(shape->GetOlGalleryThumbnailUrl(), m_folder.Path("Shape/a_64x64.png"));
    EXPECT_EQ(shape->GetOlDlgThumbnailUrl(), m_folder.Path("Shape/a_192x192.png"));
    EXPECT_EQ(shape->GetOlUrl(), "/abs/a.obj");
    EXPECT_EQ(shape->GetOlScale(), 2.5);
    EXPECT_EQ(shape->GetOlOrientation(), 3);
    for (int entry = 0; entry < 9; ++entry) {
        EXPECT_EQ(shape->GetOlCsys().GetMat().Get(entry / 3, entry % 3), static_cast<float>(entry + 1));
    }
    EXPECT_TRUE(shape->GetOlCsys().GetPosition() == dg::DPoint3D(-1.5, 2000, 0));
    EXPECT_EQ(shape->GetAxisName() + shape->GetOrientationName(), "XO");
    EXPECT_EQ(shape->GetDistanceFromCsys(), -0.25);
    EXPECT_EQ(shape->GetAxisId(), 2);
    EXPECT_TRUE(shape->IsAnnotationSymbol() && shape->IsUseCurrentOrientation());
    EXPECT_EQ(shape->GetEditCsysMethod(), 7);
    bool orthographic = false;
    double value = 0;
    dg::Location location;
    ASSERT_TRUE(shape->GetCameraData(orthographic, value, location));
    EXPECT_TRUE(orthographic && value == 12.5 && location.GetPosition() == dg::DPoint3D(4, 5, 6));
}

TEST_F(Loader, EveryFieldOfASymbol)
{
    const auto symbol = LoadSymbol(
        "<name>N</name><description>D</description><tooltip>P</tooltip><gallery_thumbnail url=\"2D\\a_64x64.svg\"/>"
        "<image url=\"2D/a.svg\"/><scale>2.5</scale><flip vertical=\"true\"/><rotate left=\" 90deg\"/>",
        "id=\"7\" categoryId=\"c\" billboard=\"1\"");
    ASSERT_TRUE(symbol);
    EXPECT_EQ(symbol->GetId() + symbol->GetCategoryId(), "7c");
    EXPECT_TRUE(symbol->GetIsBillboardImage());
    EXPECT_EQ(symbol->GetTitle(), "N");
    EXPECT_TRUE(symbol->ShowTooltipTitle());
    EXPECT_FALSE(symbol->ShowTooltipDescription());
    EXPECT_EQ(symbol->GetImageGalleryThumbnailUrl(), m_folder.Path("2D/a_64x64.svg"));
    EXPECT_EQ(symbol->GetImageDlgThumbnailUrl(), m_folder.Path("2D/a_192x192.svg"));
    EXPECT_EQ(symbol->GetImageUrl(), m_folder.Path("2D/a.svg"));
    EXPECT_EQ(symbol->GetImageScale(), 2);
    EXPECT_FALSE(symbol->GetFlipHorizontal());
    EXPECT_TRUE(symbol->GetFlipVertical());
    EXPECT_EQ(symbol->GetRotateRight(), 0);
    EXPECT_EQ(symbol->GetRotateLeft(), 90);
}

TEST_F(Loader, WhatIsMissingOrNonsenseKeepsItsDefault)
{
    const auto symbol = LoadSymbol("<name>n</name><gallery_thumbnail/><image URL=\"x\"/><flip horizontal=\"TRUE\"/>"
                                   "<showTooltipTitle>yes</showTooltipTitle><unknown><name>x</name></unknown>"
                                   "<scale>x</scale>",
                                   "billboard=\"maybe\"");
    ASSERT_TRUE(symbol);
    EXPECT_EQ(symbol->GetName(), "n");
    EXPECT_EQ(symbol->GetImageGalleryThumbnailUrl() + symbol->GetImageUrl() + symbol->GetId(), "");
    EXPECT_FALSE(symbol->GetFlipHorizontal() || symbol->GetIsBillboardImage());
    EXPECT_TRUE(symbol->ShowTooltipTitle());
    EXPECT_EQ(symbol->GetImageScale(), 0);

    // Of attributes with one name the first counts.
    const auto shape =
        LoadShape("<name>n</name><shape_csys e=\"2\" e=\"5\" pos_y=\"3\" pos_y=\"5\" z=\"7\"/><camera/>");
    EXPECT_EQ(shape->GetOlScale(), 1.0);
    EXPECT_EQ(shape->GetEditCsysMethod(), 1);
    EXPECT_EQ(shape->GetOlCsys().GetMat().Get(0, 0), 1.0f);
    EXPECT_EQ(shape->GetOlCsys().GetMat().Get(1, 1), 2.0f);
    EXPECT_TRUE(shape->GetOlCsys().GetPosition() == dg::DPoint3D(0, 3, 0));
    bool orthographic = true;
    double value = 1;
    dg::Location location;
    EXPECT_TRUE(shape->GetCameraData(orthographic, value, location));
    EXPECT_TRUE(!orthographic && value == 0.0 && location == dg::Location::IDENTITY);
}

TEST_F(Loader, ALaterElementOverwritesAnEarlierOneInAnyOrder)
{
    const auto symbol = LoadSymbol("<title>first</title><scale>1</scale><name>n</name><title>second</title>"
                                   "<scale>2</scale><name>m</name>");
    EXPECT_EQ(symbol->GetName() + symbol->GetTitle(), "msecond");
    EXPECT_EQ(symbol->GetImageScale(), 2);
    EXPECT_EQ(LoadSymbol("<name>n</name><title>t</title><title/>")->GetTitle(), "n");
}

TEST_F(Loader, TitlesFallBackToTheNameAndThenToTheId)
{
    EXPECT_EQ(LoadSymbol("<title/><name>n</name>")->GetTitle(), "n");
    EXPECT_EQ(LoadSymbol("", "id=\"12\"")->GetTitle(), "Image 12");
    EXPECT_EQ(LoadShape("")->GetTitle(), "Ol s");
}

TEST_F(Loader, KeysAreLookedUpAndKept)
{
    auto symbol = LoadSymbol("<name locid=\"K\">ignored</name><title locid=\"UNKNOWN\"/>"
                             "<description locid=\"\">ignored</description>");
    EXPECT_EQ(symbol->GetName() + "|" + symbol->GetLocIdName(), "Key text|K");
    EXPECT_EQ(symbol->GetTitle() + "|" + symbol->GetLocIdTitle(), "UNKNOWN|UNKNOWN");
    // A key that is there wins over the text, even when it is empty.
    EXPECT_EQ(symbol->GetDescription() + "|" + symbol->GetLocIdDesc(), "|");
    symbol = nullptr;

    m_config.language = "de";
    RestartSession();
    EXPECT_EQ(LoadSymbol("<name locid=\"K\"/>")->GetName(), "Text");
}

TEST_F(Loader, Tags)
{
    const auto symbol =
        LoadSymbol("<tags><tag type=\"TORQUE\"><description locid=\"K\"/><quantity locid=\"K\" "
                   "unit=\"Nm\">25</quantity></tag></tags>"
                   "<name>n</name><tags><other/><tag type=\"odd\"><description>d</description><quantity locid=\"K\"/>"
                   "<quantity unit=\"mm\"> 1 </quantity>"
                   "</tag></tags>");
    ASSERT_EQ(symbol->GetSequencerTags().size(), 2u);
    const auto& early = *symbol->GetSequencerTags()[0];
    // The tag takes the name that the entry has when the tag is read.
    EXPECT_EQ(early.GetName(), "");
    EXPECT_EQ(early.GetType().GetText(), "TORQUE");
    EXPECT_EQ(early.GetDescription() + early.GetLocIdDesc(), "Key textK");
    EXPECT_EQ(early.GetUnits() + early.GetLocIdUnits() + early.GetQuantityString(), "Key textK25");
    const auto& late = *symbol->GetSequencerTags()[1];
    EXPECT_EQ(late.GetName() + late.GetType().GetText() + late.GetDescription() + late.GetUnits(), "nodddmm");
    EXPECT_EQ(late.GetQuantityString() + late.GetLocIdUnits(), " 1 ");
}

TEST_F(Loader, CategoriesTakeTheOriginOfTheDocument)
{
    SymbolTemplateLoader loader;
    loader.ParseFromFile(Document("<category id=\"c\"><name locid=\"K\"/><tooltip locid=\"K\">t</tooltip>"
                                  "<description>d</description></category><other/>",
                                  "", ""),
                         Origin::ORIGIN_SHARED);
    Categories categories;
    loader.GetCategoryList(categories);
    ASSERT_EQ(categories.size(), 1u);
    const auto category = du::DynamicCast<PartslibraryCategoryItem>(categories[0]);
    EXPECT_TRUE(category->IsShared());
    EXPECT_EQ(category->GetId() + category->GetName() + category->GetLocIdName(), "cKey textK");
    EXPECT_EQ(category->GetCatTooltip() + category->GetCatDescription(), "td");
}

TEST_F(Loader, OfEqualNamesTheFirstStaysAndEqualIdsBecomeUnique)
{
    const auto entry = [](const char* id, const char* name) {
        return std::string("<symbol id=\"") + id + "\"><name>" + name + "</name></symbol>";
    };
    SymbolTemplateLoader loader;
    const std::string document = Document("<category id=\"c\"/>", "<shape id=\"a\"><name>one</name></shape>",
                                          entry("b", "one") + entry("a", "two") + entry("a1", "three") +
                                              entry("a", "four") + entry("", "") + entry("x", ""));
    EXPECT_EQ(Ids(Load(loader, document)), (Strings{"a", "a1", "a11", "a2", ""}));
    // The same document once more adds no entry, but its categories again.
    EXPECT_EQ(Load(loader, document).size(), 5u);
    Categories categories;
    loader.GetCategoryList(categories);
    EXPECT_EQ(categories.size(), 2u);
}

TEST_F(Loader, RenamedEntriesCountByTheirNewNameAtTheNextMerge)
{
    SymbolTemplateLoader loader;
    const std::string document = Document("", "", "<symbol id=\"a\"><name>one</name></symbol>");
    Load(loader, document)[0]->SetName("other");
    EXPECT_EQ(Ids(Load(loader, document)), (Strings{"a", "a1"}));
}

TEST_F(Loader, TheOriginFollowsFromThePlaceOfTheFile)
{
    const std::string document = Document("", "", "<symbol id=\"a\"><name>a</name><image url=\"a.png\"/></symbol>");
    m_config.sharedSymbolLibraryEnabled = true;
    m_config.sharedSymbolLibraryFolder = m_folder.Path("team");
    RestartSession();
    const struct {
        const char* file;
        Origin origin;
        const char* url;
    } files[] = {
        {"SymbolsLibrary/PartSymbolLibrary.xml", Origin::ORIGIN_USER, "a.png"},
        {"SymbolsLibrary/standard/PartSymbolLibrary.xml", Origin::ORIGIN_OOTB, "a.png"},
        {"team/SymbolsLibrary/PartSymbolLibrary.xml", Origin::ORIGIN_SHARED, "team/a.png"},
        {"elsewhere/PartSymbolLibrary.xml", Origin::ORIGIN_OOTB, "a.png"},
        {"SymbolsLibrary//./PartSymbolLibrary.xml", Origin::ORIGIN_USER, "a.png"},
        {"SymbolsLibrary/partsymbollibrary.xml", Origin::ORIGIN_OOTB, "a.png"},
    };
    for (const auto& expected : files) {
        m_folder.Write(expected.file, document);
        SymbolTemplateLoader loader;
        Templates templates;
        EXPECT_TRUE(loader.GetTemplateList(du::Symbol(m_folder.Path() + "/" + expected.file), templates));
        ASSERT_EQ(templates.size(), 1u) << expected.file;
        EXPECT_EQ(templates[0]->GetOrigin(), expected.origin) << expected.file;
        EXPECT_EQ(du::DynamicCast<PartslibraryImageItem>(templates[0])->GetImageUrl(), m_folder.Path(expected.url))
            << expected.file;
    }
    // The shared library counts only while the preferences switch it on.
    m_config.sharedSymbolLibraryEnabled = false;
    RestartSession();
    SymbolTemplateLoader loader;
    Templates templates;
    loader.GetTemplateList(du::Symbol(m_folder.Path("team/SymbolsLibrary/PartSymbolLibrary.xml")), templates);
    EXPECT_EQ(templates[0]->GetOrigin(), Origin::ORIGIN_OOTB);
}

TEST_F(Loader, TextsAreTakenToTheByte)
{
    const struct {
        std::string written, read;
    } texts[] = {
        {"  two  ", "  two  "},
        {"   ", "   "},
        {"a&lt;b&amp;&quot;&apos;&gt;", "a<b&\"'>"},
        {"a<!-- c -->b<![CDATA[<c>]]>d", "ab<c>d"},
        {"&unknown;", "&unknown;"},
        {"\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d \xe2\x80\xae", "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d \xe2\x80\xae"},
        {"bad \xff\xfe", "bad \xff\xfe"},
        {"&#228;", "\xc3\xa4"},
    };
    for (const auto& text : texts) {
        EXPECT_EQ(LoadSymbol("<name>n</name><description>" + text.written + "</description>")->GetDescription(),
                  text.read);
    }
}

TEST_F(Loader, LinesEndInLineFeedsAfterReadingAFile)
{
    const std::string head = "<?xml version=\"1.0\"?>\r\n<drellin-library><units>";
    const std::string tail = "</units><information/><categories/><shapes/><symbols/></drellin-library>";
    const struct {
        std::string written, read;
    } texts[] = {
        {"a\r\nb", "a\nb"},
        {"a\nb", "a\nb"},
        {"a\r\r\nb", "a\r\nb"},
        {"a\rb", "a\rb"},
        {"\r\n\r\n", "\n\n"},
        // Carriage returns on both sides of every border between blocks of the file.
        {std::string(128 * 1024 - head.size() - 1, 'x') + "\r\n",
         std::string(128 * 1024 - head.size() - 1, 'x') + "\n"},
        {std::string(128 * 1024 - head.size() - 1, 'x') + "\ry",
         std::string(128 * 1024 - head.size() - 1, 'x') + "\ry"},
    };
    for (const auto& text : texts) {
        SymbolTemplateLoader loader;
        loader.ParseFromFile(m_folder.Write("lines.xml", head + text.written + tail), Origin::ORIGIN_USER);
        EXPECT_EQ(loader.GetUnits(), text.read);
    }
}

TEST_F(Loader, WhatIsNoReadableDocumentGivesNothing)
{
    const std::string good = Document("", "", "<symbol id=\"a\"/>");
    std::string deep = "<?xml version=\"1.0\"?>";
    for (int level = 0; level < 100000; ++level) {
        deep += "<a>";
    }
    // A hole of a terabyte reads as so many NUL bytes.
    const std::string sparse = m_folder.Write("sparse.xml", "");
    std::filesystem::resize_file(sparse, std::uintmax_t{1} << 40);
    mkfifo(m_folder.Path("pipe").c_str(), 0600);
    std::filesystem::create_directory(m_folder.Path("folder"));
    const std::string sources[] = {
        "",
        "<?xml",
        "<?xml ",
        "no such file",
        m_folder.Path("pipe"),
        m_folder.Path("folder"),
        "/dev/zero",
        m_folder.Write("empty.xml", ""),
        sparse,
        m_folder.Write("nul.xml", std::string(good).insert(good.size() / 2, 1, '\0')),
        m_folder.Write("utf16.xml", "\xff\xfe<\0?\0x\0m\0l\0"),
        good + "<second/>",
        deep,
        "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY b \"c\"><!ENTITY d \"&b;&b;\">]>",
    };
    for (const std::string& source : sources) {
        EXPECT_TRUE(Load(source).empty()) << source.substr(0, 60);
    }
    for (std::size_t length = 0; length < good.size(); ++length) {
        EXPECT_TRUE(Load(good.substr(0, length)).empty()) << length;
    }
}

TEST_F(Loader, MarksDeclarationsAndDepthThatDoNoHarm)
{
    const std::string good = Document("", "", "<symbol id=\"a\"><name>\xc3\xa4</name></symbol>");
    std::string nested = "<symbol id=\"a\"><name>\xc3\xa4</name>";
    for (int level = 0; level < 200; ++level) {
        nested += "<x>";
    }
    for (int level = 0; level < 200; ++level) {
        nested += "</x>";
    }
    std::string latin = good;
    latin.replace(latin.find("utf-8"), 5, "latin1");
    for (const std::string& document : {"\xef\xbb\xbf" + good, latin, Document("", "", nested + "</symbol>")}) {
        const Templates templates = Load(m_folder.Write("library.xml", document));
        ASSERT_EQ(templates.size(), 1u) << document.substr(0, 60);
        EXPECT_EQ(templates[0]->GetName(), "\xc3\xa4");
    }
}

/// Numbers as a German would write them.
class GermanNumbers : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(Loader, NumbersDoNotDependOnTheGlobalLocale)
{
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new GermanNumbers));
    const auto shape = LoadShape("<name>n</name><scale>1234.5</scale><distance_from_csys>1,5</distance_from_csys>"
                                 "<orientation>1.234</orientation><axis_id>99999999999</axis_id>");
    const std::string written = Write({shape}, {});
    std::locale::global(old);
    EXPECT_EQ(shape->GetOlScale(), 1234.5);
    EXPECT_EQ(shape->GetDistanceFromCsys(), 1.0);
    EXPECT_EQ(shape->GetOlOrientation(), 1);
    EXPECT_EQ(shape->GetAxisId(), 2147483647);
    EXPECT_NE(written.find("<scale>1234.5</scale>"), std::string::npos);
    EXPECT_NE(written.find("<axis_id>2147483647</axis_id>"), std::string::npos);
}

TEST_F(Loader, AppendsToTheListsItIsGiven)
{
    SymbolTemplateLoader loader;
    Templates templates(1);
    Categories categories(1);
    loader.ParseFromFile(Document("<category id=\"c\"/>", "", "<symbol id=\"a\"/>"), Origin::ORIGIN_USER);
    loader.GetTemplateList(du::Symbol(), templates);
    loader.GetTemplateList(du::Symbol("missing"), templates);
    loader.GetCategoryList(categories);
    EXPECT_EQ(templates.size(), 3u);
    EXPECT_EQ(categories.size(), 2u);

    const SymbolTemplateLoader copy(loader);
    EXPECT_EQ(copy.GetUnits(), "mm");

    loader.CreateListFromXml(nullptr, Origin::ORIGIN_USER);
    loader.CreateCategoryListFromXml(nullptr, Origin::ORIGIN_USER);
    loader.CreateOlListFromXml(nullptr, Origin::ORIGIN_USER);
    loader.CreateImageListFromXml(nullptr, Origin::ORIGIN_USER);
}

} // namespace
