#include "LibraryTest.h"
#include "support/Contains.h"
#include "support/Links.h"

#include <dp/LUTracer.h>
#include <du/FileSpec.h>
#include <du/MessageCatalog.h>
#include <du/MessageTable.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace
{

using namespace lusymbols;
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

std::string WithReturns(const std::string& lines)
{
    std::string text;
    for (const char c : lines) {
        text.append(c == '\n' ? "\r" : "").push_back(c);
    }
    return text;
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
    const std::string four = "<units/><categories/><shapes/>" + symbol;
    const std::string five = four + "<information/>";
    const std::tuple<const char*, std::string, bool, bool> documents[] = {
        // read, and read when shared
        {"five sections", "<drellin-library>" + five + "</drellin-library>", true, true},
        {"another order",
         "<drellin-library>" + symbol + "<shapes/><categories/><information/><units/></drellin-library>", true, true},
        {"four", "<drellin-library>" + four + "</drellin-library>", false, true},
        {"six", "<drellin-library><units/>" + five + "</drellin-library>", false, true},
        {"five, one of them unknown", "<drellin-library><other/>" + four + "</drellin-library>", true, true},
        {"comments and text do not count", "<drellin-library>x<!-- c -->" + five + "</drellin-library>", true, true},
        {"other root", "<Drellin-library>" + five + "</Drellin-library>", false, false},
        {"ill-formed at the end", "<drellin-library>" + five, false, false},
    };
    for (const auto& [what, document, isRead, isReadWhenShared] : documents) {
        const std::string source = "<?xml version=\"1.0\"?>" + document;
        EXPECT_EQ(!Load(source, Origin::ORIGIN_OOTB).empty(), isRead) << what;
        EXPECT_EQ(!Load(source, Origin::ORIGIN_USER).empty(), isRead) << what;
        EXPECT_EQ(!Load(source, Origin::ORIGIN_SHARED).empty(), isReadWhenShared) << what;
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

/// What is odd in an entry, and what it is then written as.
TEST_F(Loader, WhatIsOddIsReadWithIndulgence)
{
    const std::pair<const char*, const char*> shapes[] = {
        {"<scale> 2.5 mm</scale>", "<scale>2.5</scale>"},
        {"", "<scale>1</scale>"},
        {"", "<edit_csys_method>1</edit_csys_method>"},
        {"", "<title>Ol s</title>"},
        {"<shape_csys pos_x=\"-1.5\" pos_y=\"2e3\" pos_z=\"x\"/>",
         "i=\"1\" pos_x=\"-1.5\" pos_y=\"2000\" pos_z=\"0\"/>"},
        // Of attributes with one name the first counts.
        {"<shape_csys e=\"2\" e=\"5\" z=\"7\"/>", "d=\"0\" e=\"2\" f=\"0\" g=\"0\" h=\"0\" i=\"1\" pos_x=\"0\""},
        {"<camera/>", "<camera ortho=\"false\" value=\"0\" location=\"1 0 0 0 1 0 0 0 1 0 0 0\"/>"},
        {"<graphic url=\"/abs/a.obj\"/>", "<graphic url=\"SymbolsLibrary/Shape/a.obj\"/>"},
    };
    for (const auto& [children, written] : shapes) {
        EXPECT_TRUE(test::Contains(Write({LoadShape(children)}, {}), written)) << children;
    }
    const std::pair<const char*, const char*> symbols[] = {
        {"<scale>2.5</scale>", "<scale>2</scale>"},
        {"<scale>x</scale>", "<scale>0</scale>"},
        {"<flip vertical=\"1\"/>", "<flip horizontal=\"false\" vertical=\"true\"/>"},
        {"<flip horizontal=\"TRUE\"/>", "<flip horizontal=\"false\" vertical=\"false\"/>"},
        {"<rotate left=\" 90deg\"/>", "<rotate right=\"0\" left=\"90\"/>"},
        {"<showTooltipTitle>yes</showTooltipTitle>", "<showTooltipTitle>true</showTooltipTitle>"},
        {"<gallery_thumbnail/><image URL=\"x\"/>", "<gallery_thumbnail url=\"\"/> \n      <image url=\"\"/>"},
        {"<unknown><name>x</name></unknown>", "<name></name>\n      <title>Image s</title>"},
        {"<name>n</name><title>a</title><title>b</title><name>m</name>", "<name>m</name>\n      <title>b</title>"},
        {"<name>n</name><title>t</title><title/>", "<title>n</title>"},
        {"<title/><name>n</name>", "<title>n</title>"},
    };
    for (const auto& [children, written] : symbols) {
        EXPECT_TRUE(test::Contains(Write({LoadSymbol(children)}, {}), written)) << children;
    }
    EXPECT_TRUE(LoadSymbol("", "billboard=\"1\"")->GetIsBillboardImage());
    EXPECT_FALSE(LoadSymbol("", "billboard=\"maybe\"")->GetIsBillboardImage());
}

TEST_F(Loader, UrlsAreResolvedAndLargeThumbnailsNamed)
{
    const auto shape = LoadShape("<gallery_thumbnail url=\"Shape/a_64x64.png\"/><graphic url=\"/abs/a.obj\"/>");
    EXPECT_EQ(shape->GetOlGalleryThumbnailUrl(), m_folder.Url("Shape/a_64x64.png"));
    EXPECT_EQ(shape->GetOlDlgThumbnailUrl(), m_folder.Url("Shape/a_192x192.png"));
    EXPECT_EQ(shape->GetOlUrl(), "/abs/a.obj");
    const auto symbol = LoadSymbol("<gallery_thumbnail url=\"2D\\a_64x64.svg\"/><image url=\"2D/a.svg\"/>");
    EXPECT_EQ(symbol->GetImageGalleryThumbnailUrl(), m_folder.Url("2D/a_64x64.svg"));
    EXPECT_EQ(symbol->GetImageDlgThumbnailUrl(), m_folder.Url("2D/a_192x192.svg"));
    EXPECT_EQ(symbol->GetImageUrl(), m_folder.Url("2D/a.svg"));
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
    const bool caseCounts = du::FileSpec::DIR_SEP_CHAR == '/';
    const std::tuple<const char*, Origin, const char*> files[] = {
        {"SymbolsLibrary/PartSymbolLibrary.xml", Origin::ORIGIN_USER, "a.png"},
        {"SymbolsLibrary/standard/PartSymbolLibrary.xml", Origin::ORIGIN_OOTB, "a.png"},
        {"team/SymbolsLibrary/PartSymbolLibrary.xml", Origin::ORIGIN_SHARED, "team/a.png"},
        {"elsewhere/PartSymbolLibrary.xml", Origin::ORIGIN_OOTB, "a.png"},
        {"SymbolsLibrary//./PartSymbolLibrary.xml", Origin::ORIGIN_USER, "a.png"},
        {"SymbolsLibrary/partsymbollibrary.xml", caseCounts ? Origin::ORIGIN_OOTB : Origin::ORIGIN_USER, "a.png"},
    };
    for (const auto& [file, origin, url] : files) {
        m_folder.Write(file, document);
        SymbolTemplateLoader loader;
        Templates templates;
        EXPECT_TRUE(loader.GetTemplateList(du::Symbol(m_folder.Path() + "/" + file), templates));
        ASSERT_EQ(templates.size(), 1u) << file;
        EXPECT_EQ(templates[0]->GetOrigin(), origin) << file;
        EXPECT_EQ(du::DynamicCast<PartslibraryImageItem>(templates[0])->GetImageUrl(), m_folder.Url(url)) << file;
    }
    // The shared library counts only while the preferences switch it on.
    m_config.sharedSymbolLibraryEnabled = false;
    RestartSession();
    SymbolTemplateLoader loader;
    Templates templates;
    loader.GetTemplateList(du::Symbol(m_folder.Path("team/SymbolsLibrary/PartSymbolLibrary.xml")), templates);
    EXPECT_EQ(templates[0]->GetOrigin(), Origin::ORIGIN_OOTB);
}

TEST_F(Loader, LinesEndInLineFeedsAfterReadingAFile)
{
    const std::string head = "<?xml version=\"1.0\"?>\r\n<drellin-library><units>";
    const std::string tail = "</units><information/><categories/><shapes/><symbols/></drellin-library>";
    const std::string block(128 * 1024 - head.size() - 1, 'x');
    const std::pair<std::string, std::string> texts[] = {
        {"a\r\nb", "a\nb"},
        {"a\nb", "a\nb"},
        {"a\r\r\nb", "a\r\nb"},
        {"a\rb", "a\rb"},
        {"\r\n\r\n", "\n\n"},
        // Carriage returns on both sides of every border between blocks of the file.
        {block + "\r\n", block + "\n"},
        {block + "\ry", block + "\ry"},
    };
    for (const auto& [written, read] : texts) {
        SymbolTemplateLoader loader;
        loader.ParseFromFile(m_folder.Write("lines.xml", head + written + tail), Origin::ORIGIN_USER);
        EXPECT_EQ(loader.GetUnits(), read);
    }
}

TEST_F(Loader, WhatIsNoReadableDocumentGivesNothing)
{
    const std::string good = Document("", "", "<symbol id=\"a\"/>");
    // A hole of a terabyte, where there can be one, reads as so many NUL bytes.
    const std::string sparse = m_folder.Write("sparse.xml", "");
    std::filesystem::resize_file(sparse, std::uintmax_t{1} << (test::kHasLinks ? 40 : 20));
    test::MakePipe(m_folder.Path("pipe"));
    const std::string sources[] = {"",
                                   "<?xml",
                                   "<?xml ",
                                   "no such file",
                                   m_folder.Path("pipe"),
                                   m_folder.Path(),
                                   test::kDevice,
                                   m_folder.Write("empty.xml", ""),
                                   sparse,
                                   m_folder.Write("nul.xml", std::string(good).insert(good.size() / 2, 1, '\0')),
                                   m_folder.Write("utf16.xml", "\xff\xfe<\0?\0x\0m\0l\0"),
                                   good + "<second/>",
                                   good.substr(0, good.size() - 1)};
    for (const std::string& source : sources) {
        EXPECT_TRUE(Load(source).empty()) << source.substr(0, 60);
    }
    EXPECT_EQ(Load(m_folder.Write("marked.xml", "\xef\xbb\xbf" + good)).size(), 1u);
}

/// So many entries that they are read on several threads.
TEST_F(Loader, ALargeDocumentKeepsItsOrderAndItsUniqueIds)
{
    constexpr int kEntries = 10000;
    const auto entries = [](const std::string& element) {
        std::string text;
        for (int i = 0; i < kEntries; ++i) {
            // Every thousandth id is the same, and of two neighbours with one name only the first stays.
            const std::string id = i % 1000 == 0 ? "same" : element + std::to_string(i);
            const std::string name = "<name>" + element + std::to_string(i - (i % 500 == 7 ? 1 : 0)) + "</name>";
            text.append("<other/><").append(element).append(" id=\"").append(id).append("\">").append(name);
            text.append("<title locid=\"K\"/><tags><tag type=\"TORQUE\"/></tags></").append(element).append(">");
        }
        return text;
    };
    const std::string document = Document("", entries("shape"), entries("symbol"));
    const Templates templates = Load(m_folder.Write("large.xml", document));
    ASSERT_EQ(templates.size(), 2U * (kEntries - kEntries / 500));
    std::size_t at = 0;
    int duplicates = 0;
    for (const std::string& element : {std::string("shape"), std::string("symbol")}) {
        for (int i = 0; i < kEntries; ++i) {
            if (i % 500 == 7) {
                continue;
            }
            const auto item = du::DynamicCast<PartslibraryItem>(templates[at++]);
            ASSERT_EQ(item->GetName(), element + std::to_string(i));
            const std::string suffix = duplicates == 0 ? "" : std::to_string(duplicates);
            ASSERT_EQ(item->GetId(), i % 1000 == 0 ? "same" + suffix : item->GetName());
            duplicates += i % 1000 == 0 ? 1 : 0;
            ASSERT_EQ(item->GetTitle(), "Key text");
            ASSERT_EQ(item->GetSequencerTags().size(), 1u);
        }
    }
    // Nor does it matter how many threads write it, and where in the list the entries of each kind stand.
    Templates mixed;
    for (std::size_t i = 0; i < templates.size() / 2; ++i) {
        mixed.push_back(templates[i]);
        mixed.push_back(templates[i + templates.size() / 2]);
    }
    EXPECT_EQ(Ids(Load(Write(mixed, {}))), Ids(templates));
}

/// A file is cut between entries where that is possible, a document in a string never is.
TEST_F(Loader, ALargeFileIsReadLikeTheSameDocumentInOnePiece)
{
    const auto entries = [](const std::string& element, int begin, int end) {
        std::string text;
        for (int i = begin; i < end; ++i) {
            const std::string id = element + std::to_string(i);
            text.append("  <").append(element).append(" id=\"").append(id).append("\">\n    <name>").append(id);
            text.append("</name>\n    <tooltip>")
                .append(2500, 'x')
                .append("</tooltip>\n  </")
                .append(element)
                .append(">\n");
        }
        return text;
    };
    const auto shapes = [&](int begin, int end) { return entries("shape", begin, end); };
    const std::string many = shapes(1000, 1300);
    const std::string symbols = entries("symbol", 0, 200);
    const std::string deep = [] {
        std::string text = "<shape id=\"deep\"><name>deep</name>";
        for (int level = 0; level < 253; ++level) {
            text.append("<a>");
        }
        for (int level = 0; level < 253; ++level) {
            text.append("</a>");
        }
        return text.append("</shape>");
    }();
    std::vector<std::tuple<const char*, std::string, std::size_t>> documents = {
        {"nothing odd", Document("<category id=\"c\"/>", shapes(0, 10) + many, symbols), 510},
        {"text and unknown elements between", Document("", many + "x<!-- <shape -->&amp;<other/>" + many, symbols),
         500},
        {"within a comment", Document("", "<!--" + many + "-->" + shapes(0, 3), symbols), 203},
        {"within CDATA", Document("", shapes(0, 3) + "<![CDATA[" + many + "]]>", symbols), 203},
        {"within an instruction", Document("", "<?x " + many + "?>" + shapes(0, 3), symbols), 203},
        {"within an attribute, which goes on behind it", Document("", "<a b='" + many + "'/>" + shapes(0, 3), symbols),
         203},
        {"one level too low", Document("", "<a>" + many + "</a>" + shapes(0, 3), symbols), 203},
        {"within an entry", Document("", "<shape id=\"s\"><name>outer</name>" + many + "</shape>", symbols), 201},
        {"of the other section", Document("", symbols + shapes(0, 3), many + entries("symbol", 0, 2)), 5},
        {"sections that end and begin among them", Document("", many + "</shapes><shapes>" + many, symbols), 0},
        {"as many sections as there may be",
         "<?xml ?><drellin-library><units/><shapes>" + many + "</shapes><shapes>" + shapes(0, 5) +
             "</shapes><symbols>" + symbols + "</symbols><categories/></drellin-library>",
         505},
        {"sections before any cut", Document("", many, symbols + "</symbols><symbols>" + symbols), 0},
        {"elements that look like places of a cut",
         Document("<piece/>", "<piece/>" + many + "<piece></piece>", symbols), 500},
        {"the same around entries", Document("", "<piece><piece>" + many + "</piece></piece>" + shapes(0, 3), symbols),
         203},
        {"an end tag too many", Document("", many + "</shape>" + many, symbols), 0},
        {"end tags that seem to fit", Document("", many + "</piece><piece>" + many, symbols), 0},
        {"cut off", Document("", many, symbols).substr(0, 1000000), 0},
        {"as deep as can be", Document("", many + deep + many, symbols), 501},
        {"too deep", Document("", many + "<shape><a>" + deep + "</a></shape>" + many, symbols), 0},
        {"another root", "<?xml ?><other><shapes>" + many + "</shapes></other>", 0},
        {"text behind the end", Document("", many, symbols) + "x", 0},
    };
    std::string places = "<piece/><piece/><piece/>";
    for (int i = 0; i < 4; ++i) {
        places.append("<piece/>");
        documents.emplace_back("as many of them as were cut off within a comment",
                               Document("", shapes(0, 3) + places + "<!--" + many + "-->", "<symbol/>"), 4);
    }
    for (const auto& [what, document, count] : documents) {
        const Templates whole = Load(document);
        EXPECT_EQ(whole.size(), count) << what;
        EXPECT_EQ(Write(Load(m_folder.Write("large.xml", document)), {}), Write(whole, {})) << what;
        EXPECT_EQ(Write(Load(m_folder.Write("large.xml", WithReturns(document))), {}), Write(whole, {})) << what;
    }
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
