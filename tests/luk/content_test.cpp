#include <dg/XmlElem.h>
#include <luk/AnnotationContentVisitor.h>
#include <luk/SerializedContentXml.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace
{

using Element = luk::SerializedContentElement;
using luk::SerializedContentXml;

du::Symbol Word(std::string_view text) { return du::Symbol(text); }

std::string Written(const Element& element)
{
    std::string xml;
    EXPECT_TRUE(SerializedContentXml::Append(xml, element, 0));
    return xml;
}

Element Read(const std::string& xml, std::vector<std::string>* problems = nullptr)
{
    const std::unique_ptr<dg::XmlElem, dg::XmlFreer> root(dg::ParseXml(xml, false, nullptr));
    EXPECT_TRUE(root) << xml;
    const auto tell = [problems](const std::string& problem) {
        problems ? problems->push_back(problem) : void(ADD_FAILURE() << problem);
    };
    return root ? SerializedContentXml::Read(*root, tell) : Element();
}

/// Takes everything but what is named "refused", and notes what it was given.
class Log : public luk::SerializedContentVisitor
{
public:
    bool StartElement(const du::Symbol& name) override { return Note("<" + name.GetText(), name); }
    bool VisitSymbol(const du::Symbol& key, const du::Symbol& value) override
    {
        return Note(key.GetText() + "=" + value.GetText(), key);
    }
    bool VisitBool(const du::Symbol& key, bool) override { return Note(key.GetText() + ":bool", key); }
    void OnRefused(const Element::Property& property) override { text += "-" + property.key.GetText() + " "; }
    void OnRefused(const Element& child) override { text += "-<" + child.GetName().GetText() + " "; }

    std::string text;

private:
    bool Note(const std::string& what, const du::Symbol& name)
    {
        text += what + " ";
        return !(name == Word("refused"));
    }
};

TEST(Content, AnyDepthIsWorkedWithoutRecursion)
{
    constexpr int kLevels = 200000;
    Element top(Word("top"));
    Element* inner = &top;
    for (int i = 0; i < kLevels; ++i) {
        inner = &inner->StartChild(Word("level"));
    }
    inner->AddProperty(Word("last"), true);
    Element copy(top);
    EXPECT_TRUE(copy == top);
    inner->AddProperty(Word("more"), true);
    EXPECT_FALSE(copy == top);

    Log log;
    top.Visit(log, true);
    EXPECT_TRUE(log.text.ends_with("<level last:bool more:bool ")) << log.text.size();
    // A part of itself, moved and copied.
    copy = std::move(copy.GetChild(0));
    copy = copy.GetChild(0).GetChild(0);
    EXPECT_EQ(copy.GetChildCount(), 1u);

    std::string xml = "before";
    EXPECT_FALSE(SerializedContentXml::Append(xml, top, 0));
    EXPECT_EQ(xml, "before");
}

TEST(Content, VisitingShowsOwnPropertiesFirstAndAgainWhatIsRefused)
{
    Element top(Word("top"));
    top.StartChild(Word("a")).StartChild(Word("b")).AddProperty(Word("refused"), true);
    top.StartChild(Word("refused")).AddProperty(Word("unseen"), true);
    top.StartChild(du::Symbol()).SetForeign("<x></x>");
    top.AddProperty(Word("p"), Word("1"));
    top.AddProperty({du::Symbol(), du::Symbol(), std::make_shared<const std::string>("<y></y>")});
    top.AddProperty(Word("unknown"), 1.0F);
    Log all;
    top.Visit(all, true);
    EXPECT_EQ(all.text, "p=1 - -unknown <a <b refused:bool -refused <refused -<refused -< ");
    Log own;
    top.Visit(own, false);
    EXPECT_EQ(own.text, "p=1 - -unknown ");
}

TEST(ContentXml, LooksLikeThis)
{
    Element note(Word("note"));
    note.AddProperty(Word("text"), Word("a \"b\" <c>\r\n\t\xC3\xA4"));
    note.AddProperty(Word("none"), du::Symbol());
    note.AddProperty(Word("empty"), Word(""));
    note.AddProperty(Word("raw"), Word("\x01"));
    note.AddProperty(Word("on"), true);
    note.AddProperty(Word("count"), std::int32_t{-5});
    note.AddProperty(Word("index"), std::numeric_limits<std::uint64_t>::max());
    note.AddProperty(Word("place"), dg::Location());
    note.AddProperty(Word("ink"), dg::Color(0.1F, 0.0F, 1.0F, 0.5F));
    note.StartChild(Word("tag"));
    const std::string xml = "<element name=\"note\">\n"
                            "  <symbol key=\"text\" value=\"a &quot;b&quot; &lt;c&gt;&#13;&#10;&#9;\xC3\xA4\"/>\n"
                            "  <symbol key=\"none\"/>\n"
                            "  <symbol key=\"empty\" value=\"\"/>\n"
                            "  <symbol key=\"raw\" valueBase64=\"AQ==\"/>\n"
                            "  <bool key=\"on\" value=\"true\"/>\n"
                            "  <int32 key=\"count\" value=\"-5\"/>\n"
                            "  <uint64 key=\"index\" value=\"18446744073709551615\"/>\n"
                            "  <location key=\"place\" value=\"1 0 0 0 1 0 0 0 1 nan nan nan\"/>\n"
                            "  <color key=\"ink\" value=\"0.1 0 1 0.5\"/>\n"
                            "  <element name=\"tag\">\n"
                            "  </element>\n"
                            "</element>\n";
    EXPECT_EQ(Written(note), xml);
    EXPECT_TRUE(Read(xml) == note);
}

TEST(ContentXml, NumbersReadBackToTheSameBits)
{
    const std::uint64_t patterns[] = {0x0000000000000000U, 0x8000000000000000U, 0x0000000000000001U,
                                      0x800FFFFFFFFFFFFFU, 0x7FEFFFFFFFFFFFFFU, 0x7FF0000000000000U,
                                      0xFFF0000000000000U, 0x7FF8000000000000U, 0xFFF8000000000000U,
                                      0x7FF0000000000001U, 0x3FB999999999999AU, 0x444B1AE4D6E2EF50U};
    for (const std::uint64_t bits : patterns) {
        const auto wide = std::bit_cast<double>(bits);
        const auto narrow = std::bit_cast<float>(static_cast<std::uint32_t>(bits >> 32U | (bits & 1U)));
        Element element;
        element.AddProperty(Word("f"), narrow);
        element.AddProperty(Word("v"), dg::DVec3(wide, 1.0, wide));
        element.AddProperty(Word("p"), dg::DPoint3D(1.0, wide, wide));
        element.AddProperty(Word("q"), dg::Quaternion<float>(narrow, 1.0F, narrow, 2.0F));
        dg::FMat33 matrix;
        matrix.Set(1, 2, narrow);
        element.AddProperty(Word("l"), dg::Location(matrix, {wide, 0.0, 1.0}));
        const std::string xml = Written(element);
        const Element read = Read(xml);
        EXPECT_TRUE(read == element) << xml;
        EXPECT_EQ(std::bit_cast<std::uint32_t>(std::get<float>(read.GetProperties().at(0).value)),
                  std::bit_cast<std::uint32_t>(narrow));
        EXPECT_EQ(std::bit_cast<std::uint64_t>(std::get<dg::DVec3>(read.GetProperties().at(1).value).z),
                  std::bit_cast<std::uint64_t>(wide));
    }
}

/// What the standard library makes of a whole text; NaN for what is no number.
template <class Real>
Real Standard(const std::string& text)
{
    Real value = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value);
    return status == std::errc() && end == text.data() + text.size() ? value : std::numeric_limits<Real>::quiet_NaN();
}

