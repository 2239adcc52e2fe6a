#include "luk_illustration/Entry.h"
#include "support/Native.h"
#include "support/SessionTest.h"

#include <dp/LuInfo.h>
#include <du/FileSystem.h>
#include <du/Localizer.h>
#include <luk/illustration/SymbolCollectionInformation.h>
#include <luk/Kernel.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <filesystem>

namespace
{

using namespace test;
using lukapp::illustration::DrellinApp;

std::string TemporaryDirectory()
{
    du::Symbol directory;
    const auto app = DrellinApp::GetDrellinApp();
    return app && app->GetTemporaryDirectory(directory) ? directory.GetText() : "";
}

TEST_F(SessionTest, EveryGetterAnswersWithinItAndNoneAfterIt)
{
    const auto expectAll = [](bool answer) {
        du::SmartPtr<luk::Preferences> preferences;
        const auto world = luk::World::GetWorld();
        EXPECT_EQ(world && world->GetPreferences(), answer);
        EXPECT_EQ(world && world->GetIllustrationPreferences(preferences), answer);
        EXPECT_EQ(luk::Kernel::GetKernel() != nullptr, answer);
        EXPECT_EQ(Collection::GetCollection() != nullptr, answer);
        EXPECT_EQ(lukapp::LukApp::Get() != nullptr, answer);
        EXPECT_EQ(DrellinApp::GetDrellinApp() != nullptr, answer);
        EXPECT_EQ(luhost::Session::IsRunning(), answer);
    };
    expectAll(true);
    EndSession();
    expectAll(false);
    RestartSession();
    expectAll(true);
}

TEST_F(SessionTest, FoldersHaveNoSeparatorAtTheEnd)
{
    m_config.baseFolder += "//";
    m_config.sharedSymbolLibraryEnabled = true;
    m_config.sharedSymbolLibraryFolder = "/shared/";
    m_config.temporaryDirectory = m_folder.Path() + "/";
    RestartSession();
    auto preferences = luk::World::GetWorld()->GetPreferences();
    EXPECT_EQ(preferences->GetBaseURL().GetText(), m_folder.Path());
    EXPECT_EQ(preferences->GetSharedSymbolLibraryFolder().GetText(), test::Native("/shared"));
    EXPECT_EQ(preferences->GetReadCount(), 2u);
    preferences = nullptr;
    EXPECT_EQ(TemporaryDirectory(), m_folder.Path());
    du::Symbol cache;
    EXPECT_TRUE(dp::LuInfo::GetLuviewSharedCachePrefsDir(cache));
    EXPECT_EQ(cache.GetText(), test::Native("/shared"));
    EndSession();
    EXPECT_FALSE(dp::LuInfo::GetLuviewSharedCachePrefsDir(cache));
    EXPECT_TRUE(du::FileSystem::DirExists(m_folder.Path())) << "a given folder stays";
}

TEST_F(SessionTest, ItsOwnTemporaryFolderIsFreshPrivateAndDeleted)
{
    const std::string first = TemporaryDirectory();
    ASSERT_TRUE(du::FileSystem::DirExists(first));
#if !defined(_WIN32) // where the user's temporary folder lets nobody else in
    EXPECT_EQ(std::filesystem::status(first).permissions(), std::filesystem::perms::owner_all);
#endif
    std::filesystem::create_directories(first + "/Symbols/deep");
    EndSession();
    EXPECT_FALSE(du::FileSystem::DirExists(first));
    RestartSession();
    EXPECT_NE(TemporaryDirectory(), first);
}

TEST_F(SessionTest, ItsMessagesGoWithIt)
{
    m_config.language = "de";
    m_config.messageFile =
        m_folder.Write("messages.xml", "<messages table=\"lubase:lumodulesStrings\"><message "
                                       "key=\"K\"><text lang=\"de\">Pfeil</text></message></messages>");
    RestartSession();
    const du::Localizer localizer("lubase:lumodulesStrings");
    EXPECT_EQ(localizer.LocalizeMessage("K"), "Pfeil");
    EndSession();
    EXPECT_EQ(localizer.LocalizeMessage("K"), "K");

    m_config.messageFile = m_folder.Write("bad.xml", "<messages table=\"t\">\n<message/></messages>");
    luhost::Session session(m_config);
    EXPECT_EQ(session.GetProblems(), std::vector<std::string>{m_config.messageFile + ":2: a message has no key"});
    EXPECT_TRUE(session.IsActive());
}

TEST_F(SessionTest, ThereIsOneAtATime)
{
    const auto world = luk::World::GetWorld();
    luhost::Session second(m_config);
    EXPECT_FALSE(second.IsActive());
    EXPECT_EQ(second.GetProblems().size(), 1u);
    second.Close();
    EXPECT_EQ(luk::World::GetWorld(), world);
}

TEST(Session, TellsWhatIsLeftAlive)
{
    luhost::Session session{luhost::SessionConfig{}};
    luk::Kernel::GetKernel()->PostEvent([held = du::MakeCounted<luk::Preferences>()] {});
    auto kept = luk::World::GetWorld();
    testing::internal::CaptureStderr();
    const luhost::Session::LeftOver left = session.Close();
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(left.objects, 2u) << "the world and its preferences";
    EXPECT_FALSE(left.IsClean());
#if LUHOST_REFERENCE_LEDGER
    EXPECT_NE(left.holders.find("luk::World"), std::string::npos) << left.holders;
    EXPECT_NE(printed.find(left.holders), std::string::npos) << printed;
#endif
}

/// A library in memory.
class FixedLoader : public lukapp::illustration::SymbolTemplateLoader
{
public:
    du::SmartPtr<luk::illustration::CollectionInformation> GetCollectionInformation() override
    {
        auto information = du::MakeCounted<luk::illustration::SymbolCollectionInformation>();
        information->SetUnits("mm");
        return information;
    }

