#include <du/OrderedSet.h>
#include <du/PlaceMap.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace
{

/// Things of many addresses, some of them far apart.
const std::array<std::array<int, 5>, 300> kPlaces{};

const int* PlaceAt(std::size_t number) { return kPlaces[number].data(); }

TEST(OrderedSet, HoldsWhatAListWouldHold)
{
    std::minstd_rand random(1);
    for (const std::size_t range : {3U, 12U, 300U}) { // without a table, at its edge, and with one
        du::OrderedSet<const int*> set;
        std::vector<const int*> expected;
        for (int step = 0; step < 5000; ++step) {
            const int* const place = PlaceAt(random() % range);
            const auto known = std::find(expected.begin(), expected.end(), place);
            ASSERT_EQ(set.Contains(place), known != expected.end());
            if (random() % 2 == 0) {
                EXPECT_EQ(set.Add(place), known == expected.end());
                if (known == expected.end()) {
                    expected.push_back(place);
                }
            } else {
                EXPECT_EQ(set.Take(place), known == expected.end() ? nullptr : place);
                if (known != expected.end()) {
                    expected.erase(known);
                }
            }
            ASSERT_EQ(set.GetCount(), expected.size());
            ASSERT_EQ(set.GetFirst() ? *set.GetFirst() : nullptr, expected.empty() ? nullptr : expected.front());
        }
        EXPECT_EQ(set.GetAll(), expected);
        EXPECT_FALSE(set.Add(nullptr) || set.Contains(nullptr));
        EXPECT_EQ(set.TakeAll(), expected);
        EXPECT_TRUE(set.GetCount() == 0 && !set.GetFirst() && set.Add(PlaceAt(0)));
    }
}

TEST(PlaceMap, HoldsWhatAMapWouldHold)
{
    std::minstd_rand random(1);
    std::vector<du::Symbol> keys;
    for (int number = 0; number < 200; ++number) {
        keys.emplace_back("place map key " + std::to_string(number));
    }
    du::PlaceMap<du::Symbol, int> map;
    std::map<std::string, int> expected;
    for (int step = 1; step < 20000; ++step) {
        const du::Symbol& key = keys[random() % keys.size()];
        const auto known = expected.find(key.GetText());
        const int* const found = map.Find(key);
        ASSERT_EQ(found ? *found : 0, known == expected.end() ? 0 : known->second);
        if (random() % 2 == 0) {
            const auto [value, isNew] = map.TryEmplace(key, step);
            EXPECT_EQ(isNew, expected.try_emplace(key.GetText(), step).second);
            EXPECT_EQ(*value, expected[key.GetText()]);
        } else {
            EXPECT_EQ(map.Take(key), known == expected.end() ? 0 : known->second);
            expected.erase(key.GetText());
        }
        ASSERT_EQ(map.GetCount(), expected.size());
    }
    std::map<std::string, int> all;
    map.ForEach([&all](const du::Symbol& key, int value) { all.emplace(key.GetText(), value); });
    EXPECT_EQ(all, expected);
    EXPECT_EQ(map.Find(du::Symbol()), nullptr);
    const du::PlaceMap<du::Symbol, int> moved = std::move(map);
    EXPECT_EQ(moved.GetCount(), expected.size());
}

} // namespace