TEST(ContentXml, ReadsAndWritesNumbersAsTheStandardLibraryDoes)
{
    std::vector<std::string> texts = {"-",    "-.5", "5.",    ".5",  "1.e2",    "00.10", "1-",     "+1",       "--1",
                                      "1..2", ".",   "99999", "1e5", "99999.5", "-0.0",  "100000", "16777217", "1e-5"};
    std::mt19937 random(4711);
    for (int n = 0; n < 20000; ++n) {
        std::string text = std::to_string(static_cast<std::int32_t>(random()) >> random() % 32);
        text.append(1, '.').append(std::to_string(random() >> random() % 32));
        texts.push_back(text.substr(0, 1 + random() % text.size()));
    }
    for (const std::string& text : texts) {
        const auto wide = Standard<double>(text);
        double read = std::numeric_limits<double>::quiet_NaN();
        EXPECT_EQ(SerializedContentXml::ParseReal(text, read), !std::isnan(wide)) << text;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(wide)) << text;
        Element::Value narrow = std::numeric_limits<float>::quiet_NaN();
        SerializedContentXml::ParseValue(text, narrow);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(std::get<float>(narrow)),
                  std::bit_cast<std::uint32_t>(Standard<float>(text)))
            << text;
        std::array<char, 32> digits;
        const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), wide).ptr;
        std::string written;
        SerializedContentXml::AppendReal(written, wide);
        EXPECT_EQ(written, std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data()))) << text;
    }
}

