#include <dg/XmlElem.h>

#include <gtest/gtest.h>

namespace
{

using XmlPtr = std::unique_ptr<dg::XmlElem, dg::XmlFreer>;

XmlPtr Parse(std::string text) { return XmlPtr(dg::ParseXml(std::move(text), false, nullptr)); }

std::string Repeat(std::string_view text, std::size_t count)
{
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

std::string Nested(std::size_t levels) { return Repeat("<a>", levels) + "t" + Repeat("</a>", levels); }

void ExpectRefused(const std::string& text, const std::string& what)
{
    EXPECT_FALSE(Parse(text)) << what;
    for (const bool withPositions : {false, true}) {
        dg::XmlParseError error;
        EXPECT_EQ(dg::ParseXml(text, withPositions, &error), nullptr) << what;
        EXPECT_FALSE(error.reason.empty()) << what;
        EXPECT_GE(error.line, 1U) << what;
        EXPECT_GE(error.column, 1U) << what;
    }
}

TEST(XmlParse, RefusesWhatIsNoDocument)
{
    const std::vector<std::pair<const char*, std::string>> documents = {
        {"nothing", ""},
        {"blanks", " \n\t "},
        {"text", "hello"},
        {"byte order mark alone", "\xEF\xBB\xBF"},
        {"declaration alone", "<?xml version=\"1.0\"?>"},
        {"comment alone", "<!-- a -->"},
        {"two top-level elements", "<a/><b/>"},
        {"two top-level elements, apart", "<a></a>\n<!-- x -->\n<a></a>\n"},
        {"text behind", "<a/>x"},
        {"text behind, later", "<a></a>\nmore\n"},
        {"text in front", "x<a/>"},
        {"CDATA behind", "<a/><![CDATA[ ]]>"},
        {"two byte order marks", "\xEF\xBB\xBF\xEF\xBB\xBF<a/>"},
        {"UTF-16", std::string("\xFF\xFE<\0a\0/\0>\0", 10)},
        {"NUL in text", std::string("<a>x\0y</a>", 10)},
        {"NUL at the end", std::string("<a/>\0", 5)},
        {"NUL in front", std::string("\0<a/>", 5)},
        {"element not closed", "<a><b></b>"},
        {"wrong end tag", "<a></b>"},
        {"end tag cut short", "<abc></ab>"},
        {"end tag without start", "</a>"},
        {"one end tag too many", "<a/></a>"},
        {"crossed tags", "<a><b></a></b>"},
        {"no name", "<a>< b/></a>"},
        {"less-than in text", "<a>1 < 2</a>"},
        {"attribute without value", "<a b/>"},
        {"attribute without quotes", "<a b=1/>"},
        {"attributes without a blank", "<a b='1'c='2'/>"},
        {"value not closed", "<a b=\"1/>"},
        {"comment not closed", "<a><!-- </a>"},
        {"CDATA not closed", "<a><![CDATA[ </a>"},
        {"instruction not closed", "<a><? </a>"},
        {"document type inside", "<a><!DOCTYPE a></a>"},
        {"document type not closed", "<!DOCTYPE a [ <!ENTITY x 'y'> <a/>"},
        {"stray less-than at the end", "<a/><"},
    };
    for (const auto& [what, text] : documents) {
        ExpectRefused(text, what);
    }
}

TEST(XmlParse, RefusesEveryBeginningOfADocument)
{
    const std::string text = "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!DOCTYPE a [<!ENTITY b \"c\">]>\n<!-- d -->\n"
                             "<a b=\"1\" c='2'>t&amp;&#65;<d/><!-- e --><?f g?><![CDATA[h]]><i >j</i ></a>";
    ASSERT_TRUE(Parse(text));
    for (std::size_t length = 0; length < text.size(); ++length) {
        ExpectRefused(text.substr(0, length), std::to_string(length));
    }
}

TEST(XmlParse, AcceptsWhatSurroundsTheTopLevelElement)
{
    for (const char* text : {"<a/>", "\xEF\xBB\xBF<a/>", "\n\t <a/>\n \r\n", "<!-- x --><a/><!-- y --><?z?>",
                             "<!DOCTYPE a SYSTEM \"file:///etc/passwd\"><a/>", "<?xml version=\"1.0\"?>\n<a></a>",
                             "<?xml version=\"1.0\" encoding=\"utf-16\"?><a/>", "\xEF\xBB\xBF<?xml?> <!-- --> <a />"}) {
        const XmlPtr root = Parse(text);
        EXPECT_TRUE(root && root->GetName() == "a") << text;
    }
}

TEST(XmlParse, AllowsTwoHundredAndFiftySixLevels)
{
    const XmlPtr deepest = Parse(Nested(256));
    ASSERT_TRUE(deepest);
    dg::XmlElem elem = *deepest;
    for (int level = 1; level < dg::kXmlMaxDepth; ++level) {
        elem = elem.FirstChild();
    }
    EXPECT_EQ(elem.GetText(), "t");
    EXPECT_TRUE(Parse("<r>" + Repeat(Nested(255), 50) + "</r>")) << "depth does not add up over siblings";
    for (const std::string& tooDeep : {Nested(257), "<r><b/>" + Nested(3) + Nested(256) + "</r>", Nested(100000),
                                       Repeat("<a>", 100000), Repeat("<a>", 256) + "<b/>" + Repeat("</a>", 256)}) {
        EXPECT_FALSE(Parse(tooDeep));
    }
}

TEST(XmlParse, ExpandsNoEntitiesOfADocumentType)
{
    std::string bomb = "<!DOCTYPE r [<!ENTITY l0 \"lol\">";
    for (int i = 1; i < 10; ++i) {
        const std::string name = "&l" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY l" + std::to_string(i) + " \"" + Repeat(name, 10) + "\">";
    }
    bomb += "<!ENTITY ext SYSTEM \"file:///etc/passwd\"><!ENTITY amp \"x\">]><r a=\"&l9;\">&l9;&ext;&amp;</r>";
    const XmlPtr root = Parse(bomb);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->GetText(), "&l9;&ext;&");
    EXPECT_EQ(root->GetAttribute("a"), "&l9;");
}

TEST(XmlParse, TextIsExact)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", ""},
        {" ", " "},
        {" \n\t ", " \n\t "},
        {"  x  ", "  x  "},
        {"a\r\nb\rc", "a\r\nb\rc"},
        {"&lt;&gt;&amp;&quot;&apos;", "<>&\"'"},
        {"&#65;&#x42;&#xe9;", "AB\xC3\xA9"},
        {"&unknown; & &; &#; &#x; &am;", "&unknown; & &; &#; &#x; &am;"},
        {"a > b ]]> c", "a > b ]]> c"},
        {"a<!-- x -->b", "ab"},
        {"<!-- x -->", ""},
        {" <!-- x --> ", "  "},
        {" <!-- c --> <![CDATA[]]> <?p?> ", "    "},
        {" <!--> <b/> -->y", " y"},
        {"<b v=\"<!--\"/>x <!--> -->y", "x y"},
        {"<!-- x --> a <!-- y --> <!-- z -->b", " a  b"},
        {"a<?p i?> <?p i?>b", "a b"},
        {"<![CDATA[<b>&amp;</b>]]>", "<b>&amp;</b>"},
        {" <![CDATA[ ]]> ", "   "},
        {"a<![CDATA[]]>b<![CDATA[c]]>", "abc"},
        {"<![CDATA[x]]><!-- y -->z", "xz"},
        {"<b/>", ""},
        {"\n  <b/>\n", ""},
        {"a<b>no</b>c", "ac"},
        {"\n  a  \n  <b/>\n <!-- x --> \n", "\n  a  \n  "},
        {"\xFF\xFE\x80 \x01\x1F\x7F", "\xFF\xFE\x80 \x01\x1F\x7F"},
        {"<!-- --x -- ->-->1", "1"},
        {"<!-- <a> --> <!--<!-- </a> -->", " "},
    };
    // The same inside a document that needs its white space elsewhere, and behind markup inside values, must read alike.
    for (const std::string start : {"<e>", "<n> <!-- --> </n><e>", "<e v=\"<!--\">", "<e v='<![CDATA['>",
                                    "<e v=\"<?\">", "<e v=\"<!--<!--\"><!-- --><?x?>"}) {
        for (const auto& [content, text] : cases) {
            const XmlPtr root = Parse("<r>" + start + content + "</e></r>");
            ASSERT_TRUE(root) << start << content;
            dg::XmlElem elem = root->FirstChild();
            elem = elem.GetName() == "n" ? elem.NextSibling() : elem;
            std::string spare = "used";
            EXPECT_EQ(elem.GetText(), text) << start << content;
            EXPECT_EQ(elem.GetTextView(spare), text) << start << content;
        }
    }
}

