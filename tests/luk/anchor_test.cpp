#include <du/SmartPtr.h>
#include <luk/Anchor.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

TEST(Anchor, NamesSingleComponentsBelowTheFolderOfSymbols)
{
    const auto anchor = du::MakeCounted<luk::Anchor>(du::Symbol("/tmp/doc"));
    du::Symbol url;
    for (const char* const file : {"arrow.png", "..png", "a b.%20.svg", "..."}) {
        ASSERT_TRUE(anchor->GetURLForFileSource(du::Symbol(file), url, true)) << file;
        EXPECT_EQ(url.GetText(), std::string("file:////tmp/doc/Symbols/") + file);
        ASSERT_TRUE(anchor->GetURLForFileSource(du::Symbol(file), url, false)) << file;
        EXPECT_EQ(url.GetText(), std::string("/tmp/doc/Symbols/") + file);
    }
    const du::Symbol before = url;
    for (const std::string& file :
         {std::string(), std::string("."), std::string(".."), std::string("/etc/passwd"), std::string("../x"),
          std::string("x/"), std::string("..\\x"), std::string("C:x"), std::string("a\0b", 3)}) {
        EXPECT_FALSE(anchor->GetURLForFileSource(du::Symbol(file), url, true)) << file;
    }
    EXPECT_FALSE(anchor->GetURLForFileSource(du::Symbol(), url, true));
    EXPECT_FALSE(du::MakeCounted<luk::Anchor>(du::Symbol())->GetURLForFileSource(du::Symbol("a"), url, true));
    EXPECT_EQ(url, before);
}

} // namespace
