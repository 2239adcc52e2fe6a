#include "DocumentBytes.h"
#include "LibraryExamination.h"
#include "LibraryText.h"
#include "Printable.h"

#include <du/MessageTable.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace
{

using lusym::Examination;
using lusym::ExaminationOptions;
using lusym::ExamineLibrary;
using lusym::Finding;
using lusym::FindingCode;
using test::Category;
using test::Library;
using test::Shape;
using test::Symbol;

/// Takes the marks out of a text and tells in which lines they stood.
std::vector<std::size_t> TakeMarks(std::string& text)
{
    const std::string mark = "§";
    std::vector<std::size_t> lines;
    for (std::size_t at = 0; (at = text.find(mark)) != std::string::npos;) {
        lines.push_back(1 + static_cast<std::size_t>(
                                std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n')));
        text.erase(at, mark.size());
    }
    return lines;
}

std::string Describe(const std::vector<Finding>& findings)
{
    std::string text;
    for (const Finding& finding : findings) {
        text += FormatFinding("doc", finding);
    }
    return text;
}

struct Case {
    /// A mark stands in the line of each finding.
    std::string document;
    /// One for each mark, in their order.
    std::vector<std::string> codes;
};

void ExpectFindings(const Case& expected, const ExaminationOptions& options = {})
{
    std::string document = expected.document;
    const std::vector<std::size_t> lines = TakeMarks(document);
    ASSERT_EQ(lines.size(), expected.codes.size()) << document;
    const Examination result = ExamineLibrary(document, options);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const Finding& finding : result.findings) {
        found.emplace_back(finding.line, KindOf(finding.code).name);
    }
    std::vector<std::pair<std::size_t, std::string>> wanted;
    for (std::size_t index = 0; index < lines.size(); ++index) {
        wanted.emplace_back(lines[index], expected.codes[index]);
    }
    EXPECT_EQ(found, wanted) << document << "\n" << Describe(result.findings);
}

TEST(LibraryExamination, FindsNothingInACleanLibrary)
{
    ExpectFindings({Library(Symbol("a", "A") + "\n" + Symbol("b", "B"), Shape("s", "S")), {}});
}

TEST(LibraryExamination, TellsEachFaultOfAnEntryAtItsLine)
{
    const std::string tag = "\n§<tags><tag type=\"TORQUE\"";
    const Case cases[] = {
        {Library(Symbol("a", "A", "\n§<titel>T</titel>")), {"unknown-element"}},
        {Library(Symbol("a", "A", "\n§<graphic url=\"x\"/>")), {"unknown-element"}},
        {Library(Symbol("a", "A") + "\n§<shape id=\"s\"/>"), {"unknown-element"}},
        {Library(Symbol("a", "A", "<description>D\n§<b>bold</b></description>")), {"unknown-element"}},
        {Library(Symbol("a", "A", "\n§<flip horizontal=\"true\" diagonal=\"true\"/>")), {"unknown-attribute"}},
        {Library(Symbol("a", "A", "\n§<flip vertical=\"true\" vertical=\"false\"/>")), {"unknown-attribute"}},
        {Library(Symbol("a", "A", "\n§<rotate>90</rotate>")), {"stray-text"}},
        {Library("§" + Symbol("a", "A", "loose words")), {"stray-text"}},
        {Library(Symbol("a", "A", "\n§<title>Again</title>")), {"repeated-child"}},
        {Library(Symbol("a", "A", "\n<!--§ mind the gap -->")), {"comment"}},
        {Library(Symbol("a", "A", "<tooltip><![CDATA[<!-- no comment -->]]></tooltip>")), {}},
        {Library("§" + Symbol("a", "")), {"missing-name"}},
        {Library("§" + Symbol("", "A")), {"missing-id"}},
        {Library("§§§<symbol id=\"a\" categoryId=\"c\"><name>A</name></symbol>"),
         {"title-falls-back", "missing-url", "missing-url"}},
        {Library("<symbol id=\"a\" categoryId=\"c\"><name>A</name>\n§<title></title>"
                 "<gallery_thumbnail url=\"t\"/><image url=\"x\"/></symbol>"),
         {"title-falls-back"}},
        {Library(Symbol("a", "A", "\n§§§<image url=\"/opt/p.png\"/>")),
         {"repeated-child", "absolute-url", "url-will-change"}},
        {Library(Symbol("a", "A", "\n<image/>")), {}},
        {Library("<symbol id=\"a\" categoryId=\"c\">" + tag +
                 "/></tags><name>A</name><title>T</title>"
                 "<gallery_thumbnail url=\"t\"/><image url=\"x\"/></symbol>"),
         {"tag-before-name"}},
        {Library(Symbol("a", "A", tag + "><quantity unti=\"Nm\">2</quantity></tag></tags>")), {"unknown-attribute"}},
        {Library(Symbol("a", "A", "<tags>\n§<tag type=\"COLOUR\"/></tags><tags/>")), {"unknown-tag-type"}},
        {Library(Symbol("a", "A", "<flip horizontal=\"true\"/><flip vertical=\"true\"/>")), {}},
        {Library(Symbol("a", "A", "<rotate left=\"1\"/><rotate right=\"2\"/>\n§<rotate left=\"3\"/>")),
         {"repeated-child"}},
        {Library(Symbol("a", "A", "\n§<tooltip>a&#13;&#10;b</tooltip>")), {"carriage-return"}},
        {Library(Symbol("a", "A", "\n§<tooltip>a&#xD;\nb</tooltip>")), {"carriage-return"}},
        {Library(Symbol("a", "A", "\n§<description>a\r\r\nb</description>")), {"carriage-return"}},
        {Library(Symbol("a", "A", "<tooltip>a\r\nb</tooltip>")), {}},
        {Library(Symbol("a", "A", tag + "><quantity unit=\"&#13;&#10;m\">2</quantity></tag></tags>")),
         {"carriage-return"}},
        {Library("", "", Category("c", "§C\r")), {"carriage-return"}},
        {"<drellin-library>\n§<units>m&#13;</units><information/><categories/><shapes/><symbols/></drellin-library>",
         {"carriage-return"}},
    };
    for (const Case& entry : cases) {
        ExpectFindings(entry);
    }
}

TEST(LibraryExamination, TellsWhatAValueIsReadAs)
{
    const auto inShape = [](const std::string& element) { return Library("", Shape("s", "S", "\n§" + element)); };
    const auto inSymbol = [](const std::string& element) { return Library(Symbol("a", "A", "\n§" + element)); };
    const Case cases[] = {
        {inShape("<scale>big</scale>"), {"number-reads-as-zero"}},
        {inShape("<scale></scale>"), {"number-reads-as-zero"}},
        {inShape("<scale>1e</scale>"), {"number-reads-as-zero"}},
        {inShape("<scale>nan</scale>"), {"number-reads-as-zero"}},
        {inShape("<scale>1e-999</scale>"), {"number-reads-as-zero"}},
        {inShape("<scale>2,5</scale>"), {"number-cut-off"}},
        {inShape("<scale>1e999</scale>"), {"number-cut-off"}},
        {inShape("<scale>0x10</scale>"), {"number-cut-off"}},
        {inShape("<scale>0.12345678</scale>"), {"number-rounded"}},
        {inShape("<axis_id>99999999999</axis_id>"), {"number-cut-off"}},
        {inShape("<shape_csys a=\"one\"/>"), {"number-reads-as-zero"}},
        {inShape("<camera ortho=\"yes\" value=\"0.12345678\"/>"), {"not-a-boolean"}},
        {inShape("<camera location=\"1 2 3\"/>"), {"not-a-location"}},
        {inShape("<annotation_to_symbol>yes</annotation_to_symbol>"), {"not-a-boolean"}},
        {inSymbol("<scale>2.5</scale>"), {"number-cut-off"}},
        {inSymbol("<showTooltipTitle> true</showTooltipTitle>"), {"not-a-boolean"}},
        {inSymbol("<rotate right=\"a quarter\"/>"), {"number-reads-as-zero"}},
        {Library("§<symbol id=\"a\" categoryId=\"c\" billboard=\"\"><name>A</name><title>T</title>"
                 "<gallery_thumbnail url=\"t\"/><image url=\"x\"/></symbol>"),
         {"not-a-boolean"}},
    };
    for (const Case& entry : cases) {
        ExpectFindings(entry);
    }
    for (const char* const good :
         {"<scale> 2.5\n</scale>", "<scale>-1e+06</scale>", "<scale>.5</scale>", "<axis_id>-2147483648</axis_id>",
          "<axis_id>+7</axis_id>", "<distance_from_csys>25.4</distance_from_csys>"}) {
        ExpectFindings({Library("", Shape("s", "S", good)), {}});
    }
}

TEST(LibraryExamination, TellsWhatEntriesTakeFromEachOther)
{
    ExpectFindings(
        {Library(Symbol("a", "Bolt") + "\n§" + Symbol("b", "Bolt"), Shape("s", "S") + "\n" + Shape("t", "T")),
         {"name-taken"}});
    ExpectFindings(
        {Library("§" + Symbol("s", "A") + "\n§" + Symbol("s1", "B"), Shape("s", "S")), {"repeated-id", "repeated-id"}});
    ExpectFindings(
        {Library(Symbol("a", "A"), "", Category("c") + "\n§" + Category("c", "D")), {"repeated-category-id"}});
    ExpectFindings({Library(Symbol("a", "A"), "", Category("c") + "\n§§§<category><titel/></category>"),
                    {"unknown-element", "missing-id", "missing-name"}});
    ExpectFindings({Library("§" + Symbol("a", "A"), "", Category("d")), {"unknown-category"}});

    const Examination result = ExamineLibrary(
        Library(Symbol("s", "A") + "\n" + Symbol("x", "S"), Shape("s", "S") + "\n" + Shape("s1", "T")), {});
    ASSERT_EQ(result.findings.size(), 2u) << Describe(result.findings);
    EXPECT_EQ(FormatFinding("lib.xml", result.findings[0]),
              "lib.xml:13: error: the id \"s\" belongs to the entry at line 9 already; the loader calls this entry "
              "\"s2\". Give it another id. [repeated-id]\n");
    EXPECT_EQ(FormatFinding("lib.xml", result.findings[1]),
              "lib.xml:14: error: the name \"S\" is already taken by the entry at line 9; the loader drops this entry. "
              "Give it another name. [name-taken]\n");
    EXPECT_EQ(result.entryCount, 4u);
    ASSERT_EQ(result.kept.size(), 3u);
    EXPECT_EQ(result.kept[2].writtenId, "s");
    EXPECT_EQ(result.templates[2]->GetId(), "s2");
}

TEST(LibraryExamination, SuggestsTheNearestName)
{
    const std::map<std::string, std::string> mends = {
        {"<titel/>", "Did you mean \"title\"?"},
        {"<Name>x</Name>", "Did you mean \"name\"?"},
        {"<gallery_thumbnial url=\"x\"/>", "Did you mean \"gallery_thumbnail\"?"},
        {"<author/>", "Remove it."},
    };
    for (const auto& [element, mend] : mends) {
        const Examination result = ExamineLibrary(Library(Symbol("a", "A", element)), {});
        ASSERT_EQ(result.findings.size(), 1u) << element;
        EXPECT_EQ(result.findings[0].mend, mend);
    }
}

TEST(LibraryExamination, TellsWhyNothingIsRead)
{
    const std::string start = "<?xml version=\"1.0\"?>\n";
    const std::string four = "<units/><categories/><shapes/><symbols/>";
    const Case refused[] = {
        {"§", {"not-well-formed"}},
        {"no markup§", {"not-well-formed"}},
        {start + "§<drellin-library>\n<units>", {"not-well-formed"}},
        {start + "<drellin-library>\n§</drellin-librar>", {"not-well-formed"}},
        {start + "§<library/>", {"wrong-root"}},
        {start + "§<drellin-library>" + four + "</drellin-library>", {"wrong-section-count"}},
        {start + "§<drellin-library>" + four + "\n<information/>\n§<extra/></drellin-library>",
         {"wrong-section-count", "unknown-element"}},
    };
    for (const Case& entry : refused) {
        ExpectFindings(entry);
        std::string document = entry.document;
        TakeMarks(document);
        EXPECT_FALSE(ExamineLibrary(document, {}).isRead) << document;
    }
    // Five children are enough for the loader, whichever they are.
    ExpectFindings({start + "§<drellin-library>" + four + "\n§<extra/></drellin-library>",
                    {"missing-section", "unknown-element"}});
    ExaminationOptions shared;
    shared.origin = ExaminationOptions::Origin::ORIGIN_SHARED;
    ExpectFindings({start + "<drellin-library>" + four + "</drellin-library>", {}}, shared);
}

TEST(LibraryExamination, NamesTheSectionsThatAreWrong)
{
    const Examination result = ExamineLibrary("<drellin-library><units/><shapes/><shapes/><symbols/><information/>"
                                              "<extra/></drellin-library>",
                                              {});
    ASSERT_FALSE(result.findings.empty());
    EXPECT_EQ(result.findings[0].text,
              "the root has 6 children instead of exactly five, so that the loader reads nothing: \"extra\" is none of "
              "them, \"categories\" is missing, \"shapes\" stands 2 times");
}

TEST(LibraryExamination, ReadsTheSectionsWhenOnlyTheirNumberIsWrong)
{
    std::string document = Library(Symbol("a", "A"));
    document.erase(document.find("<information>"), std::string("<information>I</information>").size());
    const Examination result = ExamineLibrary(document, {});
    EXPECT_FALSE(result.isRead);
    EXPECT_TRUE(result.hasContent);
    ASSERT_EQ(result.templates.size(), 1u);
    EXPECT_EQ(result.loader->GetUnits(), "mm");
}

TEST(LibraryExamination, SurvivesHostileBytes)
{
    using namespace std::string_literals;
    const std::string good = Library(Symbol("a", "A"));
    const auto nested = [](int levels) {
        std::string text;
        for (int level = 0; level < levels; ++level) {
            text = "<b>" + text + "</b>";
        }
        return text;
    };
    std::string latin = Library(Symbol("a", "A") + "\n§" + Symbol("b", "B\xE4r"));
    std::string declared = good;
    declared.replace(declared.find("utf-8"), 5, "ISO-8859-1");
    const Case cases[] = {
        {"§\xEF\xBB\xBF" + good, {"byte-order-mark"}},
        {"§\xFF\xFE<\0d\0"s, {"other-encoding"}},
        {"§" + declared, {"other-encoding"}},
        {latin, {"other-encoding"}},
        {Library(Symbol("a", "A") + "\n§\0"s), {"nul-byte"}},
        {Library(Symbol("a", "A", "\n§" + nested(200))), {"unknown-element"}},
        {Library(Symbol("a", "A", "\n§" + nested(300))), {"too-deep"}},
        {Library(Symbol("&lt;&amp;&quot;", "&lt;&apos;&gt; \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D &#x202E;")), {}},
    };
    for (const Case& entry : cases) {
        ExpectFindings(entry);
    }
    // Every beginning of a document is answered, and none of them is taken for a whole one.
    for (std::size_t length = 0; length + 1 < good.size(); ++length) {
        const Examination result = ExamineLibrary(good.substr(0, length), {});
        ASSERT_EQ(result.findings.size(), 1u) << length;
        EXPECT_EQ(result.findings[0].code, FindingCode::NotWellFormed) << length;
    }
}

TEST(LibraryExamination, NamesTheLanguagesThatLackAMessage)
{
    const auto table = std::make_shared<du::MessageTable>("lubase:lumodulesStrings", "en");
    table->Add("FULL", "en", "Full");
    table->Add("FULL", "de", "Voll");
    table->Add("HALF", "en", "Half");
    table->Add("GERMAN", "de", "Deutsch");
    ExaminationOptions options;
    options.messages = table;
    const auto described = [](const std::string& key) { return "\n§<description locid=\"" + key + "\"/>"; };
    const std::string entries = Symbol("a", "A", "<description locid=\"FULL\"/>") + "\n" +
                                Symbol("b", "B", described("HALF")) + "\n" + Symbol("c", "C", described("GERMAN")) +
                                "\n" + Symbol("d", "D", described("NONE")) + "\n" +
                                Symbol("e", "E", "<description locid=\"NONE\"/>") + "\n" +
                                Symbol("f", "F", "\n§<description locid=\"FULL\">text</description>");
    ExpectFindings({Library(entries), {"missing-message", "missing-message", "missing-message", "beside-key"}},
                   options);

    std::string document = Library(entries);
    TakeMarks(document);
    const Examination result = ExamineLibrary(document, options);
    ASSERT_EQ(result.findings.size(), 4u);
    EXPECT_EQ(result.findings[0].text, "the message table has no text for \"HALF\" in de");
    EXPECT_EQ(result.findings[1].text, "the message table has no text for \"GERMAN\" in en");
    EXPECT_EQ(result.findings[2].text, "the message table has no text for \"NONE\" in en, de");

    const Examination without = ExamineLibrary(document, {});
    ASSERT_EQ(without.findings.size(), 2u) << Describe(without.findings);
    EXPECT_EQ(without.findings[0].text, "6 texts are named by key from here on and there is no message table, so that "
                                        "keys are shown");
}

TEST(LibraryExamination, NamesFiveLanguagesAtMost)
{
    const auto table = std::make_shared<du::MessageTable>("lubase:lumodulesStrings", "en");
    for (const char* const language : {"en", "de", "fr", "it", "es", "pt", "nl", "sv"}) {
        table->Add("FULL", language, "Full");
    }
    table->Add("HALF", "en", "Half");
    table->Add("HALF", "fr", "Half");
    ExaminationOptions options;
    options.messages = table;
    const Examination result = ExamineLibrary(
        Library(Symbol("a", "A", "<description locid=\"HALF\"/>") + Symbol("b", "B", "<description locid=\"FULL\"/>")),
        options);
    ASSERT_EQ(result.findings.size(), 1u) << Describe(result.findings);
    EXPECT_EQ(result.findings[0].text, "the message table has no text for \"HALF\" in de, it, es, pt, nl and 1 more");
}

TEST(LibraryExamination, AnswersLongLinesAndLongElements)
{
    constexpr std::size_t kCount = 30'000;
    std::string comments;
    std::string attributes = "<flip ";
    for (std::size_t index = 0; index < kCount; ++index) {
        comments += "<!---->";
        attributes += "x='' ";
    }
    for (std::size_t index = 0; index < kCount; ++index) {
        attributes += "vertical='true' ";
    }
    const Examination result = ExamineLibrary(Library(comments + Symbol("a", "A", attributes + "/>") + comments), {});
    const auto is = [](FindingCode code) {
        return [code](const Finding& finding) { return finding.code == code && finding.line == 12; };
    };
    EXPECT_EQ(std::ranges::count_if(result.findings, is(FindingCode::Comment)), std::ptrdiff_t{2 * kCount});
    EXPECT_EQ(std::ranges::count_if(result.findings, is(FindingCode::UnknownAttribute)),
              std::ptrdiff_t{2 * kCount - 1});
}

TEST(LibraryExamination, LooksForEachFileOnce)
{
    std::map<std::string, int> asked;
    ExaminationOptions options;
    options.isFileReadable = [&](const std::string& path) {
        ++asked[path];
        return path.find("192x192") == std::string::npos;
    };
    const Examination result = ExamineLibrary(Library(Symbol("a", "A") + "\n" + Symbol("b", "B")), options);
    EXPECT_EQ(asked, (std::map<std::string, int>{{"SymbolsLibrary/2D/p.png", 1},
                                                 {"SymbolsLibrary/2D/p_192x192.png", 1},
                                                 {"SymbolsLibrary/2D/p_64x64.png", 1}}));
    ASSERT_EQ(result.findings.size(), 2u);
    EXPECT_EQ(
        FormatFinding("l", result.findings[0]),
        "l:12: error: the large thumbnail \"SymbolsLibrary/2D/p_192x192.png\" is missing or cannot be read. Put it "
        "there, or correct the url. [file-missing]\n");
}

TEST(DocumentBytes, CutsCarriageReturnsBeforeLineFeedsOnly)
{
    const std::map<std::string, std::string> texts = {
        {"", ""}, {"a\nb", "a\nb"}, {"a\r\nb\r\n", "a\nb\n"}, {"\r\n\r\n", "\n\n"}, {"a\r\r\nb\rc\r", "a\r\nb\rc\r"},
    };
    for (const auto& [from, to] : texts) {
        std::string text = from;
        lusym::CutCarriageReturns(text);
        EXPECT_EQ(text, to);
    }
}

TEST(Printable, LetsNoTextTurnOrBreakALine)
{
    const std::map<std::string, std::string> texts = {
        {"Schraube M8 \xC3\xA4\xE2\x82\xAC", "Schraube M8 \xC3\xA4\xE2\x82\xAC"},
        {"a\nb\tc\x1B[31m", "a\\nb\\tc\\x1b[31m"},
        {"\xE2\x80\xAE"
         "exe",
         "\\u202eexe"},
        {"\xC2\x9B\x7F", "\\x9b\\x7f"},
        {"\xFF\xC3", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const auto& [from, to] : texts) {
        EXPECT_EQ(lusym::Printable(from), to);
    }
    EXPECT_EQ(lusym::Quote(std::string(119, 'x') + "\xE2\x82\xAC" + "y"), "\"" + std::string(119, 'x') + "...\"");
}

} // namespace