TEST(XmlParse, OddCharacterReferencesCrashNothing)
{
    for (const std::string reference : {"&#0;", "&#x110000;", "&#xFFFFFFFF;", "&#99999999999999999999;", "&#xD800;",
                                        "&#-1;", "&#x", "&#", "&", "&#xG;"}) {
        const XmlPtr root = Parse("<e a='" + reference + "'>" + reference + "</e>");
        ASSERT_TRUE(root) << reference;
        EXPECT_LE(root->GetText().size(), reference.size());
    }
}

TEST(XmlParse, FirstAttributeOfANameCounts)
{
    const XmlPtr root = Parse("<e n='1.5x' n='2' o='1e999' empty='' b='yes'/>");
    ASSERT_TRUE(root);
    std::string attributes;
    for (dg::XmlAttribute a = root->FirstAttribute(); a; a = a.Next()) {
        attributes += std::string(a.GetName()) + "=" + std::string(a.GetValue()) + ";";
    }
    EXPECT_EQ(attributes, "n=1.5x;n=2;o=1e999;empty=;b=yes;");
    EXPECT_EQ(root->GetAttributeAsDouble("n", 9.0), 1.5);
    EXPECT_EQ(root->GetAttributeAsFloat("n", 9.0F), 1.5F);
    EXPECT_EQ(root->GetAttributeAsInt("n", 9), 1);
    EXPECT_EQ(root->GetAttributeAsDouble("o"), std::numeric_limits<double>::max());
    EXPECT_EQ(root->GetAttributeAsInt("empty", 9), 0) << "present, without a number";
    EXPECT_EQ(root->GetAttributeAsInt("missing", 9), 9);
    EXPECT_TRUE(root->HasAttribute("empty"));
    EXPECT_FALSE(root->HasAttribute("N"));
    EXPECT_TRUE(root->GetAttributeAsBool("b", true));
}