TEST(ContentXml, OneReaderKeepsTextsApartThatLookAlike)
{
    SerializedContentXml::Reader reader([](const std::string& problem) { ADD_FAILURE() << problem; });
    for (const std::string text : {"beginning-1-the-end", "beginning-2-the-end", "beginning-1-the-end", "", "a", "b"}) {
        Element element(Word(text));
        element.AddProperty(Word(text), Word(text));
        element.AddProperty(Word("same"), Word(text + "s"));
        const std::string xml = Written(element);
        const std::unique_ptr<dg::XmlElem, dg::XmlFreer> root(dg::ParseXml(xml, false, nullptr));
        EXPECT_TRUE(reader.Read(*root) == element) << xml;
    }
}

TEST(ContentXml, AnyBytesSurviveAsNameKeyAndValue)
{
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte) {
        everyByte.push_back(static_cast<char>(byte));
    }
    const std::string texts[] = {"",
                                 " a  b ",
                                 "\n",
                                 "\r\n",
                                 "]]>&amp;&#10;",
                                 std::string("a\0b", 3),
                                 "\x7F",
                                 "\xC3",
                                 "\xC0\x80",
                                 "\xED\xA0\x80",
                                 "\xEF\xBF\xBE",
                                 "\xF4\x90\x80\x80",
                                 "\xF0\x9F\x94\xA9",
                                 "\xE2\x80",
                                 everyByte,
                                 everyByte + "x"};
    for (const std::string& text : texts) {
        Element element(Word(text));
        element.AddProperty(Word(text), Word(text));
        element.AddProperty(du::Symbol(), false);
        EXPECT_TRUE(Read(Written(element)) == element) << Written(element);
    }
}

TEST(ContentXml, KeepsWhatItDoesNotUnderstandInItsPlace)
{
    const std::string xml = "<element name=\"note\" since=\"3\">\n"
                            "  <bool key=\"a\" value=\"true\" unit=\"&#10;&lt;\"/>\n"
                            "  <int64 key=\"b\">text<more x=\"&quot;\"></more></int64>\n"
                            "  <bool key=\"c\" value=\"true\"/>\n"
                            "  <float key=\"d\" value=\"1\"><inner></inner></float>\n"
                            "  <element value=\"x\">\n"
                            "  </element>\n"
                            "  <sheet></sheet>\n"
                            "  <element name=\"last\">\n"
                            "  </element>\n"
                            "</element>\n";
    const std::string read = "<float key=\"d\" value=\"1\"><inner></inner></float>";
    const Element element = Read(xml);
    EXPECT_EQ(Written(element), xml);
    EXPECT_EQ(*element.GetProperties().at(3).foreign, read);
    EXPECT_TRUE(Element(element) == element);
}

