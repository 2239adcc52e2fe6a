#include <dg/XmlElem.h>
#include <luk/PlainContentReader.h>
#include <luk/SerializedContentXml.h>

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

using luk::SerializedContentElement;
using luk::SerializedContentXml;

std::string Written(int number)
{
    SerializedContentElement element(du::Symbol("note"));
    element.AddProperty(du::Symbol("id"), du::Symbol("s" + std::to_string(number)));
    element.AddProperty(du::Symbol("none"), du::Symbol());
    element.AddProperty(du::Symbol("empty"), du::Symbol(""));
    element.AddProperty(du::Symbol(), number % 3 == 0);
    element.AddProperty(du::Symbol("count"), std::int32_t{-number});
    element.AddProperty(du::Symbol("index"), std::uint64_t{7});
    element.AddProperty(du::Symbol("size"), 0.1F * static_cast<float>(number % 2));
    element.AddProperty(du::Symbol("at"), dg::DPoint3D(number, 1e300, -0.0));
    element.AddProperty(du::Symbol("to"), dg::DVec3(0.5, number, 2.0));
    element.AddProperty(du::Symbol("turn"), dg::Quaternion<float>(1.0F, 0.0F, 0.0F, 0.5F));
    element.AddProperty(du::Symbol("ink"), dg::Color(0.1F, 0.2F, 1.0F, 0.5F));
    element.AddProperty(du::Symbol("place"), dg::Location::IDENTITY);
    SerializedContentElement& tag = element.StartChild(du::Symbol(number % 2 == 0 ? "tag" : "other"));
    tag.AddProperty(du::Symbol("text"), du::Symbol("\xC3\xA4 <&>\"'\t\r\n"));
    tag.StartChild(du::Symbol());
    std::string text;
    EXPECT_TRUE(SerializedContentXml::Append(text, element, 1));
    return text.substr(2, text.size() - 3);
}

/// What is read plainly is what the parser makes of it, without a word.
void ExpectAsParsed(const SerializedContentElement& read, const std::string& text)
{
    const std::unique_ptr<dg::XmlElem, dg::XmlFreer> root(dg::ParseXml(text, false, nullptr));
    ASSERT_TRUE(root) << text;
    const auto tell = [&](const std::string& problem) { ADD_FAILURE() << problem << " in " << text; };
    EXPECT_TRUE(read == SerializedContentXml::Read(*root, tell)) << text;
}

TEST(PlainContent, IsWhatTheParserMakesOfIt)
{
    luk::PlainContentReader reader;
    std::deque<std::string> texts;
    for (int number = 0; number < 20; ++number) {
        texts.push_back(Written(number));
    }
    texts.push_back("<element></element>");
    texts.push_back("<element name=\"\">\t<bool key=\"\" value=\"1\"/>\r\n<symbol/></element>");
    // Longer than what is remembered of one content, and a property behind a child.
    texts.push_back("<element name=\"long\"><element name=\"a\"></element>");
    for (int i = 0; i < 1000; ++i) {
        texts.back() += "<int32 key=\"k" + std::to_string(i % 7) + "\" value=\"" + std::to_string(i) + "\"/>";
    }
    texts.back() += "</element>";
    for (int round = 0; round < 2; ++round) {
        for (const std::string& text : texts) {
            SerializedContentElement read;
            EXPECT_EQ(reader.Read(text, read), text.size()) << text;
            ExpectAsParsed(read, text);
        }
    }
    const std::string& first = texts.emplace_back(texts[0] + "\n  " + texts[1]);
    SerializedContentElement read;
    EXPECT_EQ(reader.Read(first, read), texts[0].size()) << "the next one is not its business";
}

TEST(PlainContent, LeavesToTheParserWhatStandsThereInAnotherWay)
{
    const std::string deep = "<element><element><element><element><element><element><element><element><element>";
    for (const std::string inner : {"<!-- c -->",
                                    "text",
                                    "<?p?>",
                                    "<![CDATA[]]>",
                                    "<symbol key='a'/>",
                                    "<symbol key=\"a\" />",
                                    "<symbol  key=\"a\"/>",
                                    "<symbol value=\"1\" key=\"a\"/>",
                                    "<symbol key=\"a\" more=\"1\"/>",
                                    "<symbol key=\"a\"></symbol>",
                                    "<symbol key=\"&amp\"/>",
                                    "<symbol key=\"a<\"/>",
                                    "<symbol key=\"a\" value=\"&#x26;\"/>",
                                    "<symbol keyBase64=\"YQ==\"/>",
                                    "<int64 key=\"a\" value=\"1\"/>",
                                    "<bool key=\"a\" value=\"yes\"/>",
                                    "<bool key=\"a\"/>",
                                    "<float key=\"a\" value=\"1,5\"/>",
                                    "<>",
                                    "<symbol",
                                    "<symbol key=\"a",
                                    "<element/>",
                                    "<element name=\"a\" more=\"1\"></element>",
                                    "<elements></elements>",
                                    "</element >",
                                    "</elements>"}) {
        const std::string text = "<element name=\"note\">" + inner + "</element>";
        const std::string sound = "<element name=\"note\"><symbol key=\"a\" value=\"1\"/></element>";
        luk::PlainContentReader reader;
        SerializedContentElement read;
        EXPECT_EQ(reader.Read(text, read), 0U) << text;
        EXPECT_EQ(reader.Read(sound, read), sound.size()) << "after " << text;
        EXPECT_EQ(reader.Read(text, read), 0U) << text;
        EXPECT_EQ(reader.Read(sound, read), sound.size()) << "after " << text;
        ExpectAsParsed(read, sound);
    }
    luk::PlainContentReader reader;
    SerializedContentElement read;
    for (const std::string& text : {std::string(), std::string("</element>"), std::string("<symbol key=\"a\"/>"), deep,
                                    std::string("<element name=\"a\">\0</element>", 28)}) {
        EXPECT_EQ(reader.Read(text, read), 0U) << text;
    }
}

TEST(PlainContent, NoChangedByteIsReadInAnotherWayThanByTheParser)
{
    const std::string bytes("\"<>/=& \n\0element0.-akxe\xFF", 24);
    std::mt19937 random(42);
    std::deque<std::string> texts;
    luk::PlainContentReader reader;
    int countRead = 0;
    for (int n = 0; n < 20000; ++n) {
        std::string& text = texts.emplace_back(Written(static_cast<int>(random() % 4)));
        const std::size_t at = random() % text.size();
        const std::size_t length = random() % 4 == 0 ? random() % 30 : random() % 2;
        text.replace(at, length,
                     random() % 3 == 0 ? text.substr(random() % text.size(), random() % 30)
                                       : std::string(random() % 2, bytes[random() % bytes.size()]));
        SerializedContentElement read;
        if (const std::size_t size = reader.Read(text, read); size > 0) {
            ++countRead;
            ExpectAsParsed(read, text.substr(0, size));
        }
    }
    EXPECT_GT(countRead, 2000);
    EXPECT_LT(countRead, 18000);
}

} // namespace
