#include "support/Threads.h"

#include <du/UserData.h>
#include <du/UuidGen.h>

#include <gtest/gtest.h>

#include <regex>

namespace
{

TEST(UuidGen, TextsAreUuidsOfVersionFourAndDifferOnEveryThread)
{
    std::vector<std::vector<std::string>> uuids(4, std::vector<std::string>(500, "to be replaced"));
    test::OnThreads(4, [&](unsigned t) {
        for (std::string& uuid : uuids[t]) {
            du::UuidGen::GetUuidString(uuid);
        }
    });
    const std::regex form("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    std::set<std::string> distinct;
    for (const auto& ofOneThread : uuids) {
        for (const std::string& uuid : ofOneThread) {
            EXPECT_TRUE(std::regex_match(uuid, form)) << uuid;
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
