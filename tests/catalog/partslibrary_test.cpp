#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "support/Links.h"
#include "support/Native.h"
#include "support/SessionTest.h"

#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/Preferences.h>
#include <luk/World.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

namespace
{

namespace fs = std::filesystem;
using namespace lusymbols;
using luk::illustration::CategoryInfo;
using luk::illustration::SymbolTemplateCollection;
using test::Native;
using Origin = PartslibraryItem::Origin;

class PartslibraryTest : public test::SessionTest
{
protected:
    void RestartWith(const std::function<void(luhost::SessionConfig&)>& change)
    {
        change(m_config);
        RestartSession();
    }

    static std::string Resolve(const std::string& url, Origin origin)
    {
        std::string resolved = url;
        PartslibraryImageItem(origin).CheckRelativeUrlAndConcatIfNeeded(resolved);
        return resolved;
    }

    static std::string Resolve(const std::string& url)
    {
        std::string resolved = url;
        Partslibrary::CheckRelativeUrlAndConcatIfNeeded(resolved);
        return resolved;
    }

    static SymbolTemplateCollection& Collection() { return *SymbolTemplateCollection::GetCollection(); }
};

TEST_F(PartslibraryTest, FoldersLieBelowTheBaseFolder)
{
    const std::string library = Native(m_folder.Path() + "/SymbolsLibrary/");
    EXPECT_EQ(Partslibrary::GetLibraryPath(), library);
    EXPECT_EQ(Partslibrary::GetImagePath(), library + Native("2D/"));
    EXPECT_EQ(Partslibrary::GetOlPath(), library + Native("Shape/"));

    // The root is a folder like any other; one that nobody has set is none.
    RestartWith([](auto& config) { config.baseFolder.clear(); });
    EXPECT_EQ(Partslibrary::GetLibraryPath(), "");
    EXPECT_EQ(Resolve("2D/a.png", Origin::ORIGIN_USER), "2D/a.png");
    RestartWith([](auto& config) { config.baseFolder = "/"; });
    EXPECT_EQ(Partslibrary::GetLibraryPath(), Native("/SymbolsLibrary/"));
    RestartWith([this](auto& config) { config.baseFolder = m_folder.Path() + "//./"; });
    EXPECT_EQ(Partslibrary::GetLibraryPath(), library);
}

TEST_F(PartslibraryTest, WithoutASessionPathsAreBareAndLookUpsFindNothing)
{
    EndSession();
    EXPECT_EQ(Partslibrary::GetLibraryPath(), "");
    EXPECT_EQ(Partslibrary::GetImagePath(), Native("2D/"));
    EXPECT_EQ(Resolve("2D\\a.png"), "2D/a.png");
    EXPECT_EQ(Resolve("2D\\a.png", Origin::ORIGIN_USER), "2D/a.png");
    EXPECT_FALSE(Partslibrary::GetItemFromCollection("x"));
    EXPECT_FALSE(Partslibrary::GetCategoryFromCollectionById("x"));

    testing::internal::CaptureStdout();
    std::string target = "t";
    std::string folder = "f";
    EXPECT_FALSE(Partslibrary::GetTargetFilePath("/a/b.png", target, folder, false));
    du::Symbol embedded("before");
    EXPECT_FALSE(Partslibrary::EmbedSymbol(du::Symbol("/a/b.png"), embedded, false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "GetTemp dir failed\nGetTemp dir failed\n");
    EXPECT_EQ(target + folder, "tf");
    EXPECT_EQ(embedded.GetText(), "");
}

TEST_F(PartslibraryTest, FoldersAreMadeOnlyWithTheLibraryFolderItself)
{
    Partslibrary::CreateStandardFolderIfNedded();
    EXPECT_FALSE(fs::exists(m_folder.Path("SymbolsLibrary"))) << "not across two levels";
    Partslibrary::CreateLibraryFolderIfNedded();
    Partslibrary::CreateStandardFolderIfNedded();
    for (const char* folder : {"2D", "Shape", "standard/2D", "standard/Shape"}) {
        EXPECT_TRUE(fs::is_directory(m_folder.Path("SymbolsLibrary") + "/" + folder)) << folder;
    }
    fs::remove(m_folder.Path("SymbolsLibrary/2D"));
    Partslibrary::CreateLibraryFolderIfNedded();
    EXPECT_FALSE(fs::exists(m_folder.Path("SymbolsLibrary/2D")));
}

TEST_F(PartslibraryTest, AbsoluteUrlsStayToTheByte)
{
    for (const char* url : {"/a\\b/c.png", "\\\\server\\share\\a.png", "C:\\a\\b.png", "file:///a\\b", "http://x\\y"}) {
        EXPECT_EQ(Resolve(url), url);
        for (const Origin origin : {Origin::ORIGIN_OOTB, Origin::ORIGIN_SHARED, Origin::ORIGIN_USER}) {
            EXPECT_EQ(Resolve(url, origin), url);
        }
    }
}

TEST_F(PartslibraryTest, RelativeUrlsJoinTheFolderOfTheirOrigin)
{
    RestartWith([](auto& config) {
        config.sharedSymbolLibraryEnabled = true;
        config.sharedSymbolLibraryFolder = "/team";
    });
    // A host may hand out a folder as its user spelled it.
    du::SmartPtr<luk::Preferences> preferences;
    luk::World::GetWorld()->GetIllustrationPreferences(preferences);
    preferences->SetBaseURL(du::Symbol("/data//base"));
    const std::tuple<const char*, const char*, const char*, const char*> urls[] = {
        {"2D\\pic.png", "/data/base/2D/pic.png", "/data//base/2D/pic.png", "/team/2D/pic.png"},
        // Only a delivered entry has its relative part normalised.
        {"a//./b.png", "/data/base/a//./b.png", "/data//base/a/b.png", "/team/a//./b.png"},
        {"../b.png", "/data/base/../b.png", "/data//base/../b.png", "/team/../b.png"},
        {"", "/data/base/", "/data//base/", "/team/"},
        {"b.png", "/data/base/b.png", "/data//base/b.png", "/team/b.png"},
    };
    for (const auto& [url, plain, delivered, shared] : urls) {
        EXPECT_EQ(Resolve(url), plain);
        EXPECT_EQ(Resolve(url, Origin::ORIGIN_USER), plain);
        EXPECT_EQ(Resolve(url, Origin::ORIGIN_OOTB), delivered);
        EXPECT_EQ(Resolve(url, Origin::ORIGIN_SHARED), shared);
    }
    // Shared decides the folder, delivered decides how the rest is joined.
    EXPECT_EQ(Resolve("a//b.png", static_cast<Origin>(Origin::ORIGIN_OOTB | Origin::ORIGIN_SHARED)), "/team/a/b.png");
}

TEST_F(PartslibraryTest, EmbeddingCopiesOnceAndTheFirstCopyWins)
{
    const std::string first = m_folder.Write("one/pic.png", "first");
    const std::string second = m_folder.Write("two/pic.png", "second");
    du::Symbol target;
    ASSERT_TRUE(Partslibrary::EmbedSymbol(du::Symbol(first), target, false));
    const std::string copy = target.GetText();
    EXPECT_EQ(fs::path(copy).filename(), "pic.png");
    EXPECT_EQ(fs::path(copy).parent_path().filename(), "Symbols");
    EXPECT_TRUE(Partslibrary::EmbedSymbol(du::Symbol(second), target, false));
    EXPECT_EQ(target.GetText(), copy);
    EXPECT_EQ(test::TemporaryFolder::ReadFile(copy), "first");

    du::Symbol both(first);
    EXPECT_TRUE(Partslibrary::EmbedSymbol(both, both, false));
    EXPECT_EQ(both.GetText(), copy);
}

TEST_F(PartslibraryTest, UniqueNamesKeepTheExtension)
{
    std::string first, second, bare, folder;
    ASSERT_TRUE(Partslibrary::GetTargetFilePath("/a/pic.png", first, folder, true));
    ASSERT_TRUE(Partslibrary::GetTargetFilePath("/a/pic.png", second, folder, true));
    ASSERT_TRUE(Partslibrary::GetTargetFilePath("/a/pic", bare, folder, true));
    EXPECT_NE(first, second);
    EXPECT_TRUE(first.ends_with(".png") && bare.ends_with(".")) << first << ' ' << bare;
    EXPECT_EQ(fs::path(first).parent_path(), fs::path(folder) / "Symbols");
}

TEST_F(PartslibraryTest, EmbeddingNeverLeavesItsFolder)
{
    const std::string secret = m_folder.Write("secret", "untouched");
    du::Symbol target;
    for (const char* source : {"..", "x/..", ".", "", "/a/b/", "a\\.."}) {
        EXPECT_FALSE(Partslibrary::EmbedSymbol(du::Symbol(source), target, false)) << source;
    }
    // A colon would name a stream inside a file on one platform; under a unique name the file is welcome.
    if (du::FileSpec::DIR_SEP_CHAR == '/') {
        const std::string colon = m_folder.Write("a:b.png", "c");
        EXPECT_FALSE(Partslibrary::EmbedSymbol(du::Symbol(colon), target, false));
        EXPECT_TRUE(Partslibrary::EmbedSymbol(du::Symbol(colon), target, true));
        EXPECT_EQ(test::TemporaryFolder::ReadFile(target.GetText()), "c");
    }
    // A link laid at the target is neither followed nor replaced.
    ASSERT_TRUE(Partslibrary::EmbedSymbol(du::Symbol(m_folder.Write("one/a.png", "a")), target, false));
    const fs::path folder = fs::path(target.GetText()).parent_path();
    test::MakeLink(m_folder.Path("missing"), folder / "b.png");
    Partslibrary::EmbedSymbol(du::Symbol(m_folder.Write("one/b.png", "b")), target, false);
    EXPECT_FALSE(fs::exists(m_folder.Path("missing")));
    EXPECT_EQ(test::TemporaryFolder::ReadFile(secret), "untouched");
}

TEST_F(PartslibraryTest, LookUpsGiveTheFirstMatchAndOnlyOfTheirKind)
{
    const auto image = du::MakeCounted<PartslibraryImageItem>();
    image->SetId("i");
    image->AddSequencerTag(du::MakeCounted<luk::illustration::SequencerTag>());
    Collection().AddAssociativeObject(image);
    EXPECT_EQ(Partslibrary::GetImageFromCollection("i"), image);
    EXPECT_EQ(Partslibrary::GetItemFromCollection("i"), image);
    EXPECT_FALSE(Partslibrary::GetOlFromCollection("i") || Partslibrary::GetImageFromCollection("I"));
    std::vector<PartslibraryItem::SequencerTagPtr> tags(3);
    EXPECT_FALSE(Partslibrary::GetItemSequencerTagsByID("none", tags));
    EXPECT_EQ(tags.size(), 3u);
    EXPECT_TRUE(Partslibrary::GetItemSequencerTagsByID("i", tags));
    EXPECT_EQ(tags, image->GetSequencerTags());

    // A category that another made is none of the library's and hides the one behind it.
    const auto foreign = du::MakeCounted<CategoryInfo>(
        Origin::ORIGIN_USER, luk::illustration::AssociativeObjectCollection::Type::CATEGORY, "Foreign");
    foreign->SetId("f");
    Collection().AddCategory(foreign);
    du::SmartPtr<PartslibraryCategoryItem> last;
    for (const auto& [id, name] : {std::pair("f", "Foreign"), {"c", "Arrows"}}) {
        last = du::MakeCounted<PartslibraryCategoryItem>();
        last->SetId(id);
        last->SetCatName(name);
        Collection().AddCategory(last);
    }
    EXPECT_EQ(Partslibrary::GetCategoryFromCollectionById("c"), last);
    EXPECT_EQ(Partslibrary::GetCategoryFromCollectionByName("Arrows"), last);
    EXPECT_FALSE(Partslibrary::GetCategoryFromCollectionByName("arrows"));
    EXPECT_FALSE(Partslibrary::GetCategoryFromCollectionById("f"));
    EXPECT_FALSE(Partslibrary::GetCategoryFromCollectionByName("Foreign"));
}

} // namespace
