#include "support/Threads.h"

#include <du/UserData.h>
#include <du/UuidGen.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace
{

TEST(UuidGen, TextsAreRandomUuidsOfVersionFour)
{
    std::vector<std::set<char>> seen(36);
    for (int i = 0; i < 300; ++i) {
        std::string uuid = "something longer than thirty-six characters, to be replaced";
        du::UuidGen::GetUuidString(uuid);
        ASSERT_EQ(uuid.size(), seen.size());
        for (std::size_t place = 0; place < uuid.size(); ++place) {
            seen[place].insert(uuid[place]);
        }
    }
    const std::string_view form = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    for (std::size_t place = 0; place < form.size(); ++place) {
        const std::string all = form[place] == 'x'   ? "0123456789abcdef"
                                : form[place] == 'y' ? "89ab"
                                                     : std::string(1, form[place]);
        EXPECT_EQ(std::string(seen[place].begin(), seen[place].end()), all) << place;
    }
}

TEST(UuidGen, ThreadsNeverGetTheSameText)
{
    std::vector<std::vector<std::string>> uuids(4, std::vector<std::string>(500));
    test::OnThreads(4, [&](unsigned t) {
        for (std::string& uuid : uuids[t]) {
            du::UuidGen::GetUuidString(uuid);
        }
    });
    std::unordered_set<std::string> distinct;
    for (const auto& ofOneThread : uuids) {
        distinct.insert(ofOneThread.begin(), ofOneThread.end());
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
