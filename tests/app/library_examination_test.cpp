#include "DocumentBytes.h"
#include "LibraryExamination.h"
#include "LibraryText.h"
#include "Printable.h"

#include <du/MessageTable.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using namespace lusym;
using namespace test;
using Places = std::vector<std::pair<std::size_t, std::string>>;

/// Takes the marks, each a code between two signs, out of a text and tells in which lines they stood.
Places TakeMarks(std::string& text)
{
    const std::string sign = "§";
    Places places;
    for (std::size_t at = 0; (at = text.find(sign)) != std::string::npos;) {
        const std::size_t begin = at + sign.size();
        const std::size_t end = text.find(sign, begin);
        const auto place = text.begin() + static_cast<std::ptrdiff_t>(at);
        places.emplace_back(1 + static_cast<std::size_t>(std::count(text.begin(), place, '\n')),
                            text.substr(begin, end - begin));
        text.erase(at, end + sign.size() - at);
    }
    return places;
}

std::string WithoutMarks(std::string text)
{
    TakeMarks(text);
    return text;
}

std::string Describe(const std::vector<Finding>& findings)
{
    std::string text;
    for (const Finding& finding : findings) {
        text += FormatFinding("doc", finding);
    }
    return text;
}

/// Expects the findings that are marked in the document, in their lines.
void ExpectFindings(std::string document, const ExaminationOptions& options = {})
{
    const Places wanted = TakeMarks(document);
    const Examination result = ExamineLibrary(document, options);
    Places found;
    for (const Finding& finding : result.findings) {
        found.emplace_back(finding.line, KindOf(finding.code).name);
    }
    EXPECT_EQ(found, wanted) << document << "\n" << Describe(result.findings);
}

TEST(LibraryExamination, TellsEachFaultOfAnEntryAtItsLine)
{
    const std::string tag = "<tags><tag type=\"TORQUE\"";
    const std::string urls = "<gallery_thumbnail url=\"t\"/><image url=\"x\"/>";
    const std::string documents[] = {
        Library(Symbol("a", "A") + "\n" + Symbol("b", "B"), Shape("s", "S")),
        Library(Symbol("a", "A") + "\n§unknown-element§<shape id=\"s\"/>"),
        Library("§stray-text§" + Symbol("a", "A", "loose words")),
        Library("§missing-name§" + Symbol("a", "")),
        Library("§missing-id§" + Symbol("", "A")),
        Library(
            "§title-falls-back§§missing-url§§missing-url§<symbol id=\"a\" categoryId=\"c\"><name>A</name></symbol>"),
        Library("<symbol id=\"a\" categoryId=\"c\"><name>A</name>\n§title-falls-back§<title></title>" + urls +
                "</symbol>"),
        Library("<symbol id=\"a\" categoryId=\"c\">\n§tag-before-name§" + tag +
                "/></tags><name>A</name><title>T</title>" + urls + "</symbol>"),
        Library("§not-a-boolean§<symbol id=\"a\" categoryId=\"c\" billboard=\"\"><name>A</name><title>T</title>" +
                urls + "</symbol>"),
        Library("", "", Category("c", "§carriage-return§C\r")),
        "<drellin-library>\n§carriage-return§<units>m&#13;</units><information/><categories/><shapes/><symbols/>"
        "</drellin-library>",
    };
    for (const std::string& document : documents) {
        ExpectFindings(document);
    }
    const std::string children[] = {
        "\n§unknown-element§<titel>T</titel>",
        "\n§unknown-element§<graphic url=\"x\"/>",
        "<description>D\n§unknown-element§<b>bold</b></description>",
        "\n§unknown-attribute§<flip horizontal=\"true\" diagonal=\"true\"/>",
        "\n§unknown-attribute§<flip vertical=\"true\" vertical=\"false\"/>",
        "\n§stray-text§<rotate>90</rotate>",
        "\n§repeated-child§<title>Again</title>",
        "\n<!--§comment§ mind the gap -->",
        "<tooltip><![CDATA[<!-- no comment -->]]></tooltip>",
        "\n§repeated-child§§absolute-url§§url-will-change§<image url=\"/opt/p.png\"/>",
        "\n<image/>",
        "\n§unknown-attribute§" + tag + "><quantity unti=\"Nm\">2</quantity></tag></tags>",
        "<tags>\n§unknown-tag-type§<tag type=\"COLOUR\"/></tags><tags/>",
        "<flip horizontal=\"true\"/><flip vertical=\"true\"/>",
        "<rotate left=\"1\"/><rotate right=\"2\"/>\n§repeated-child§<rotate left=\"3\"/>",
        "\n§carriage-return§<tooltip>a&#13;&#10;b</tooltip>",
        "\n§carriage-return§<tooltip>a&#xD;\nb</tooltip>",
        "\n§carriage-return§<description>a\r\r\nb</description>",
        "<tooltip>a\r\nb</tooltip>",
        "\n§carriage-return§" + tag + "><quantity unit=\"&#13;&#10;m\">2</quantity></tag></tags>",
    };
    for (const std::string& child : children) {
        ExpectFindings(Library(Symbol("a", "A", child)));
    }
}

