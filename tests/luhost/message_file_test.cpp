#include "support/TemporaryFolder.h"

#include <du/MessageTable.h>
#include <luhost/MessageFile.h>

#include <gtest/gtest.h>

#include <string>

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
    const std::string deep = [] {
        std::string text;
        for (int i = 0; i < 100000; ++i) {
            text += "<a>";
        }
        return text;
    }();
    const struct {
        std::string text;
        std::size_t line;
        const char* reason;
    } cases[] = {
        {"<messages table=\"t\">\n<message>\n</message></messages>", 2, "no key"},
        {"<messages table=\"t\">\n<message key=\"\"/></messages>", 2, "no key"},
        {"<messages table=\"t\">\n\n<message key=\"K\">\n<text>a</text></message></messages>", 4,
         "\"K\" has no language"},
        {"\n<messages/>", 2, "does not name its table"},
        {"<library table=\"t\"/>", 1, "top-level element"},
        {"<messages table=\"t\">\n\n</message>", 3, ""},
        {"", 0, ""},
        {std::string("<messages table=\"t\"/>\0", 22), 0, ""},
        {deep, 0, ""},
    };
    for (const auto& [text, line, reason] : cases) {
        const MessageFile::Result result = MessageFile::Parse(text);
        EXPECT_FALSE(result) << text.substr(0, 80);
        EXPECT_NE(result.reason, "");
        EXPECT_NE(result.reason.find(reason), std::string::npos) << result.reason;
        if (line > 0) {
            EXPECT_EQ(result.line, line) << text;
        }
    }
}

TEST(MessageFile, RefusesWhatIsNoFile)
{
    const test::TemporaryFolder folder;
    for (const std::string& path :
         {std::string(), folder.Path(), folder.Path("missing.xml"), std::string("/dev/zero")}) {
        const MessageFile::Result result = MessageFile::Read(path);
        EXPECT_FALSE(result) << path;
        EXPECT_EQ(result.reason, "no readable file");
    }
}

} // namespace
