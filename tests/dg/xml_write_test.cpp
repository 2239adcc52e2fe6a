#include <dg/Quaternion.h>
#include <dg/XmlElem.h>

#include <gtest/gtest.h>

namespace
{

using XmlPtr = std::unique_ptr<dg::XmlElem, dg::XmlFreer>;

dg::Location Placed(const dg::DPoint3D& position, double scale)
{
    dg::Location location;
    location.Set(position, {0.7F, 0.1F, -0.6F, 0.3F}, scale);
    return location;
}

TEST(XmlWrite, ElementsStandOnALineOfTheirOwnWithAttributesInOrder)
{
    const XmlPtr camera(dg::NewXmlElem("camera"));
    camera->SetAttributeAsBool("ortho", true);
    camera->SetAttributeAsDouble("value", 0.1);
    camera->SetAttributeAsLocation("location", {dg::FMat33::Scaling(1.0, 0.1, 2.0), {1e6, -2.5, 1e-7}});
    camera->SetAttribute("ortho", "<&>\"'");
    std::string text = "before\n";
    dg::WriteXmlCloseTags(camera.get(), text, 3);
    dg::WriteXmlCloseTags(nullptr, text, 5);
    EXPECT_EQ(text, "before\n      <camera ortho=\"&lt;&amp;&gt;&quot;&apos;\" value=\"0.1\" "
                    "location=\"1 0 0 0 0.1 0 0 0 2 1e+06 -2.5 1e-07\"/> \n");
}

TEST(XmlWrite, TypedAttributesReadBackToTheSameBits)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const std::tuple<dg::Location, double, double> cases[] = {
        // where, what, and what is read of it
        {dg::Location::ZERO, infinity, 0.0},
        {Placed({0.1, 1.0 / 3.0, -1e300}, 1.0), -1e300, -1e300},
        {Placed({5e-324, -0.0, 123456789.123456789}, 1e-30), 5e-324, 5e-324},
        {Placed({1.0, 2.0, 3.0}, -1e30), 1.0 / 3.0, 1.0 / 3.0},
    };
    for (const auto& [location, value, expected] : cases) {
        const XmlPtr written(dg::NewXmlElem("e"));
        written->SetAttributeAsLocation("location", location);
        written->SetAttributeAsLocation("unset", dg::Location());
        written->SetAttributeAsDouble("value", value);
        std::string text;
        dg::WriteXmlCloseTags(written.get(), text, 1);
        const XmlPtr read(dg::ParseXml(text, false, nullptr));
        ASSERT_TRUE(read) << text;
        EXPECT_EQ(read->GetAttributeAsLocation("location", dg::Location()), location) << text;
        EXPECT_EQ(read->GetAttributeAsLocation("unset"), dg::Location::IDENTITY) << text;
        EXPECT_EQ(read->GetAttributeAsDouble("value", 77.0), expected) << text;
    }
}

TEST(XmlWrite, LocationsNeedTwelveWords)
{
    const dg::Location fallback(dg::FMat33::Scaling(5.0, 5.0, 5.0), {5.0, 5.0, 5.0});
    const dg::Location expected({1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F, 8.0F, 9.0F}, {10.0, 11.0, 12.0});
    const std::vector<std::pair<const char*, dg::Location>> cases = {
        {"1 2 3 4 5 6 7 8 9 10 11 12", expected},
        {"  1\t2\n3 4 5 6  7 8 9 10 11 12 ", expected},
        {"1 2 3 4 5 6 7 8 9 10 11", fallback},
        {"1 2 3 4 5 6 7 8 9 10 11 12 13", fallback},
        {"", fallback},
        {"   ", fallback},
        {"x x x x x x x x x nan inf 1e", dg::Location::ZERO},
    };
    const XmlPtr element(dg::NewXmlElem("e"));
    EXPECT_EQ(element->GetAttributeAsLocation("location", fallback), fallback);
    for (const auto& [text, location] : cases) {
        element->SetAttribute("location", text);
        EXPECT_EQ(element->GetAttributeAsLocation("location", fallback), location) << text;
    }
}

TEST(XmlWrite, EveryByteIsEscapedOrKeptWhereverItStandsAndReadsBack)
{
    const std::string specials = "&<>\"'";
    const std::vector<std::string> entities = {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};
    for (int c = 0; c < 256; ++c) {
        const char byte = static_cast<char>(c);
        const std::size_t special = specials.find(byte);
        const std::string expected = special == std::string::npos ? std::string(1, byte) : entities[special];
        for (std::size_t before = 0; before < 18; ++before) {
            for (const std::size_t behind : {0U, 7U, 9U}) {
                const std::string front(before, '\xA6');
                const std::string back(behind, '=');
                EXPECT_EQ(dg::EncodeXmlStr(front + byte + back), front + expected + back) << c << ' ' << before;
            }
        }
        const XmlPtr root(dg::ParseXml("<e a=\"" + expected + "\">" + expected + "</e>", false, nullptr));
        ASSERT_EQ(root != nullptr, c != 0);
        EXPECT_EQ(root ? root->GetAttribute("a") : std::string(1, '\0'), std::string(1, byte));
        EXPECT_EQ(root ? root->GetText() : std::string(1, '\0'), std::string(1, byte));
    }
}

} // namespace
