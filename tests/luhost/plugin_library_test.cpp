#include "support/TemporaryFolder.h"

#include <luhost/PluginLibrary.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace
{

using luhost::PluginLibrary;

TEST(PluginLibrary, LoadsAPluginAndMakesComponents)
{
    std::string error = "old";
    const auto library = PluginLibrary::Load(GOOD_PLUGIN, error);
    ASSERT_NE(library, nullptr) << error;
    EXPECT_EQ(error, "");
    EXPECT_STREQ(std::getenv("LUHOST_TEST_PLUGIN"), "started");

    const std::size_t before = du::RefCounted::GetLiveObjectCount();
    auto component = library->CreateComponent("create", "annotation", "any");
    ASSERT_NE(component, nullptr);
    EXPECT_EQ(component->GetReferenceCount(), 1u);
    EXPECT_FALSE(library->CreateComponent("destroy", "annotation", "any", component));
    EXPECT_NE(component, nullptr);
    component = nullptr;
    EXPECT_EQ(du::RefCounted::GetLiveObjectCount(), before);

    EXPECT_TRUE(library->Unload(error)) << error;
    EXPECT_STREQ(std::getenv("LUHOST_TEST_PLUGIN"), "ended");
    EXPECT_TRUE(library->Unload(error));
    EXPECT_EQ(library->CreateComponent("create", "annotation", "any"), nullptr);
}

#if defined(_WIN32)
constexpr const char* kWhyNoLibrary = "%1"; // the words of the system, in whatever language
#else
constexpr const char* kWhyNoLibrary = "text.so";
#endif

TEST(PluginLibrary, SaysWhyItRefuses)
{
    const test::TemporaryFolder folder;
    const std::pair<std::string, const char*> cases[] = {
        {"", "no readable file"},
        {folder.Path(), "no readable file"},
        {folder.Path("missing.so"), "no readable file"},
        {folder.Write("text.so", "no library at all"), kWhyNoLibrary},
        {PLUGIN_WITHOUT_CREATE, "no entry point LUDllCreateComponent"},
    };
    for (const auto& [path, reason] : cases) {
        std::string error;
        EXPECT_EQ(PluginLibrary::Load(path, error), nullptr) << path;
        EXPECT_NE(error.find(reason), std::string::npos) << path << ": " << error;
    }
}

} // namespace