TEST(XmlParse, ChildrenAreElementsThatKnowTheirLinesOnRequest)
{
    const std::string text =
        "<?xml version=\"1.0\"?>\n\n<a>\r\n x <b\n  x='1'/> <!-- y --><c><e/></c>\n&#10;<![CDATA[z]]>\n"
        "<?p?><d/></a>\n";
    const XmlPtr root(dg::ParseXml(text, true, nullptr));
    ASSERT_TRUE(root);
    std::string lines = std::to_string(root->GetLine());
    for (dg::XmlElem child = root->FirstChild(); child; child = child.NextSibling()) {
        lines += " " + std::string(child.GetName()) + std::to_string(child.GetLine());
    }
    EXPECT_EQ(lines, "3 b4 c5 d7");
    EXPECT_EQ(root->CountChildren(), 3U);
    EXPECT_EQ(Parse(text)->GetLine(), 0U);
    EXPECT_EQ(dg::XmlElem().FirstChild().NextSibling().GetText(), "") << "handles of nothing answer nothing";
}

TEST(XmlParse, WideDocumentsAreWalkedInOnePass)
{
    constexpr std::size_t kCount = 300000;
    std::string attributes;
    for (std::size_t i = 0; i < kCount; ++i) {
        attributes += " a='" + std::to_string(i) + "'";
    }
    const XmlPtr root = Parse("<r><!--" + Repeat("<!--", kCount) + "-->" + Repeat("<e/>", kCount) + "<f" + attributes +
                              "/>" + Repeat("<!-- -->\n", kCount) + "</r>");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->CountChildren(), kCount + 1);
}

TEST(XmlParse, ReasonsTellWhatAndWhere)
{
    const std::tuple<std::string, const char*, std::size_t, std::size_t> cases[] = {
        {"<a>\n <b>\n  <shape id='1'>\n <c/>\n", "the element <shape> at line 3 is not closed", 3, 4},
        {"<a>\n<b v='>'>\n<!-- </b> --><![CDATA[</b>]]>\n</a>", "the end tag </a> does not close <b> of line 2", 4, 3},
        {"<a/>\n</a>", "the end tag </a> has no start tag", 2, 3},
        {"<a/>\n <b/>", "more than one top-level element", 2, 3},
        {"<a/>\n text", "text outside the top-level element", 2, 2},
        {Repeat("<a>\n", 300) + Repeat("</a>", 300), "nested deeper than 256 levels", 257, 2},
        {std::string("<a>\n\n  \0</a>", 12), "contains a NUL byte", 3, 3},
        {"<a>\n<!-- ", "a comment is not closed", 2, 5},
        {"<a>\n<b c=/></a>", "an attribute is malformed or its value not closed", 2, 6},
        {"\n\n", "no top-level element", 3, 1},
        {"", "no top-level element", 1, 1},
    };
    for (const auto& [text, reason, line, column] : cases) {
        for (const bool withPositions : {false, true}) {
            dg::XmlParseError error;
            EXPECT_EQ(dg::ParseXml(text, withPositions, &error), nullptr);
            EXPECT_EQ(error.reason, reason);
            EXPECT_EQ(error.line, line) << reason;
            EXPECT_EQ(error.column, column) << reason;
        }
    }
}

} // namespace