TEST(LibraryExamination, TellsWhatAValueIsReadAs)
{
    const char* const ofShapes[] = {
        "§number-reads-as-zero§<scale>big</scale>",
        "§number-reads-as-zero§<scale></scale>",
        "§number-reads-as-zero§<scale>1e</scale>",
        "§number-reads-as-zero§<scale>nan</scale>",
        "§number-reads-as-zero§<scale>1e-999</scale>",
        "§number-cut-off§<scale>2,5</scale>",
        "§number-cut-off§<scale>1e999</scale>",
        "§number-cut-off§<scale>0x10</scale>",
        "§number-rounded§<scale>0.12345678</scale>",
        "§number-cut-off§<axis_id>99999999999</axis_id>",
        "§number-reads-as-zero§<shape_csys a=\"one\"/>",
        "§not-a-boolean§<camera ortho=\"yes\" value=\"0.12345678\"/>",
        "§not-a-location§<camera location=\"1 2 3\"/>",
        "§not-a-boolean§<annotation_to_symbol>yes</annotation_to_symbol>",
        "<scale> 2.5\n</scale>",
        "<scale>-1e+06</scale>",
        "<scale>.5</scale>",
        "<axis_id>-2147483648</axis_id>",
        "<axis_id>+7</axis_id>",
        "<distance_from_csys>25.4</distance_from_csys>",
    };
    for (const std::string element : ofShapes) {
        ExpectFindings(Library("", Shape("s", "S", "\n" + element)));
    }
    for (const std::string element :
         {"§number-cut-off§<scale>2.5</scale>", "§number-reads-as-zero§<rotate right=\"a quarter\"/>",
          "§not-a-boolean§<showTooltipTitle> true</showTooltipTitle>"}) {
        ExpectFindings(Library(Symbol("a", "A", "\n" + element)));
    }
}

TEST(LibraryExamination, TellsWhatEntriesTakeFromEachOther)
{
    const std::string documents[] = {
        Library(Symbol("a", "Bolt") + "\n§name-taken§" + Symbol("b", "Bolt"), Shape("s", "S") + "\n" + Shape("t", "T")),
        Library("§repeated-id§" + Symbol("s", "A") + "\n§repeated-id§" + Symbol("s1", "B"), Shape("s", "S")),
        Library(Symbol("a", "A"), "", Category("c") + "\n§repeated-category-id§" + Category("c", "D")),
        Library(Symbol("a", "A"), "",
                Category("c") + "\n§unknown-element§§missing-id§§missing-name§<category><titel/></category>"),
        Library("§unknown-category§" + Symbol("a", "A"), "", Category("d")),
    };
    for (const std::string& document : documents) {
        ExpectFindings(document);
    }

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
    const std::string refused[] = {
        "§not-well-formed§",
        "no markup§not-well-formed§",
        start + "§not-well-formed§<drellin-library>\n<units>",
        start + "<drellin-library>\n§not-well-formed§</drellin-librar>",
        start + "§wrong-root§<library/>",
        start + "§wrong-section-count§<drellin-library>" + four + "</drellin-library>",
        start + "§wrong-section-count§<drellin-library>" + four +
            "\n<information/>\n§unknown-element§<extra/></drellin-library>",
    };
    for (const std::string& each : refused) {
        ExpectFindings(each);
        EXPECT_FALSE(ExamineLibrary(WithoutMarks(each), {}).isRead) << each;
    }
    // Five children are enough for the loader, whichever they are.
    ExpectFindings(start + "§missing-section§<drellin-library>" + four +
                   "\n§unknown-element§<extra/></drellin-library>");
    ExaminationOptions shared;
    shared.origin = ExaminationOptions::Origin::ORIGIN_SHARED;
    ExpectFindings(start + "<drellin-library>" + four + "</drellin-library>", shared);

    // The sections are examined when only their number is wrong.
    std::string document = Library(Symbol("a", "A"));
    document.erase(document.find("<information>"), std::string("<information>I</information>").size());
    const Examination result = ExamineLibrary(document, {});
    EXPECT_TRUE(!result.isRead && result.hasContent);
    ASSERT_EQ(result.templates.size(), 1u);
    EXPECT_EQ(result.loader->GetUnits(), "mm");

    const Examination six = ExamineLibrary("<drellin-library><units/><shapes/><shapes/><symbols/><information/>"
                                           "<extra/></drellin-library>",
                                           {});
    ASSERT_FALSE(six.findings.empty());
    EXPECT_EQ(six.findings[0].text,
              "the root has 6 children instead of exactly five, so that the loader reads nothing: \"extra\" is none of "
              "them, \"categories\" is missing, \"shapes\" stands 2 times");
}