    bool GetTemplateList(const du::Symbol& libraryFile, std::vector<du::SmartPtr<SymbolTemplate>>& templates) override
    {
        file = libraryFile.GetText();
        hadPreferences = GetPreferences() != nullptr;
        templates.insert(templates.end(), entries.begin(), entries.end());
        return true;
    }

    void GetCategoryList(std::vector<du::SmartPtr<CategoryInfo>>& list) override
    {
        list.insert(list.end(), categories.begin(), categories.end());
    }

    std::vector<du::SmartPtr<SymbolTemplate>> entries;
    std::vector<du::SmartPtr<CategoryInfo>> categories;
    std::string file;
    bool hadPreferences = false;
};

TEST(Session, LoadsALibraryAndLoadsItAgain)
{
    luhost::Session session{luhost::SessionConfig{}};
    const auto& collection = Collection::GetCollection();
    {
        const auto listener = du::MakeCounted<CollectionListener>();
        collection->RegisterObserver(listener);
        auto loader = du::MakeCounted<FixedLoader>();
        loader->entries = {MakeEntry("a", "arrow", CollectionItem::ORIGIN_OOTB), MakeEntry("b", "bolt")};
        loader->categories = {MakeCategory("c"), MakeCategory("c")};
        auto counts = session.LoadLibrary("/library.xml", loader);
        EXPECT_TRUE(counts.loaded);
        EXPECT_TRUE(counts.added == 2 && counts.categoriesAdded == 2) << counts.added << ' ' << counts.categoriesAdded;
        EXPECT_EQ(loader->file, "/library.xml");
        EXPECT_TRUE(loader->hadPreferences);
        EXPECT_EQ(listener->log, "standard several ");
        EXPECT_NE(collection->GetInformation(), nullptr);

        listener->log.clear();
        loader->entries = {MakeEntry("b", "bolt"), MakeEntry("a", "big arrow")};
        loader->categories = {MakeCategory("c")};
        counts = session.LoadLibrary("/library.xml", loader);
        EXPECT_EQ(counts.added, 0u);
        EXPECT_EQ(counts.changed, 1u);
        EXPECT_EQ(counts.unchanged, 1u);
        EXPECT_EQ(counts.categoriesReplaced, 1u);
        EXPECT_EQ(listener->log, "a ");
        EXPECT_FALSE(session.LoadLibrary("/library.xml", nullptr).loaded);
    }
    EXPECT_TRUE(session.Close().IsClean());
}

} // namespace
