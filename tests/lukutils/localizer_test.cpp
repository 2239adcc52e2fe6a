#include <du/Localizer.h>
#include <du/MessageCatalog.h>
#include <du/MessageTable.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace
{

constexpr const char* kModules = "lubase:lumodulesStrings";

class LocalizerTest : public testing::Test
{
protected:
    void TearDown() override
    {
        for (const auto& table : m_installed) {
            du::MessageCatalog::Remove(table);
        }
        du::MessageCatalog::SetLanguage("");
    }

    std::shared_ptr<du::MessageTable> Install(const char* name)
    {
        auto table = std::make_shared<du::MessageTable>(name, "en");
        du::MessageCatalog::Install(table);
        m_installed.push_back(table);
        return table;
    }

private:
    std::vector<std::shared_ptr<const du::MessageTable>> m_installed;
};

TEST_F(LocalizerTest, FallsBackFromLanguageToDefaultToBuiltInToKey)
{
    const auto table = Install(kModules);
    table->Add("both", "en", "screw");
    table->Add("both", "de", "Schraube");
    table->Add("german only", "de", "");
    table->Add("2047", "de", "Zeichen");
    const std::tuple<const char*, const char*, const char*> cases[] = {
        // language, key, text
        {"de", "both", "Schraube"},
        {"fr", "both", "screw"},
        {"", "both", "screw"},
        {"de", "german only", ""},
        {"en", "german only", "german only"},
        {"de", "2047", "Zeichen"},
        {"en", "2047", "Symbol"},
        {"de", "5601", "Symbol %1"},
        {"de", "unknown %1", "unknown %1"},
        {"de", "", ""},
    };
    const du::Localizer localizer(kModules);
    for (const auto& [language, key, text] : cases) {
        du::MessageCatalog::SetLanguage(language);
        EXPECT_EQ(localizer.LocalizeMessage(key), text) << language << ' ' << key;
    }
}

TEST_F(LocalizerTest, ALocalizerOutlivesTablesAndSeesTheirSuccessors)
{
    static const du::Localizer s_localizer("table");
    EXPECT_EQ(s_localizer.LocalizeMessage("k"), "k");
    const auto first = std::make_shared<du::MessageTable>("table");
    first->Add("k", "en", "first");
    du::MessageCatalog::Install(first);
    EXPECT_EQ(s_localizer.LocalizeMessage("k"), "first");

    const auto second = Install("table");
    second->Add("k", "en", "second");
    du::MessageCatalog::Remove(first); // the end of an older session
    EXPECT_EQ(s_localizer.LocalizeMessage("k"), "second");
    du::MessageCatalog::Remove(second);
    EXPECT_EQ(s_localizer.LocalizeMessage("k"), "k");
    EXPECT_EQ(second.use_count(), 2) << "the catalog must have let it go; this test holds it twice";
}

TEST_F(LocalizerTest, PutsTheArgumentWhereTheMessageWantsIt)
{
    const auto table = Install("args");
    table->Add("twice", "en", "%1 and %1");
    table->Add("none", "en", "100 %");
    const du::Localizer localizer("args");
    EXPECT_EQ(localizer.LocalizeMessage("twice", "%d", -7), "-7 and -7");
    EXPECT_EQ(localizer.LocalizeMessage("twice", "%s", "%1"), "%1 and %1");
    EXPECT_EQ(localizer.LocalizeMessage("none", "%d", 1), "100 %");
    EXPECT_EQ(localizer.LocalizeMessage("missing %1", "%d", 1), "missing %1");
    const std::string huge(100000, 'x');
    const std::string cut(1023, 'x');
    EXPECT_EQ(localizer.LocalizeMessage("twice", "%s", huge.c_str()), cut + " and " + cut);
}

TEST_F(LocalizerTest, TablesTellWhatTheyLack)
{
    du::MessageTable table("t", "en");
    for (const auto& [key, language] : {std::pair("b", "en"), {"a", "en"}, {"a", "de"}, {"c", "fr"}}) {
        table.Add(key, language, "text");
    }
    EXPECT_EQ(table.GetLanguages(), (std::vector<std::string>{"en", "de", "fr"}));
    EXPECT_EQ(table.GetMissingKeys("de"), (std::vector<std::string>{"b", "c"}));
    EXPECT_EQ(table.GetMissingKeys("xx"), (std::vector<std::string>{"a", "b", "c"}));
}

TEST_F(LocalizerTest, MessagesAreReadWhileTablesAndLanguagesChange)
{
    std::atomic<bool> isDone{false};
    std::atomic<int> odd{0};
    std::thread reader([&] {
        const du::Localizer localizer("race");
        while (!isDone) {
            const std::string text = localizer.LocalizeMessage("k");
            odd += text != "k" && text != "english text of some length" && text != "deutscher Text" ? 1 : 0;
        }
    });
    for (int i = 0; i < 300; ++i) {
        const auto table = std::make_shared<du::MessageTable>("race");
        table->Add("k", "en", "english text of some length");
        table->Add("k", "de", "deutscher Text");
        du::MessageCatalog::Install(table);
        du::MessageCatalog::SetLanguage(i % 2 ? "de" : "en");
        du::MessageCatalog::Remove(table);
    }
    isDone = true;
    reader.join();
    EXPECT_EQ(odd, 0);
}

} // namespace