TEST(LibraryExamination, SurvivesHostileBytes)
{
    using namespace std::string_literals;
    const std::string good = Library(Symbol("a", "A"));
    std::string declared = good;
    declared.replace(declared.find("utf-8"), 5, "ISO-8859-1");
    const auto nested = [](int levels) {
        std::string text;
        for (int level = 0; level < levels; ++level) {
            text = "<b>" + text + "</b>";
        }
        return text;
    };
    const std::string documents[] = {
        "§byte-order-mark§\xEF\xBB\xBF" + good,
        "§other-encoding§\xFF\xFE<\0d\0"s,
        "§other-encoding§" + declared,
        Library(Symbol("a", "A") + "\n§other-encoding§" + Symbol("b", "B\xE4r")),
        Library(Symbol("a", "A") + "\n§nul-byte§\0"s),
        Library(Symbol("a", "A", "\n§unknown-element§" + nested(200))),
        Library(Symbol("a", "A", "\n§too-deep§" + nested(300))),
        Library(Symbol("&lt;&amp;&quot;", "&lt;&apos;&gt; \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D &#x202E;")),
    };
    for (const std::string& document : documents) {
        ExpectFindings(document);
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
    for (const char* const language : {"en", "de", "fr", "it", "es", "pt", "nl", "sv"}) {
        table->Add("FULL", language, "Full");
    }
    table->Add("HALF", "en", "Half");
    table->Add("HALF", "fr", "Half");
    table->Add("GERMAN", "de", "Deutsch");
    ExaminationOptions options;
    options.messages = table;
    const auto entry = [](const std::string& id, const std::string& key, const std::string& mark = "") {
        return Symbol(id, id, "\n" + mark + "<description locid=\"" + key + "\"/>") + "\n";
    };
    const std::string document =
        Library(entry("a", "FULL") + entry("b", "HALF", "§missing-message§") +
                entry("c", "GERMAN", "§missing-message§") + entry("d", "NONE", "§missing-message§") +
                entry("e", "NONE") + Symbol("f", "F", "\n§beside-key§<description locid=\"FULL\">text</description>"));
    ExpectFindings(document, options);
    const Examination result = ExamineLibrary(WithoutMarks(document), options);
    const std::string start = "the message table has no text for ";
    ASSERT_EQ(result.findings.size(), 4u);
    EXPECT_EQ(result.findings[0].text, start + "\"HALF\" in de, it, es, pt, nl and 1 more");
    EXPECT_EQ(result.findings[1].text, start + "\"GERMAN\" in en, fr, it, es, pt and 2 more");
    EXPECT_EQ(result.findings[2].text, start + "\"NONE\" in en, de, fr, it, es and 3 more");

    const Examination without = ExamineLibrary(WithoutMarks(document), {});
    ASSERT_EQ(without.findings.size(), 2u) << Describe(without.findings);
    EXPECT_EQ(without.findings[0].text, "6 texts are named by key from here on and there is no message table, so that "
                                        "keys are shown");
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
    EXPECT_EQ(result.findings[0].text,
              "the large thumbnail \"SymbolsLibrary/2D/p_192x192.png\" is missing or cannot be read");
}

TEST(DocumentBytes, CutsCarriageReturnsBeforeLineFeedsOnly)
{
    const std::map<std::string, std::string> texts = {
        {"", ""}, {"a\nb", "a\nb"}, {"a\r\nb\r\n", "a\nb\n"}, {"\r\n\r\n", "\n\n"}, {"a\r\r\nb\rc\r", "a\r\nb\rc\r"},
    };
    for (const auto& [from, to] : texts) {
        std::string text = from;
        CutCarriageReturns(text);
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
