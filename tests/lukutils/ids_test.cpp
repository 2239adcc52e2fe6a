#include "support/Threads.h"

#include <du/UserData.h>
#include <du/UuidGen.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

namespace
{

/// In the form, x stands for a digit of base 16 and y for one of 8, 9, a and b.
bool HasForm(std::string_view text, std::string_view form)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [&](char c, char wanted) {
        return wanted == 'x' ? kDigits.find(c) != kDigits.npos : wanted == 'y' ? kDigits.find(c, 8) < 12 : c == wanted;
    });
}

TEST(UuidGen, TextsAreUuidsOfVersionFourAndDifferOnEveryThread)
{
    std::vector<std::vector<std::string>> uuids(4, std::vector<std::string>(500, "to be replaced"));
    test::OnThreads(4, [&](unsigned t) {
        for (std::string& uuid : uuids[t]) {
            du::UuidGen::GetUuidString(uuid);
        }
    });
    std::set<std::string> distinct;
    for (const auto& ofOneThread : uuids) {
        for (const std::string& uuid : ofOneThread) {
            EXPECT_TRUE(HasForm(uuid, "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx")) << uuid;
            distinct.insert(uuid);
        }
    }
    EXPECT_EQ(distinct.size(), 2000U);
}

TEST(UserData, EveryThreadGetsTheSameNumberForAKey)
{
    std::vector<std::vector<unsigned>> ids(4);
    test::OnThreads(4, [&](unsigned t) {
        for (int key = 0; key < 50; ++key) {
            ids[t].push_back(du::UserData::GetId("key " + std::to_string(key)));
        }
    });
    EXPECT_EQ(ids, std::vector(4, ids[0]));
    const std::set<unsigned> distinct(ids[0].begin(), ids[0].end());
    EXPECT_EQ(distinct.size(), 50U);
    EXPECT_FALSE(distinct.contains(0));
}

} // namespace
