#include "support/TemporaryFolder.h"

#include <du/MessageTable.h>
#include <luhost/MessageFile.h>

#include <gtest/gtest.h>

namespace
{

using luhost::MessageFile;

TEST(MessageFile, ReadsTextsOfEachLanguage)
{
    const MessageFile::Result result = MessageFile::Parse("<?xml version=\"1.0\"?>\n"
                                                          "<messages table=\"t\" default=\"de\" extra=\"\">\n"
                                                          "  <!-- skipped --><other/>\n"
                                                          "  <message key=\"K\"><text lang=\"en\"> a &amp; %1 </text>"
                                                          "<text lang=\"de\">u</text><note/></message>\n"
                                                          "  <message key=\"empty\"/>\n"
                                                          "</messages>");
    ASSERT_TRUE(result) << result.reason;
    EXPECT_EQ(result.table->GetName(), "t");
    EXPECT_EQ(result.table->GetDefaultLanguage(), "de");
    EXPECT_EQ(*result.table->Find("K", "en"), " a & %1 ");
    EXPECT_EQ(*result.table->Find("K", "fr"), "u");
    EXPECT_EQ(result.table->Find("empty", "en"), nullptr);
}

TEST(MessageFile, TellsLineAndReasonOfTheFirstFault)
{
    const std::tuple<const char*, std::size_t, const char*> cases[] = {
        {"<messages table=\"t\">\n<message>\n</message></messages>", 2, "no key"},
        {"<messages table=\"t\">\n<message key=\"\"/></messages>", 2, "no key"},
        {"<messages table=\"t\">\n\n<message key=\"K\">\n<text/></message></messages>", 4, "\"K\" has no language"},
        {"\n<messages/>", 2, "does not name its table"},
        {"<library table=\"t\"/>", 1, "top-level element"},
        {"<messages table=\"t\">\n\n</message>", 3, "the end tag </message>"},
        {"", 1, "no top-level element"},
    };
    for (const auto& [text, line, reason] : cases) {
        const MessageFile::Result result = MessageFile::Parse(text);
        EXPECT_FALSE(result) << text;
        EXPECT_NE(result.reason.find(reason), std::string::npos) << result.reason;
        EXPECT_EQ(result.line, line) << text;
    }
}

TEST(MessageFile, RefusesMoreLanguagesThanAnybodySpeaksAndWhatIsNoFile)
{
    std::string text = "<messages table=\"t\">\n<message key=\"K\">";
    for (std::size_t i = 0; i <= MessageFile::kMaxLanguages; ++i) {
        text += "<text lang=\"" + std::to_string(i) + "\"/>";
    }
    const MessageFile::Result result = MessageFile::Parse(text + "</message></messages>");
    EXPECT_FALSE(result);
    EXPECT_EQ(result.line, 2u);
    const test::TemporaryFolder folder;
    for (const std::string& path :
         {std::string(), folder.Path(), folder.Path("missing.xml"), std::string("/dev/zero")}) {
        EXPECT_EQ(MessageFile::Read(path).reason, "no readable file") << path;
    }
}

} // namespace