TEST(ContentXml, LeavesOutAndTellsWhatIsWrong)
{
    const char* const wrong[] = {
        "<bool key='k'/>",
        "<bool key='k' value='TRUE'/>",
        "<int32 key='k' value='2147483648'/>",
        "<int32 key='k' value='1 '/>",
        "<uint64 key='k' value='-1'/>",
        "<float key='k' value=''/>",
        "<float key='k' value='1e999'/>",
        "<float key='k' value='0x1'/>",
        "<float key='k' value='infinity'/>",
        "<float key='k' value='nan:3f800000'/>",
        "<float key='k' valueBase64='1'/>",
        "<point key='k' value='1 2'/>",
        "<point key='k' value='1 2 3 4'/>",
        "<point key='k' value='1  2'/>",
        "<color key='k' value='1,2,3,4'/>",
        "<location key='k' value='1 2 3 4 5 6 7 8 9 10 11'/>",
        "<symbol key='k' valueBase64='A'/>",
        "<symbol key='k' valueBase64='A*=='/>",
        "<symbol keyBase64='?' value='v'/>",
    };
    for (const std::string property : wrong) {
        std::vector<std::string> problems;
        const Element read =
            Read("<element name='e'>" + property + "<bool key='next' value='1'/></element>", &problems);
        EXPECT_EQ(problems.size(), 1u) << property;
        ASSERT_EQ(read.GetProperties().size(), 1u) << property;
        EXPECT_EQ(read.GetProperties()[0].key, Word("next")) << property;
    }
}

class PlainAnnotation : public luk::Annotation
{
public:
    bool InitializeFromSerializedContent(const Element* element) override
    {
        class Visitor : public luk::Annotation::SerializedContentVisitor
        {
        public:
            using SerializedContentVisitor::SerializedContentVisitor;
            bool VisitFloat(const du::Symbol& key, float) override { return key == Word("size"); }
        };
        Visitor visitor(*this);
        element->Visit(visitor, true);
        return true;
    }
    du::SmartPtr<luk::Annotation> Clone() override { return du::MakeCounted<PlainAnnotation>(*this); }
};

TEST(AnnotationContent, KeepsWhatItsClassRefusesAndWritesItBehindTheCommonContent)
{
    Element content(Word("note"));
    content.AddProperty(Word("later"), 1.0F);
    content.AddProperty(Word("size"), 2.0F);
    content.AddProperty(Word("annoVisible"), false);
    content.AddProperty(Word("annoId"), Word("s1"));
    content.AddProperty(Word("annoId"), true);
    content.StartChild(Word("detail")).AddProperty(Word("deep"), true);
    const auto note = du::MakeCounted<PlainAnnotation>();
    note->InitializeFromSerializedContent(&content);
    EXPECT_EQ(note->GetIDPath(), Word("s1"));
    EXPECT_FALSE(note->IsVisible());

    Element expected;
    expected.AddProperty(Word("annoId"), Word("s1"));
    expected.AddProperty(Word("annoName"), du::Symbol());
    expected.AddProperty(Word("annoVisible"), false);
    Element withUnknown = expected;
    withUnknown.AddProperty(Word("later"), 1.0F);
    withUnknown.AddProperty(Word("annoId"), true);
    withUnknown.AddChild(content.GetChild(0));
    for (const du::SmartPtr<luk::Annotation>& each : {du::SmartPtr<luk::Annotation>(note), note->Clone()}) {
        Element written;
        each->Visit(written);
        EXPECT_TRUE(written == withUnknown) << Written(written);
    }
    // Reading again replaces what was kept.
    note->InitializeFromSerializedContent(&expected);
    Element written;
    note->Visit(written);
    EXPECT_TRUE(written == expected) << Written(written);
}

} // namespace
